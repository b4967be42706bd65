// SPDX-License-Identifier: ISC
#pragma once

#include <string>
#include <string_view>

namespace qlx::platform {

/// The system's texts are UTF-16, ours UTF-8. What is malformed is replaced by U+FFFD.
std::wstring toUtf16(std::string_view utf8);
std::string toUtf8(std::wstring_view utf16);

} // namespace qlx::platform
