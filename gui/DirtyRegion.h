// SPDX-License-Identifier: ISC
#pragma once

#include "gui/CRect.h"

#include <array>
#include <cstddef>
#include <span>

namespace qlx::gui {

/// What has to be redrawn: a few rectangles that don't overlap. Each area added lies whole inside
/// one of them. Never allocates.
class DirtyRegion {
 public:
  /// Everything outside is left out.
  explicit DirtyRegion(const PixelRect& bounds) : m_bounds(bounds) {}

  void add(const PixelRect& area);
  void clear() { m_count = 0; }
  bool empty() const { return m_count == 0; }
  std::span<const PixelRect> areas() const { return {m_areas.data(), m_count}; }

 private:
  static constexpr std::size_t kMostAreas = 24;

  PixelRect m_bounds;
  std::array<PixelRect, kMostAreas> m_areas{};
  std::size_t m_count = 0;
};

} // namespace qlx::gui
