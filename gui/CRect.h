// SPDX-License-Identifier: ISC
#pragma once

#include "gui/CPoint.h"
#include "platform/PixelRect.h"

#include <algorithm>
#include <cmath>

namespace qlx::gui {

using platform::PixelRect;

/// A rectangle in the frame's coordinates: right and bottom are outside it.
struct CRect {
  CCoord left = 0.0;
  CCoord top = 0.0;
  CCoord right = 0.0;
  CCoord bottom = 0.0;

  constexpr CCoord width() const { return right - left; }
  constexpr CCoord height() const { return bottom - top; }
  constexpr CPoint topLeft() const { return {left, top}; }
  constexpr CPoint centre() const { return {(left + right) * 0.5, (top + bottom) * 0.5}; }
  constexpr bool empty() const { return right <= left || bottom <= top; }
  constexpr bool operator==(const CRect&) const = default;

  constexpr bool contains(const CPoint& p) const {
    return p.x >= left && p.x < right && p.y >= top && p.y < bottom;
  }
  constexpr bool contains(const CRect& r) const {
    return r.left >= left && r.right <= right && r.top >= top && r.bottom <= bottom;
  }
  constexpr bool meets(const CRect& r) const {
    return r.left < right && left < r.right && r.top < bottom && top < r.bottom;
  }
  constexpr CRect scaledBy(CCoord factor) const {
    return {left * factor, top * factor, right * factor, bottom * factor};
  }
  constexpr CRect insetBy(CCoord x, CCoord y) const {
    return {left + x, top + y, right - x, bottom - y};
  }
  constexpr CRect intersect(const CRect& r) const {
    return {std::max(left, r.left), std::max(top, r.top), std::min(right, r.right),
            std::min(bottom, r.bottom)};
  }

  /// The pixels that a bitmap drawn here covers: edges go to the nearest pixel edge, halves
  /// downwards on the screen.
  PixelRect nearestPixels() const {
    return {nearest(left), nearest(top), nearest(right), nearest(bottom)};
  }

  /// All pixels that the rectangle touches.
  PixelRect touchedPixels() const {
    return {static_cast<int>(std::floor(left)), static_cast<int>(std::floor(top)),
            static_cast<int>(std::ceil(right)), static_cast<int>(std::ceil(bottom))};
  }

  static int nearest(CCoord v) { return static_cast<int>(std::floor(v + 0.5)); }
  static constexpr CRect of(const PixelRect& r) {
    return {static_cast<CCoord>(r.left), static_cast<CCoord>(r.top), static_cast<CCoord>(r.right),
            static_cast<CCoord>(r.bottom)};
  }
};

} // namespace qlx::gui
