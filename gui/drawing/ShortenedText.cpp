// SPDX-License-Identifier: ISC
#include "gui/drawing/ShortenedText.h"

#include "gui/drawing/Utf8.h"

namespace qlx::gui {

namespace {

constexpr char32_t kEllipsis = U'\u2026';

/// How many characters, taken from one end, fit beside an ellipsis.
template <typename Characters>
std::size_t countThatFits(CTypeface& typeface, const Characters& characters, const CFontDesc& font,
                          int room) {
  int width = typeface.glyph(kEllipsis, font).advance;
  std::size_t count = 0;
  for (const char32_t c : characters) {
    width += typeface.glyph(c, font).advance;
    if (width > room) break;
    ++count;
  }
  return count;
}

bool fits(CTypeface* typeface, std::string_view text, const CFontDesc& font, int room) {
  return typeface == nullptr || typeface->width(text, font) <= room;
}

} // namespace

std::string shortenedAtEnd(CTypeface* typeface, std::string_view text, const CFontDesc& font,
                           int room) {
  if (fits(typeface, text, font, room)) return std::string(text);
  std::u32string characters = fromUtf8(text);
  characters.resize(countThatFits(*typeface, characters, font, room));
  return toUtf8(characters + kEllipsis);
}

std::string shortenedAtStart(CTypeface* typeface, std::string_view text, const CFontDesc& font,
                             int room) {
  if (fits(typeface, text, font, room)) return std::string(text);
  const std::u32string characters = fromUtf8(text);
  const std::u32string backwards(characters.rbegin(), characters.rend());
  const std::size_t kept = countThatFits(*typeface, backwards, font, room);
  return toUtf8(kEllipsis + characters.substr(characters.size() - kept));
}

} // namespace qlx::gui
