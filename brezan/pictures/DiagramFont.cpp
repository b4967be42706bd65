// SPDX-License-Identifier: ISC
#include "brezan/pictures/DiagramFont.h"

#include "gui/drawing/Utf8.h"

#include <algorithm>
#include <cmath>
#include <stdexcept>

#define STB_TRUETYPE_IMPLEMENTATION
#define STBTT_STATIC
#include <stb_truetype.h>

namespace qlx::tools {

namespace {

extern "C" {
// Defined in DiagramFont.S.
extern const unsigned char qlxDiagramFont[];
}

// By how much bold strokes are wider and bold letters farther apart, in sizes.
constexpr double kBold = 0.05;

const stbtt_fontinfo& font() {
  static const stbtt_fontinfo kFont = [] {
    stbtt_fontinfo info{};
    if (stbtt_InitFont(&info, qlxDiagramFont, 0) == 0) throw std::logic_error("no font");
    return info;
  }();
  return kFont;
}

float scaleOf(double size) {
  return stbtt_ScaleForMappingEmToPixels(&font(), static_cast<float>(size));
}

/// Calls `each` with every character's glyph and the pen's place, and answers where it ends.
/// `extra`: pixels between letters
template <class Each>
double walk(std::string_view words, double size, double start, double extra, const Each& each) {
  const float scale = scaleOf(size);
  double pen = start;
  int before = 0;
  for (const char32_t character : gui::fromUtf8(words)) {
    const int glyph = stbtt_FindGlyphIndex(&font(), static_cast<int>(character));
    if (before != 0)
      pen += scale * static_cast<float>(stbtt_GetGlyphKernAdvance(&font(), before, glyph));
    each(glyph, pen);
    int advance = 0;
    int bearing = 0;
    stbtt_GetGlyphHMetrics(&font(), glyph, &advance, &bearing);
    pen += scale * static_cast<float>(advance) + extra;
    before = glyph;
  }
  return pen;
}

void addGlyph(DrawnText& text, int glyph, double pen, float scale) {
  const double whole = std::floor(pen);
  const auto part = static_cast<float>(pen - whole);
  int left = 0;
  int top = 0;
  int right = 0;
  int bottom = 0;
  stbtt_GetGlyphBitmapBoxSubpixel(&font(), glyph, scale, scale, part, 0.0F, &left, &top, &right,
                                  &bottom);
  const int width = right - left;
  const int height = bottom - top;
  if (width <= 0 || height <= 0) return;
  std::vector<std::uint8_t> drawn(static_cast<std::size_t>(width) *
                                  static_cast<std::size_t>(height));
  stbtt_MakeGlyphBitmapSubpixel(&font(), drawn.data(), width, height, width, scale, scale, part,
                                0.0F, glyph);
  left += static_cast<int>(whole) - text.left;
  top -= text.top;
  for (int y = std::max(0, -top); y < std::min(height, text.height - top); ++y)
    for (int x = std::max(0, -left); x < std::min(width, text.width - left); ++x) {
      std::uint8_t& to =
          text.coverage[static_cast<std::size_t>(y + top) * static_cast<std::size_t>(text.width) +
                        static_cast<std::size_t>(x + left)];
      to = std::max(to, drawn[static_cast<std::size_t>(y) * static_cast<std::size_t>(width) +
                              static_cast<std::size_t>(x)]);
    }
}

} // namespace

double advanceOf(std::string_view words, double size, bool bold) {
  return walk(words, size, 0.0, bold ? kBold * size : 0.0, [](int, double) {});
}

DrawnText drawText(std::string_view words, double size, double start, bool bold) {
  // No glyph reaches farther from its pen than one size.
  const int margin = static_cast<int>(std::ceil(size)) + 1;
  DrawnText text;
  text.advance = advanceOf(words, size, bold);
  text.left = -margin;
  text.top = -2 * margin;
  text.width = static_cast<int>(std::ceil(text.advance)) + 3 * margin;
  text.height = 3 * margin;
  text.coverage.resize(static_cast<std::size_t>(text.width) *
                       static_cast<std::size_t>(text.height));
  const float scale = scaleOf(size);
  const double extra = bold ? kBold * size : 0.0;
  walk(words, size, start, extra, [&](int glyph, double pen) {
    for (const double to : {0.0, 0.5, 1.0})
      if (to == 0.0 || bold) addGlyph(text, glyph, pen + to * extra, scale);
  });
  return text;
}

} // namespace qlx::tools
