// SPDX-License-Identifier: ISC
#pragma once

#include "gui/CPoint.h"
#include "gui/drawing/GlyphPack.h"
#include "gui/drawing/WindowScale.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <limits>
#include <memory>
#include <optional>
#include <span>
#include <stdexcept>
#include <string_view>

namespace qlx::gui {

/// A size, in the layout's pixels of the em square, of the toolkit's one family, "Arial" (served by
/// the typeface that the frame got). Only the sizes of kGlyphSizes exist; a constant of another
/// size does not compile.
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

/// A pack for each scale, and the further characters.
inline constexpr std::size_t kGlyphPacks = kWindowScales.size() + 1;

/// One font, drawn while building for each of kWindowScales and hinted to whole pixels, so that a
/// text looks the same on every machine. Any thread.
class CTypeface {
 public:
  /// One glyph's picture: width x height pixels, placed by left and top relative to pen and
  /// baseline. All in pixels of the window.
  struct Glyph {
    int left = 0;
    int top = 0; ///< rows above the baseline
    int width = 0;
    int height = 0;
    int advance = 0; ///< whole pixels
    /// How far hinting moved the left and the right edge, in 64ths of a pixel (see TextPen).
    int leftShift = 0;
    int rightShift = 0;
    std::span<const std::uint8_t> coverage; ///< bytes, as many a row as it is wide
    double enlarged = 1.0; ///< what there is of a glyph drawn for a smaller window only

    std::uint8_t coverageAt(int x, int y) const {
      const auto at = [this](int place) { return static_cast<std::size_t>(place / enlarged); };
      return coverage[at(y) * (at(width - 1) + 1) + at(x)];
    }
  };

  /// Heights above and below the baseline, whole pixels of the window.
  struct Metrics {
    int ascent = 0;
    int descent = 0;
  };

  /// The typeface for a window of scale 1. `packs` are for the scales in the order of
  /// kWindowScales, then that of the further characters, all of the form that GlyphPack.h
  /// describes, and stay where they are as long as a typeface made of them lives. Null when the
  /// first is not of that form; the others may be missing. Whatever their bytes, nothing outside is
  /// read. Packs behind the first are inflated when a glyph of theirs is wanted, and once for all
  /// typefaces that atScale makes.
  static std::shared_ptr<CTypeface> create(std::span<const std::span<const std::uint8_t>> packs);
  static std::shared_ptr<CTypeface> create(std::span<const std::uint8_t> pack) {
    return create(std::span(&pack, 1));
  }

  /// The same for a window of another scale.
  std::shared_ptr<CTypeface> atScale(double scale) const;
  double scale() const { return m_scale; }

  /// The glyph of a character; the font's box for missing ones, an empty picture for damaged ones.
  /// One that the scale's pack lacks is enlarged from scale 1, and so are the further ones.
  Glyph glyph(char32_t character, const CFontDesc& font) const;

  Metrics metrics(const CFontDesc& font) const;

  /// The advance of a text (UTF-8), in the layout's pixels.
  CCoord width(std::string_view text, const CFontDesc& font) const;

 private:
  class Pack;

  CTypeface() = default;
  /// Nothing where there is no such pack, or the character isn't in it.
  std::optional<Glyph> packedGlyph(std::size_t pack, char32_t character,
                                   const CFontDesc& font) const;

  std::array<std::shared_ptr<const Pack>, kGlyphPacks> m_packs{};
  double m_scale = 1.0;
  std::size_t m_index = 0; ///< of the scale
};

/// Sets the glyphs of a line one after the other, in pixels of the window. Hinting moves a glyph's
/// edges to whole pixels; where that makes the gap between two neighbours wider or narrower by more
/// than half a pixel, the second one stands a pixel nearer, if they do not touch then, or farther.
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
