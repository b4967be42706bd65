// SPDX-License-Identifier: ISC
#pragma once

#include <cstddef>
#include <string_view>

namespace qlx::presets {

/// The longest start of a UTF-8 text that has at most `maxBytes` bytes and ends with a whole
/// character. What is not UTF-8 is cut anywhere.
constexpr std::string_view cutText(std::string_view text, std::size_t maxBytes) {
  if (text.size() <= maxBytes) return text;
  constexpr std::size_t kLongestTail = 3;
  const auto continues = [text](std::size_t at) {
    return (static_cast<unsigned char>(text[at]) & 0xC0U) == 0x80U;
  };
  for (std::size_t back = 0; back <= kLongestTail && back <= maxBytes; ++back) {
    if (!continues(maxBytes - back)) return text.substr(0, maxBytes - back);
  }
  return text.substr(0, maxBytes);
}

} // namespace qlx::presets
