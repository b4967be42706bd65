// SPDX-License-Identifier: ISC
#pragma once

#include "gui/CRect.h"
#include "gui/drawing/PixelBuffer.h"
#include "gui/drawing/ShapeFiller.h"

#include <cstdint>
#include <filesystem>
#include <span>
#include <string>
#include <utility>

namespace qlx::tools {

struct DiagramColour {
  double red, green, blue;
};
struct DiagramBox {
  double x, y, width, height;
  double right() const { return x + width; }
  double bottom() const { return y + height; }
};

inline constexpr DiagramColour kPaper{0.985, 0.98, 0.97};
inline constexpr DiagramColour kWhite{1, 1, 1};
inline constexpr DiagramColour kInk{0.16, 0.15, 0.17};
inline constexpr DiagramColour kFaint{0.84, 0.82, 0.79};
inline constexpr DiagramColour kBlue{0.16, 0.40, 0.62};   ///< the first of two curves
inline constexpr DiagramColour kOrange{0.83, 0.42, 0.14}; ///< the second

/// A colour as an opaque pixel.
std::uint32_t pixelOf(const DiagramColour& c);

enum class Align { Left, Centre, Right };

/// A sheet of paper for diagrams, in pixels from its upper left corner. The same on every machine.
class DiagramCanvas {
 public:
  DiagramCanvas(int width, int height, const DiagramColour& paper = kPaper);

  void colour(const DiagramColour& c, double opacity = 1.0);
  void fill(const DiagramBox& box);
  void fill(const gui::ShapeFiller& shape);
  void line(double x0, double y0, double x1, double y1, double width = 1.0);
  void dashedLineDown(double x, double y0, double y1); ///< from the upper to the lower end
  void curve(std::span<const std::pair<double, double>> points, double width);
  void dot(double x, double y, double radius);
  void frame(const DiagramBox& box);                        ///< a line around the box
  void image(const gui::PixelBuffer& pixels, int x, int y); ///< opaque pixels, inside the sheet
  double textWidth(const std::string& words, double size, bool bold = false);
  /// `x` is where the words begin, have their middle or end; `y` is their base line.
  void text(double x, double y, const std::string& words, double size = 14,
            Align align = Align::Left, bool bold = false, const DiagramColour& c = kInk);
  void uprightText(double x, double y, const std::string& words); ///< from below, centred on y
  const gui::PixelBuffer& pixels() const { return m_pixels; }
  void save(const std::filesystem::path& path) const; ///< as PNG. Throws std::runtime_error.

 private:
  void cover(int x, int y, std::uint8_t coverage);

  gui::PixelBuffer m_pixels;
  std::uint32_t m_colour = 0; ///< premultiplied
};

} // namespace qlx::tools
