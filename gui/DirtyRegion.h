// SPDX-License-Identifier: ISC
#pragma once

#include "gui/CRect.h"

#include <array>
#include <cstddef>
#include <span>

namespace qlx::gui {

/// What has to be redrawn: a few rectangles of a window's pixels that don't overlap. Each area
/// added lies whole inside one of them. Never allocates.
class DirtyRegion {
 public:
  /// Everything outside is left out. A pixel of the layout takes `scale` pixels of the window.
  explicit DirtyRegion(const PixelRect& bounds, double scale = 1.0)
      : m_bounds(bounds), m_scale(scale) {}

  void add(const PixelRect& area);
  /// All pixels of the window that an area of the layout touches.
  void add(const CRect& area) { add(area.scaledBy(m_scale).touchedPixels()); }
  void clear() { m_count = 0; }
  bool empty() const { return m_count == 0; }
  std::span<const PixelRect> areas() const { return {m_areas.data(), m_count}; }

 private:
  static constexpr std::size_t kMostAreas = 24;

  PixelRect m_bounds;
  double m_scale;
  std::array<PixelRect, kMostAreas> m_areas{};
  std::size_t m_count = 0;
};

} // namespace qlx::gui
