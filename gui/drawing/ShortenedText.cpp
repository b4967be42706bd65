// SPDX-License-Identifier: ISC
#include "gui/drawing/ShortenedText.h"

#include "gui/drawing/Utf8.h"

namespace qlx::gui {

namespace {

constexpr char32_t kEllipsis = U'\u2026';

bool fits(CTypeface* typeface, std::string_view text, const CFontDesc& font, int room) {
  return typeface == nullptr || typeface->width(text, font) <= room;
}

/// The longest of the shortened texts of 0 to `longest` characters that fits; the shortest one
/// where none does. `shortened` makes the text of a number of characters.
template <typename Shortened>
std::string longestThatFits(CTypeface* typeface, const CFontDesc& font, int room,
                            std::size_t longest, const Shortened& shortened) {
  std::size_t shown = 0;
  while (shown < longest) {
    const std::size_t tried = (shown + longest + 1) / 2;
    if (fits(typeface, shortened(tried), font, room))
      shown = tried;
    else
      longest = tried - 1;
  }
  return shortened(shown);
}

} // namespace

std::string shortenedAtEnd(CTypeface* typeface, std::string_view text, const CFontDesc& font,
                           int room) {
  if (fits(typeface, text, font, room)) return std::string(text);
  const std::u32string characters = fromUtf8(text);
  return longestThatFits(typeface, font, room, characters.size(), [&](std::size_t count) {
    return toUtf8(characters.substr(0, count) + kEllipsis);
  });
}

std::string shortenedAtStart(CTypeface* typeface, std::string_view text, const CFontDesc& font,
                             int room) {
  if (fits(typeface, text, font, room)) return std::string(text);
  const std::u32string characters = fromUtf8(text);
  return longestThatFits(typeface, font, room, characters.size(), [&](std::size_t count) {
    return toUtf8(kEllipsis + characters.substr(characters.size() - count));
  });
}

} // namespace qlx::gui
