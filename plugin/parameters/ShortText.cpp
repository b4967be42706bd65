// SPDX-License-Identifier: ISC
#include "plugin/parameters/ShortText.h"

#include <algorithm>
#include <charconv>

namespace qlx::plugin {

ShortText ShortText::fixed(double number, int decimals) noexcept {
  constexpr double kLimit = 1e9;
  ShortText text;
  char* const first = text.m_characters.data();
  const auto result =
      std::to_chars(first, first + text.m_characters.size(), std::clamp(number, -kLimit, kLimit),
                    std::chars_format::fixed, decimals);
  if (result.ec == std::errc()) text.m_length = static_cast<std::size_t>(result.ptr - first);
  return text;
}

ShortText ShortText::whole(int number) noexcept { return fixed(number, 0); }

ShortText& ShortText::append(std::string_view text) noexcept {
  text = text.substr(0, m_characters.size() - m_length);
  std::copy(text.begin(), text.end(), m_characters.data() + m_length);
  m_length += text.size();
  return *this;
}

void ShortText::copyTo(char* buffer) const noexcept {
  *std::copy(m_characters.data(), m_characters.data() + m_length, buffer) = '\0';
}

} // namespace qlx::plugin
