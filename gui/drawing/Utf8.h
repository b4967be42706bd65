// SPDX-License-Identifier: ISC
#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace qlx::gui {

/// Takes the first character off `text`. Bytes that are not UTF-8 give U+FFFD one by one. `text` is
/// not empty.
char32_t takeUtf8(std::string_view& text);

/// All characters of a text.
std::u32string fromUtf8(std::string_view text);

std::string toUtf8(std::u32string_view text);

/// The longest beginning of a text of at most `characters` characters.
std::string_view firstCharacters(std::string_view text, std::size_t characters);

/// A to Z as a to z; all else as it is.
char32_t lowered(char32_t character);

/// The first character that is no space, lowered; 0 when there is none.
char32_t firstLetter(std::string_view text);

} // namespace qlx::gui
