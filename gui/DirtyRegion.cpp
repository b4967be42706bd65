// SPDX-License-Identifier: ISC
#include "gui/DirtyRegion.h"

namespace qlx::gui {

namespace {

PixelRect united(const PixelRect& a, const PixelRect& b) {
  return {std::min(a.left, b.left), std::min(a.top, b.top), std::max(a.right, b.right),
          std::max(a.bottom, b.bottom)};
}

} // namespace

void DirtyRegion::add(const PixelRect& area) {
  PixelRect grown = platform::intersection(area, m_bounds);
  if (grown.empty()) return;
  // What the new area meets becomes part of it; having grown it may meet others.
  for (std::size_t i = 0; i < m_count;) {
    if (platform::intersection(grown, m_areas[i]).empty()) {
      ++i;
      continue;
    }
    grown = united(grown, m_areas[i]);
    m_areas[i] = m_areas[--m_count];
    i = 0;
  }
  if (m_count == kMostAreas) {
    const PixelRect rest = m_areas[--m_count];
    add(united(grown, rest));
    return;
  }
  m_areas[m_count++] = grown;
}

} // namespace qlx::gui
