// SPDX-License-Identifier: ISC
#pragma once

#include "gui/drawing/CDrawContext.h"

#include <algorithm>

namespace qlx::gui {

/// A surface of its own, transparent at first, on which a control composes what it then copies to
/// the screen.
class COffscreenContext {
 public:
  /// `scale` is the artwork's of the context that the surface is copied to.
  explicit COffscreenContext(int width, int height, int scale = 1)
      : m_pixels(width * scale, height * scale), m_context(m_pixels, nullptr, scale) {}

  /// Drawing goes here.
  CDrawContext& context() { return m_context; }
  /// Transparent again.
  void clear() { std::ranges::fill(m_pixels.pixels, 0U); }
  bool isOpaque() const {
    return std::ranges::all_of(m_pixels.pixels, [](std::uint32_t p) { return p >> 24 == 0xFF; });
  }
  int scale() const { return m_context.getArtworkScale(); }

  /// Draws the surface over `target`, its pixel (sourceOffset) at the corner of `where`, as much as
  /// fits into `where`.
  void copyTo(CDrawContext& target, const CRect& where, const CPoint& sourceOffset = {}) const {
    target.drawPixels(m_pixels, where, sourceOffset);
  }

 private:
  PixelBuffer m_pixels;
  CDrawContext m_context;
};

} // namespace qlx::gui
