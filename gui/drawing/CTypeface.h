// SPDX-License-Identifier: ISC
#pragma once

#include "gui/CPoint.h"
#include "gui/drawing/GlyphPack.h"

#include <algorithm>
#include <cstdint>
#include <limits>
#include <memory>
#include <span>
#include <stdexcept>
#include <string_view>

namespace qlx::gui {

/// A size, in pixels of the em square, of the toolkit's one family, "Arial" (served by the typeface
/// that the frame got). Only the sizes of kGlyphSizes exist; a constant of another size does
/// not compile.
struct CFontDesc {
  constexpr explicit CFontDesc(CCoord pixels) : size(pixels) {
    if (std::ranges::find(kGlyphSizes, pixels) == kGlyphSizes.end())
      throw std::out_of_range("not in kGlyphSizes");
  }

  CCoord size;

  constexpr bool operator==(const CFontDesc&) const = default;
};

/// The toolkit's standard small font.
inline constexpr CFontDesc kNormalFontSmall{9.0};

/// One font, drawn while building and hinted to whole pixels, so that a text looks the same on
/// every machine. Any thread.
class CTypeface {
 public:
  /// One glyph's picture: coverage bytes, `width` a row, placed by left and top relative to pen and
  /// baseline.
  struct Glyph {
    int left = 0;
    int top = 0; ///< rows above the baseline
    int width = 0;
    int height = 0;
    int advance = 0; ///< whole pixels
    /// How far hinting moved the left and the right edge, in 64ths of a pixel (see TextPen).
    int leftShift = 0;
    int rightShift = 0;
    std::span<const std::uint8_t> coverage;
  };

  /// Heights above and below the baseline, whole pixels.
  struct Metrics {
    int ascent = 0;
    int descent = 0;
  };

  /// `pack` is of the form that GlyphPack.h describes and stays where it is as long as the typeface
  /// lives. Null when it is not of that form. Whatever its bytes, nothing outside is read.
  static std::shared_ptr<CTypeface> create(std::span<const std::uint8_t> pack);

  /// The glyph of a character; the font's box for missing ones, an empty picture for damaged ones.
  Glyph glyph(char32_t character, const CFontDesc& font) const;

  Metrics metrics(const CFontDesc& font) const;

  /// The advance of a text (UTF-8) in whole pixels.
  int width(std::string_view text, const CFontDesc& font) const;

 private:
  CTypeface(std::span<const std::uint8_t> pack, const PackHead& head);

  std::span<const std::uint8_t> m_pack;
  PackHead m_head;
};

/// Sets the glyphs of a line one after the other. Hinting moves a glyph's edges to whole pixels;
/// where that makes the gap between two neighbours wider or narrower by more than half a pixel, the
/// second one stands a pixel nearer, if they do not touch then, or farther.
class TextPen {
 public:
  /// `typeface` outlives the pen.
  TextPen(const CTypeface& typeface, const CFontDesc& font, int x)
      : m_typeface(typeface), m_font(font), m_end(x) {}

  /// Sets a character and returns its glyph, which stands at start().
  CTypeface::Glyph set(char32_t character);

  /// Where the last glyph stands, and where it ends.
  int start() const { return m_start; }
  int end() const { return m_end; }

 private:
  const CTypeface& m_typeface;
  CFontDesc m_font;
  int m_start = 0;
  int m_end;
  int m_inkEnd = std::numeric_limits<int>::min();
  int m_rightShift = 0;
};

} // namespace qlx::gui
