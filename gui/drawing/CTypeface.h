// SPDX-License-Identifier: ISC
#pragma once

#include "gui/CPoint.h"

#include <cstdint>
#include <memory>
#include <span>
#include <string_view>
#include <vector>

namespace qlx::gui {

/// A size, in pixels of the em square, of the toolkit's one family, "Arial" (served by the typeface
/// that the frame got).
struct CFontDesc {
  CCoord size = 9.0;

  constexpr bool operator==(const CFontDesc&) const = default;
};

/// The toolkit's standard small font.
inline constexpr CFontDesc kNormalFontSmall{9.0};

/// One outline font, hinted to whole pixels, so that a text looks the same on every machine. Glyphs
/// are drawn once and kept. User-interface thread only.
class CTypeface {
 public:
  /// One glyph's picture: coverage bytes, `width` a row, placed by left and top relative to pen and
  /// baseline.
  struct Glyph {
    char32_t character = 0;
    int left = 0;
    int top = 0; ///< rows above the baseline
    int width = 0;
    int height = 0;
    int advance = 0; ///< whole pixels
    std::vector<std::uint8_t> coverage;
  };

  /// Heights above and below the baseline, whole pixels.
  struct Metrics {
    int ascent = 0;
    int descent = 0;
  };

  /// `font` is a TrueType or OpenType file, which stays where it is as long as the typeface lives.
  /// Null when it can't be read.
  static std::shared_ptr<CTypeface> create(std::span<const std::uint8_t> font);

  ~CTypeface();
  CTypeface(const CTypeface&) = delete;
  CTypeface& operator=(const CTypeface&) = delete;

  /// The glyph of a character; the font's box for missing ones. Smoothed or in pure black and
  /// white. The reference is good until the next call.
  const Glyph& glyph(char32_t character, const CFontDesc& font, bool antialias = true);

  Metrics metrics(const CFontDesc& font);

  /// The advance of a text (UTF-8) in whole pixels.
  int width(std::string_view text, const CFontDesc& font);

 private:
  struct Faces;
  struct SizedGlyphs;

  explicit CTypeface(std::unique_ptr<Faces> faces);
  void select(const CFontDesc& font);

  std::unique_ptr<Faces> m_faces;
  std::vector<SizedGlyphs> m_sizes;
};

} // namespace qlx::gui
