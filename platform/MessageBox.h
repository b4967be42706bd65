// SPDX-License-Identifier: ISC
#pragma once

#include <cstdint>
#include <string_view>

namespace qlx::platform {

/// Shows a message box of the system's own, with an OK button, in front of a window. Returns at
/// once; the box stays until the user has read it. User-interface thread.
/// @param ownerWindow native number of the window to stay in front of
/// @param title,text UTF-8
/// @return false when this system has none, or there is no such window
bool showMessageBox(std::uintptr_t ownerWindow, std::string_view title, std::string_view text);

} // namespace qlx::platform
