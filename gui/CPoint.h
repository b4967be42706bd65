// SPDX-License-Identifier: ISC
#pragma once

namespace qlx::gui {

/// Pixels; y grows downwards.
using CCoord = double;

/// A place in the frame's coordinates, or a distance.
struct CPoint {
  CCoord x = 0.0;
  CCoord y = 0.0;

  constexpr bool operator==(const CPoint&) const = default;
  constexpr CPoint operator+(const CPoint& other) const { return {x + other.x, y + other.y}; }
  constexpr CPoint operator-(const CPoint& other) const { return {x - other.x, y - other.y}; }
};

} // namespace qlx::gui
