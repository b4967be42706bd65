// SPDX-License-Identifier: ISC
#include "platform/windows/Utf16.h"

#include "platform/windows/Windows.h"

namespace qlx::platform {

std::wstring toUtf16(std::string_view utf8) {
  const int length = static_cast<int>(utf8.size());
  const int units = MultiByteToWideChar(CP_UTF8, 0, utf8.data(), length, nullptr, 0);
  std::wstring text(static_cast<std::size_t>(units), L'\0');
  MultiByteToWideChar(CP_UTF8, 0, utf8.data(), length, text.data(), units);
  return text;
}

std::string toUtf8(std::wstring_view utf16) {
  const int length = static_cast<int>(utf16.size());
  const int bytes =
      WideCharToMultiByte(CP_UTF8, 0, utf16.data(), length, nullptr, 0, nullptr, nullptr);
  std::string text(static_cast<std::size_t>(bytes), '\0');
  WideCharToMultiByte(CP_UTF8, 0, utf16.data(), length, text.data(), bytes, nullptr, nullptr);
  return text;
}

} // namespace qlx::platform
