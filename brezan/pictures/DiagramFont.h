// SPDX-License-Identifier: ISC
#pragma once

#include <cstdint>
#include <string_view>
#include <vector>

namespace qlx::tools {

/// A line of text as coverage: `width` x `height` bytes, 255 where a pixel is covered.
struct DrawnText {
  int left = 0; ///< of the first column, from the pen's first place
  int top = 0;  ///< of the first row, from the base line; rows grow downwards
  int width = 0;
  int height = 0;
  double advance = 0.0; ///< of the pen, in pixels
  std::vector<std::uint8_t> coverage;
};

/// Draws a text (UTF-8) in the one font of diagrams.
/// @param size pixels of the em square
/// @param start where the pen begins, 0..1 of a pixel
/// @param bold strokes wider by a twentieth of the size
DrawnText drawText(std::string_view words, double size, double start = 0.0, bool bold = false);

/// How far a text moves the pen, in pixels.
double advanceOf(std::string_view words, double size, bool bold = false);

} // namespace qlx::tools
