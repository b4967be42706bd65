// SPDX-License-Identifier: ISC
#include "gui/drawing/CDrawContext.h"

#include "gui/drawing/PixelMath.h"
#include "gui/drawing/ShapeFiller.h"
#include "gui/drawing/Utf8.h"

#include <algorithm>
#include <cmath>

namespace qlx::gui {

namespace {

constexpr std::uint32_t premultiplied(const CColor& colour) {
  const std::uint32_t opaque = 0xFF000000U | (static_cast<std::uint32_t>(colour.red) << 16) |
                               (static_cast<std::uint32_t>(colour.green) << 8) | colour.blue;
  return scaled(opaque, colour.alpha);
}

// Half-covered edge pixels of light text on a dark ground look too dark, so the strokes of small
// text look thin: blending is not done in linear light. For light colours coverage is raised in the
// middle, by at most a tenth of the whole.
constexpr std::uint32_t evenedCoverage(std::uint32_t coverage, bool light) {
  return light ? coverage + coverage * (kFull - coverage) * 2 / (kFull * 5) : coverage;
}

PixelRect pixelsOf(const PixelBuffer& buffer) { return {0, 0, buffer.width, buffer.height}; }

} // namespace

CDrawContext::CDrawContext(PixelBuffer& target, const CTypeface* typeface)
    : m_target(target), m_typeface(typeface), m_clip(pixelsOf(target)) {}

void CDrawContext::setClip(const PixelRect& clip) {
  m_clip = platform::intersection(clip, pixelsOf(m_target));
}

void CDrawContext::drawBitmap(const CBitmap& bitmap, const CRect& where, const CPoint& sourceOffset,
                              float opacity) {
  drawPixels(bitmap.pixels(), where, sourceOffset, opacity);
}

void CDrawContext::drawPixels(const PixelBuffer& pixels, const CRect& where,
                              const CPoint& sourceOffset, float opacity) {
  const PixelRect place = where.nearestPixels();
  const int shiftX = CRect::nearest(sourceOffset.x) - place.left;
  const int shiftY = CRect::nearest(sourceOffset.y) - place.top;
  const PixelRect source{-shiftX, -shiftY, pixels.width - shiftX, pixels.height - shiftY};
  const PixelRect area = platform::intersection(platform::intersection(place, source), m_clip);
  const auto factor =
      static_cast<std::uint32_t>(std::lround(std::clamp(opacity, 0.0F, 1.0F) * kFull));
  for (int y = area.top; y < area.bottom; ++y) {
    const std::uint32_t* from = pixels.row(y + shiftY);
    std::uint32_t* to = m_target.row(y);
    for (int x = area.left; x < area.right; ++x) {
      const std::uint32_t pixel =
          factor == kFull ? from[x + shiftX] : scaled(from[x + shiftX], factor);
      to[x] = (pixel >> 24) == kFull ? pixel : over(pixel, to[x]);
    }
  }
}

void CDrawContext::fillRect(const CRect& where, const CColor& colour) {
  const PixelRect area = platform::intersection(where.nearestPixels(), m_clip);
  const std::uint32_t pixel = premultiplied(colour);
  for (int y = area.top; y < area.bottom; ++y) {
    std::uint32_t* row = m_target.row(y);
    for (int x = area.left; x < area.right; ++x) row[x] = over(pixel, row[x]);
  }
}

void CDrawContext::frameRect(const CRect& where, const CColor& colour) {
  const CRect r = CRect::of(where.nearestPixels());
  fillRect({r.left, r.top, r.right, r.top + 1}, colour);
  fillRect({r.left, r.bottom - 1, r.right, r.bottom}, colour);
  fillRect({r.left, r.top + 1, r.left + 1, r.bottom - 1}, colour);
  fillRect({r.right - 1, r.top + 1, r.right, r.bottom - 1}, colour);
}

void CDrawContext::fillRoundRect(const CRect& where, CCoord radius, const CColor& colour) {
  ShapeFiller shape;
  shape.addRoundRect(where, radius);
  shape.fill(m_target, m_clip, premultiplied(colour));
}

void CDrawContext::frameRoundRect(const CRect& where, CCoord radius, CCoord width,
                                  const CColor& colour) {
  ShapeFiller shape;
  shape.addRoundRect(where, radius);
  shape.addRoundRect(where.insetBy(width, width), radius - width,
                     ShapeFiller::Direction::Anticlockwise);
  shape.fill(m_target, m_clip, premultiplied(colour));
}

void CDrawContext::strokeLine(std::span<const CPoint> points, CCoord width, const CColor& colour) {
  ShapeFiller shape;
  shape.addLine(points, width);
  shape.fill(m_target, m_clip, premultiplied(colour));
}

int CDrawContext::getStringWidth(std::string_view text) const {
  return m_typeface == nullptr ? 0 : m_typeface->width(text, m_font);
}

void CDrawContext::drawString(std::string_view text, const CRect& where, CHoriTxtAlign align) {
  CCoord x = where.left;
  const CCoord room = where.width() - getStringWidth(text);
  if (align == CHoriTxtAlign::kCenterText) x += std::floor(room / 2.0);
  if (align == CHoriTxtAlign::kRightText) x += room;
  drawStringAt(text, CRect::nearest(x), where);
}

void CDrawContext::drawStringAt(std::string_view text, int x, const CRect& where) {
  if (m_typeface == nullptr) return;
  const CTypeface::Metrics metrics = m_typeface->metrics(m_font);
  const int baseline =
      CRect::nearest((where.top + where.bottom + metrics.ascent - metrics.descent) / 2.0);
  const PixelRect area = platform::intersection(where.nearestPixels(), m_clip);
  const std::uint32_t colour = premultiplied(m_fontColour);
  const bool light = m_fontColour.isLight();
  TextPen pen(*m_typeface, m_font, x);
  while (!text.empty()) {
    const CTypeface::Glyph glyph = pen.set(takeUtf8(text));
    const int left = pen.start() + glyph.left;
    const int top = baseline - glyph.top;
    const PixelRect box =
        platform::intersection({left, top, left + glyph.width, top + glyph.height}, area);
    for (int py = box.top; py < box.bottom; ++py) {
      std::uint32_t* row = m_target.row(py);
      const std::uint8_t* coverage =
          glyph.coverage.data() +
          static_cast<std::size_t>(py - top) * static_cast<std::size_t>(glyph.width);
      for (int px = box.left; px < box.right; ++px)
        row[px] = over(scaled(colour, evenedCoverage(coverage[px - left], light)), row[px]);
    }
  }
}

} // namespace qlx::gui
