// SPDX-License-Identifier: ISC
#pragma once

#include "gui/CPoint.h"
#include "gui/CRect.h"
#include "gui/drawing/PixelBuffer.h"

#include <cstdint>
#include <span>
#include <utility>
#include <vector>

namespace qlx::gui {

/// Fills outlines smoothly, by the non-zero winding rule: a second outline inside the first and in
/// the other direction leaves a hole. A pixel is cut by 16 lines; on each, edges are placed to
/// 1/256 of a pixel. Coordinates are pixels of the target.
class ShapeFiller {
 public:
  enum class Direction { Clockwise, Anticlockwise };

  /// The radius is at most half of the shorter side. An empty rectangle adds nothing.
  void addRoundRect(const CRect& where, CCoord radius, Direction direction = Direction::Clockwise);

  /// Any outline; the last point is joined to the first.
  void addOutline(std::vector<CPoint> points) { m_outlines.push_back(std::move(points)); }

  /// A line of the given width through the points, with flat ends and pointed corners. Neighbouring
  /// points differ, and the line never turns straight back.
  void addLine(std::span<const CPoint> points, CCoord width);

  /// Lays a premultiplied colour over the target, within the clip (which lies within the target). A
  /// pixel's colour does not depend on the clip.
  void fill(PixelBuffer& target, const PixelRect& clip, std::uint32_t colour) const;

 private:
  using Outline = std::vector<CPoint>;

  PixelRect touchedPixels() const;

  std::vector<Outline> m_outlines;
};

} // namespace qlx::gui
