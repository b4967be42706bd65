// SPDX-License-Identifier: ISC
#pragma once

#include "gui/CColor.h"
#include "gui/CRect.h"
#include "gui/drawing/CBitmap.h"
#include "gui/drawing/CTypeface.h"

#include <cstdint>
#include <memory>
#include <span>
#include <string_view>

namespace qlx::gui {

enum class CHoriTxtAlign : std::uint8_t { kLeftText, kCenterText, kRightText };

/// Draws into pixels in memory. Clipping is by whole pixels, and every operation gives a pixel the
/// same colour whatever the clip, so that a redrawn part equals the same part of a whole redraw.
/// User-interface thread only.
class CDrawContext {
 public:
  /// `typeface` may be null: texts are then left out. Both outlive the context.
  CDrawContext(PixelBuffer& target, const CTypeface* typeface);
  CDrawContext(const CDrawContext&) = delete;
  CDrawContext& operator=(const CDrawContext&) = delete;

  const PixelRect& getClip() const { return m_clip; }
  /// Limits drawing to the clip's part of the target.
  void setClip(const PixelRect& clip);

  /// Draws the bitmap over what is there, its pixel (sourceOffset) at the corner of `where`, as
  /// much of it as fits into `where`. Opacity 0..1.
  void drawBitmap(const CBitmap& bitmap, const CRect& where, const CPoint& sourceOffset = {},
                  float opacity = 1.0F);
  void drawPixels(const PixelBuffer& pixels, const CRect& where, const CPoint& sourceOffset = {},
                  float opacity = 1.0F);

  /// Whole pixels (CRect::nearestPixels).
  void fillRect(const CRect& where, const CColor& colour);
  /// One pixel wide, just inside the rectangle.
  void frameRect(const CRect& where, const CColor& colour);
  /// Smooth shapes (ShapeFiller). Radius and width in pixels.
  void fillRoundRect(const CRect& where, CCoord radius, const CColor& colour);
  void frameRoundRect(const CRect& where, CCoord radius, CCoord width, const CColor& colour);
  void strokeLine(std::span<const CPoint> points, CCoord width, const CColor& colour);

  void setFont(const CFontDesc& font) { m_font = font; }
  const CFontDesc& getFont() const { return m_font; }
  void setFontColor(const CColor& colour) { m_fontColour = colour; }

  /// One line of text (UTF-8), vertically in the middle of the rectangle and clipped by it.
  void drawString(std::string_view text, const CRect& where,
                  CHoriTxtAlign align = CHoriTxtAlign::kCenterText);
  /// The same with the pen at `x` (which may lie outside the rectangle).
  void drawStringAt(std::string_view text, int x, const CRect& where);

  int getStringWidth(std::string_view text) const;

 private:
  PixelBuffer& m_target;
  const CTypeface* m_typeface;
  PixelRect m_clip;
  CFontDesc m_font = kNormalFontSmall;
  CColor m_fontColour = kWhiteCColor;
};

} // namespace qlx::gui
