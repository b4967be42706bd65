// SPDX-License-Identifier: ISC
#pragma once

#include "resources/artwork/drawing/Geometry.h"

#include <cairo.h>

#include <cstddef>
#include <functional>
#include <vector>

namespace qlx::artwork {

/// Coverage of a shape, 0..1, on the fine grid of a canvas, inside a box of whole layout pixels.
/// Outside the box the coverage is 0.
class Mask {
 public:
  /// An empty mask; `density` is the number of samples per layout pixel along each axis.
  Mask(int density, PixelRect box);

  /// The coverage of what `draw` fills or strokes, in layout pixels, with full opacity.
  static Mask drawn(int density, PixelRect box, const std::function<void(cairo_t*)>& draw);

  const PixelRect& box() const { return m_box; }
  int density() const { return m_density; }
  int columns() const { return m_columns; }
  int rows() const { return m_rows; }

  /// Coverage of a sample of the box; column and row must lie inside.
  float& at(int column, int row) { return m_coverage[index(column, row)]; }
  float at(int column, int row) const { return m_coverage[index(column, row)]; }

  /// Coverage at a sample counted from the layout's origin, 0 outside the box.
  float sample(int x, int y) const;

  /// A soft copy: blurred by a bell curve of the given standard deviation in layout pixels. The
  /// box grows so that nothing is cut off.
  Mask blurred(double sigma) const;

  /// A copy moved by layout pixels, rounded to whole samples, in a box of its own.
  Mask moved(double dx, double dy) const;

  /// Product with another mask, or with its complement, in this mask's box.
  Mask within(const Mask& other) const;
  Mask without(const Mask& other) const;

 private:
  std::size_t index(int column, int row) const {
    return static_cast<std::size_t>(row) * static_cast<std::size_t>(m_columns) +
           static_cast<std::size_t>(column);
  }

  int m_density;
  PixelRect m_box;
  int m_columns;
  int m_rows;
  std::vector<float> m_coverage;
};

/// Adds a rectangle with rounded corners to the current path.
void roundedRectangle(cairo_t* cr, double left, double top, double right, double bottom,
                      double radius);

} // namespace qlx::artwork
