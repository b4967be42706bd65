// SPDX-License-Identifier: ISC
#include "platform/MessageBox.h"

#include "platform/windows/Utf16.h"
#include "platform/windows/WorkerTask.h"

namespace qlx::platform {

bool showMessageBox(std::uintptr_t ownerWindow, std::string_view title, std::string_view text) {
  const auto owner = reinterpret_cast<HWND>(ownerWindow);
  if (IsWindow(owner) == 0) return false;
  return startWork([owner, title = toUtf16(title), text = toUtf16(text)] {
    MessageBoxW(owner, text.c_str(), title.c_str(), MB_OK);
  });
}

} // namespace qlx::platform
