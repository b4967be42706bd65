// SPDX-License-Identifier: ISC
#pragma once

#include "resources/artwork/drawing/Canvas.h"

#include <cairo.h>

#include <array>
#include <filesystem>
#include <memory>
#include <string_view>

namespace qlx::artwork {

enum class Face { Caption, CaptionBold, Plate, Text };

/// How a line of capitals is set: size of the em and extra space between letters, layout pixels.
struct LetterStyle {
  Face face = Face::Caption;
  double size = 10.0;
  double tracking = 0.0;
  /// Whether the outlines are fitted to whole finished pixels: crisp small print.
  bool fitted = true;
};

/// Sets text as outlines from the font files kept with the project; no system font is looked up.
class Lettering {
 public:
  /// Throws std::runtime_error when a font file of `fontDirectory` cannot be read.
  explicit Lettering(const std::filesystem::path& fontDirectory);
  ~Lettering();
  Lettering(const Lettering&) = delete;
  Lettering& operator=(const Lettering&) = delete;

  /// The inked extent of a line set at the origin: its left and right edge, layout pixels.
  struct Extent {
    double left = 0;
    double right = 0;
    double width() const { return right - left; }
  };
  Extent extent(std::string_view text, const LetterStyle& style, int scale) const;

  /// Adds the line to the current path with its pen origin at (x, baseline).
  void trace(cairo_t* cr, std::string_view text, const LetterStyle& style, int scale, double x,
             double baseline) const;

  /// Coverage of a line whose inked extent is centred on x, starts at x or ends at x. Fitted text
  /// starts on a whole finished pixel.
  enum class Align { Left, Centre, Right };
  Mask line(const Canvas& canvas, std::string_view text, const LetterStyle& style, Align align,
            double x, double baseline) const;

 private:
  struct Library;
  std::unique_ptr<Library> m_library;
};

} // namespace qlx::artwork
