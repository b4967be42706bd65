// SPDX-License-Identifier: ISC
#pragma once

#include "gui/CColor.h"
#include "gui/CRect.h"
#include "gui/drawing/CBitmap.h"
#include "gui/drawing/CTypeface.h"
#include "gui/drawing/WindowScale.h"

#include <cstdint>
#include <memory>
#include <span>
#include <string_view>

namespace qlx::gui {

enum class CHoriTxtAlign : std::uint8_t { kLeftText, kCenterText, kRightText };

/// Draws into pixels in memory. Places and sizes are pixels of the layout, of which each takes
/// `scale` pixels of the target; pixel (0, 0) is the same in both. Clipping is by whole pixels of
/// the target, and every operation gives a pixel the same colour whatever the clip, so that a
/// redrawn part equals the same part of a whole redraw. User-interface thread only.
class CDrawContext {
 public:
  /// `scale` is one of kWindowScales, and the typeface's. `typeface` may be null: texts are then
  /// left out. Target and typeface outlive the context.
  CDrawContext(PixelBuffer& target, const CTypeface* typeface, double scale = 1.0);
  CDrawContext(const CDrawContext&) = delete;
  CDrawContext& operator=(const CDrawContext&) = delete;

  double getScale() const { return m_scale; }
  /// Pictures are drawn from pixels of so many times the layout's size.
  int getArtworkScale() const { return m_artworkScale; }

  /// In pixels of the target.
  const PixelRect& getClip() const { return m_clip; }
  /// Limits drawing to the clip's part of the target.
  void setClip(const PixelRect& clip);
  /// The pixels of the target that an area touches.
  PixelRect targetPixels(const CRect& area) const;

  /// Draws the bitmap over what is there, its pixel (sourceOffset) at the corner of `where`, as
  /// much of it as fits into `where`. Opacity 0..1.
  void drawBitmap(const CBitmap& bitmap, const CRect& where, const CPoint& sourceOffset = {},
                  float opacity = 1.0F);
  /// The same with pixels getArtworkScale() times as large.
  void drawPixels(const PixelBuffer& pixels, const CRect& where, const CPoint& sourceOffset = {},
                  float opacity = 1.0F);

  /// Whole pixels of the target: edges go to the nearest.
  void fillRect(const CRect& where, const CColor& colour);
  /// The width, in the layout's pixels, of the thinnest line of whole pixels that looks as heavy
  /// as one pixel of the layout.
  CCoord getHairline() const;
  /// A hairline wide, just inside the rectangle.
  void frameRect(const CRect& where, const CColor& colour);
  /// Smooth shapes (ShapeFiller).
  void fillRoundRect(const CRect& where, CCoord radius, const CColor& colour);
  void frameRoundRect(const CRect& where, CCoord radius, CCoord width, const CColor& colour);
  void strokeLine(std::span<const CPoint> points, CCoord width, const CColor& colour);

  void setFont(const CFontDesc& font) { m_font = font; }
  const CFontDesc& getFont() const { return m_font; }
  void setFontColor(const CColor& colour) { m_fontColour = colour; }

  /// One line of text (UTF-8), vertically in the middle of the rectangle and clipped by it.
  void drawString(std::string_view text, const CRect& where,
                  CHoriTxtAlign align = CHoriTxtAlign::kCenterText);
  /// The same with the pen at `x` pixels of the target (which may lie outside the rectangle).
  void drawStringAt(std::string_view text, int x, const CRect& where);

  CCoord getStringWidth(std::string_view text) const;

 private:
  template <typename RowOf>
  void drawRows(const RowOf& rowOf, int width, int height, const CRect& where,
                const CPoint& sourceOffset, float opacity);

  PixelBuffer& m_target;
  const CTypeface* m_typeface;
  double m_scale;
  int m_artworkScale;
  PixelRect m_clip;
  CFontDesc m_font = kNormalFontSmall;
  CColor m_fontColour = kWhiteCColor;
};

} // namespace qlx::gui
