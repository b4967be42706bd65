// SPDX-License-Identifier: ISC
#include "brezan/pictures/DiagramCanvas.h"

#include "brezan/pictures/DiagramFont.h"
#include "brezan/pictures/PngFile.h"
#include "gui/drawing/PixelMath.h"

#include <algorithm>
#include <array>
#include <cmath>

namespace qlx::tools {

namespace {

std::uint32_t byteOf(double part) {
  return static_cast<std::uint32_t>(std::lround(std::clamp(part, 0.0, 1.0) * gui::kFull));
}

} // namespace

std::uint32_t pixelOf(const DiagramColour& c) {
  return gui::kFull << 24 | byteOf(c.red) << 16 | byteOf(c.green) << 8 | byteOf(c.blue);
}

DiagramCanvas::DiagramCanvas(int width, int height, const DiagramColour& paper)
    : m_pixels(width, height) {
  std::ranges::fill(m_pixels.pixels, pixelOf(paper));
}

void DiagramCanvas::colour(const DiagramColour& c, double opacity) {
  m_colour = gui::scaled(pixelOf(c), byteOf(opacity));
}

void DiagramCanvas::fill(const gui::ShapeFiller& shape) {
  shape.fill(m_pixels, {0, 0, m_pixels.width, m_pixels.height}, m_colour);
}

void DiagramCanvas::fill(const DiagramBox& box) {
  gui::ShapeFiller shape;
  shape.addRoundRect({box.x, box.y, box.right(), box.bottom()}, 0.0);
  fill(shape);
}

void DiagramCanvas::line(double x0, double y0, double x1, double y1, double width) {
  const std::array<gui::CPoint, 2> ends{{{x0, y0}, {x1, y1}}};
  gui::ShapeFiller shape;
  shape.addLine(ends, width);
  fill(shape);
}

void DiagramCanvas::dashedLineDown(double x, double y0, double y1) {
  constexpr double kDash = 5.0;
  constexpr double kGap = 4.0;
  const auto dashes = static_cast<int>(std::ceil((y1 - y0) / (kDash + kGap)));
  for (int i = 0; i < dashes; ++i) {
    const double y = y0 + i * (kDash + kGap);
    line(x, y, x, std::min(y + kDash, y1));
  }
}

// Each piece reaches a little beyond its ends, which closes the gaps between pieces of different
// directions and, unlike pointed corners, leaves no spike where the curve turns back.
void DiagramCanvas::curve(std::span<const std::pair<double, double>> points, double width) {
  gui::ShapeFiller shape;
  for (std::size_t i = 0; i + 1 < points.size(); ++i) {
    const gui::CPoint from{points[i].first, points[i].second};
    const gui::CPoint to{points[i + 1].first, points[i + 1].second};
    const gui::CPoint along = to - from;
    const double length = std::hypot(along.x, along.y);
    if (length == 0.0) continue;
    const double reach = 0.35 * width / length;
    const gui::CPoint beyond{along.x * reach, along.y * reach};
    const std::array<gui::CPoint, 2> ends{from - beyond, to + beyond};
    shape.addLine(ends, width);
  }
  fill(shape);
}

void DiagramCanvas::dot(double x, double y, double radius) {
  gui::ShapeFiller shape;
  shape.addRoundRect({x - radius, y - radius, x + radius, y + radius}, radius);
  fill(shape);
}

void DiagramCanvas::frame(const DiagramBox& box) {
  colour(kInk);
  const double right = box.right() + 1.0;
  const double bottom = box.bottom() + 1.0;
  fill(DiagramBox{box.x - 1.0, box.y - 1.0, box.width + 2.0, 1.0});
  fill(DiagramBox{box.x - 1.0, bottom - 1.0, box.width + 2.0, 1.0});
  fill(DiagramBox{box.x - 1.0, box.y, 1.0, box.height});
  fill(DiagramBox{right - 1.0, box.y, 1.0, box.height});
}

void DiagramCanvas::image(const gui::PixelBuffer& pixels, int x, int y) {
  for (int row = 0; row < pixels.height; ++row)
    std::copy_n(pixels.row(row), pixels.width, m_pixels.row(y + row) + x);
}

double DiagramCanvas::textWidth(const std::string& words, double size, bool bold) {
  return advanceOf(words, size, bold);
}

void DiagramCanvas::cover(int x, int y, std::uint8_t coverage) {
  if (coverage == 0 || x < 0 || y < 0 || x >= m_pixels.width || y >= m_pixels.height) return;
  std::uint32_t& pixel = m_pixels.row(y)[x];
  pixel = gui::over(gui::scaled(m_colour, coverage), pixel);
}

void DiagramCanvas::text(double x, double y, const std::string& words, double size, Align align,
                         bool bold, const DiagramColour& c) {
  const double part = align == Align::Left ? 0.0 : align == Align::Right ? 1.0 : 0.5;
  const double begin = x - part * textWidth(words, size, bold);
  const double column = std::floor(begin);
  const DrawnText drawn = drawText(words, size, begin - column, bold);
  const int left = static_cast<int>(column) + drawn.left;
  const int top = static_cast<int>(std::lround(y)) + drawn.top;
  colour(c);
  auto coverage = drawn.coverage.begin();
  for (int row = 0; row < drawn.height; ++row)
    for (int across = 0; across < drawn.width; ++across)
      cover(left + across, top + row, *coverage++);
}

void DiagramCanvas::uprightText(double x, double y, const std::string& words) {
  const DrawnText drawn = drawText(words, 14);
  const int left = static_cast<int>(std::lround(x)) + drawn.top;
  const int bottom = static_cast<int>(std::lround(y + drawn.advance / 2.0)) - drawn.left - 1;
  colour(kInk);
  auto coverage = drawn.coverage.begin();
  for (int row = 0; row < drawn.height; ++row)
    for (int across = 0; across < drawn.width; ++across)
      cover(left + row, bottom - across, *coverage++);
}

void DiagramCanvas::save(const std::filesystem::path& path) const { savePng(m_pixels, path); }

} // namespace qlx::tools
