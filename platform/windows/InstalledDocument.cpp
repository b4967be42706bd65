// SPDX-License-Identifier: ISC
#include "platform/InstalledDocument.h"

#include "platform/Files.h"
#include "platform/windows/Utf16.h"
#include "platform/windows/WorkerTask.h"

#include <algorithm>

namespace qlx::platform {

std::string findInstalledDocument(std::string_view name) {
  constexpr DWORD kLongestPath = 32768;
  std::wstring file(kLongestPath, L'\0');
  file.resize(GetModuleFileNameW(ownModule(), file.data(), kLongestPath));
  std::wstring document = file.substr(0, file.find_last_of(L'\\') + 1) + L"doc\\" + toUtf16(name);
  std::replace(document.begin(), document.end(), L'/', L'\\');
  std::string path = toUtf8(document);
  return fileExists(path) ? path : std::string();
}

} // namespace qlx::platform
