// SPDX-License-Identifier: ISC
#include "gui/drawing/CDrawContext.h"

#include "gui/drawing/PixelMath.h"
#include "gui/drawing/ShapeFiller.h"
#include "gui/drawing/Utf8.h"

#include <algorithm>
#include <cmath>
#include <vector>

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

std::vector<CPoint> scaledPoints(std::span<const CPoint> points, double factor) {
  std::vector<CPoint> scaled;
  for (const CPoint& p : points) scaled.push_back({p.x * factor, p.y * factor});
  return scaled;
}

PixelRect pixelsOf(const PixelBuffer& buffer) { return {0, 0, buffer.width, buffer.height}; }

/// Lays pixels over the target: pixel (x, y) of it gets row y + shiftY's pixel x + shiftX.
struct PlacedRows {
  PixelRect part; ///< what there is to draw, in pixels of the rows less the shift
  int shiftX;
  int shiftY;
  std::uint32_t opacity; ///< of 255
};

template <typename RowOf>
void layRows(const RowOf& rowOf, const PlacedRows& rows, PixelBuffer& target,
             const PixelRect& clip) {
  const PixelRect area = platform::intersection(rows.part, clip);
  if (area.empty()) return;
  for (int y = area.top; y < area.bottom; ++y) {
    const std::uint32_t* from = rowOf(y + rows.shiftY) + rows.shiftX;
    std::uint32_t* to = target.row(y);
    for (int x = area.left; x < area.right; ++x) {
      const std::uint32_t pixel = rows.opacity == kFull ? from[x] : scaled(from[x], rows.opacity);
      to[x] = (pixel >> 24) == kFull ? pixel : over(pixel, to[x]);
    }
  }
}

/// The same, each pixel of the target the mean of two by two pixels of the rows; those outside the
/// part count as transparent.
template <typename RowOf>
void layHalvedRows(const RowOf& rowOf, const PlacedRows& rows, PixelBuffer& target,
                   const PixelRect& clip) {
  const PixelRect& part = rows.part;
  if (part.empty()) return;
  const PixelRect touched{part.left >> 1, part.top >> 1, (part.right + 1) >> 1,
                          (part.bottom + 1) >> 1};
  const PixelRect area = platform::intersection(touched, clip);
  for (int y = area.top; y < area.bottom; ++y) {
    QuarteredPixels sums;
    const std::uint32_t* from[2]{};
    for (int i = 0; i < 2; ++i) {
      const int row = 2 * y + i;
      if (row >= part.top && row < part.bottom) from[i] = rowOf(row + rows.shiftY) + rows.shiftX;
    }
    std::uint32_t* to = target.row(y);
    for (int x = area.left; x < area.right; ++x) {
      sums.clear();
      const int left = std::max(2 * x, part.left);
      const int right = std::min(2 * x + 2, part.right);
      for (const std::uint32_t* row : from) {
        if (row == nullptr) continue;
        for (int i = left; i < right; ++i) sums.add(row[i]);
      }
      const std::uint32_t mean = sums.mean();
      const std::uint32_t pixel = rows.opacity == kFull ? mean : scaled(mean, rows.opacity);
      to[x] = (pixel >> 24) == kFull ? pixel : over(pixel, to[x]);
    }
  }
}

} // namespace

CDrawContext::CDrawContext(PixelBuffer& target, const CTypeface* typeface, double scale)
    : m_target(target), m_typeface(typeface), m_scale(scale), m_artworkScale(artworkScale(scale)),
      m_clip(pixelsOf(target)) {}

void CDrawContext::setClip(const PixelRect& clip) {
  m_clip = platform::intersection(clip, pixelsOf(m_target));
}

PixelRect CDrawContext::targetPixels(const CRect& area) const {
  return platform::intersection(area.scaledBy(m_scale).touchedPixels(), pixelsOf(m_target));
}

void CDrawContext::drawBitmap(const CBitmap& bitmap, const CRect& where, const CPoint& sourceOffset,
                              float opacity) {
  drawRows([&](int y) { return bitmap.row(m_artworkScale, y); }, bitmap.width() * m_artworkScale,
           bitmap.height() * m_artworkScale, where, sourceOffset, opacity);
}

void CDrawContext::drawPixels(const PixelBuffer& pixels, const CRect& where,
                              const CPoint& sourceOffset, float opacity) {
  drawRows([&](int y) { return pixels.row(y); }, pixels.width, pixels.height, where, sourceOffset,
           opacity);
}

template <typename RowOf>
void CDrawContext::drawRows(const RowOf& rowOf, int width, int height, const CRect& where,
                            const CPoint& sourceOffset, float opacity) {
  const double scale = m_artworkScale;
  const PixelRect place = where.scaledBy(scale).nearestPixels();
  const int shiftX = CRect::nearest(sourceOffset.x * scale) - place.left;
  const int shiftY = CRect::nearest(sourceOffset.y * scale) - place.top;
  const PixelRect source{-shiftX, -shiftY, width - shiftX, height - shiftY};
  const auto factor =
      static_cast<std::uint32_t>(std::lround(std::clamp(opacity, 0.0F, 1.0F) * kFull));
  const PlacedRows rows{platform::intersection(place, source), shiftX, shiftY, factor};
  if (m_artworkScale == m_scale)
    layRows(rowOf, rows, m_target, m_clip);
  else
    layHalvedRows(rowOf, rows, m_target, m_clip);
}

void CDrawContext::fillRect(const CRect& where, const CColor& colour) {
  const PixelRect area = platform::intersection(where.scaledBy(m_scale).nearestPixels(), m_clip);
  const std::uint32_t pixel = premultiplied(colour);
  for (int y = area.top; y < area.bottom; ++y) {
    std::uint32_t* row = m_target.row(y);
    for (int x = area.left; x < area.right; ++x) row[x] = over(pixel, row[x]);
  }
}

CCoord CDrawContext::getHairline() const { return std::floor(m_scale) / m_scale; }

void CDrawContext::frameRect(const CRect& where, const CColor& colour) {
  const CCoord line = getHairline();
  const CRect r = CRect::of(where.scaledBy(m_scale).nearestPixels()).scaledBy(1.0 / m_scale);
  fillRect({r.left, r.top, r.right, r.top + line}, colour);
  fillRect({r.left, r.bottom - line, r.right, r.bottom}, colour);
  fillRect({r.left, r.top + line, r.left + line, r.bottom - line}, colour);
  fillRect({r.right - line, r.top + line, r.right, r.bottom - line}, colour);
}

void CDrawContext::fillRoundRect(const CRect& where, CCoord radius, const CColor& colour) {
  ShapeFiller shape;
  shape.addRoundRect(where.scaledBy(m_scale), radius * m_scale);
  shape.fill(m_target, m_clip, premultiplied(colour));
}

void CDrawContext::frameRoundRect(const CRect& where, CCoord radius, CCoord width,
                                  const CColor& colour) {
  const CRect outer = where.scaledBy(m_scale);
  const CCoord line = width * m_scale;
  ShapeFiller shape;
  shape.addRoundRect(outer, radius * m_scale);
  shape.addRoundRect(outer.insetBy(line, line), radius * m_scale - line,
                     ShapeFiller::Direction::Anticlockwise);
  shape.fill(m_target, m_clip, premultiplied(colour));
}

void CDrawContext::strokeLine(std::span<const CPoint> points, CCoord width, const CColor& colour) {
  ShapeFiller shape;
  shape.addLine(scaledPoints(points, m_scale), width * m_scale);
  shape.fill(m_target, m_clip, premultiplied(colour));
}

CCoord CDrawContext::getStringWidth(std::string_view text) const {
  return m_typeface == nullptr ? 0.0 : m_typeface->width(text, m_font);
}

void CDrawContext::drawString(std::string_view text, const CRect& where, CHoriTxtAlign align) {
  const CRect place = where.scaledBy(m_scale);
  CCoord x = place.left;
  const CCoord room = place.width() - CRect::nearest(getStringWidth(text) * m_scale);
  if (align == CHoriTxtAlign::kCenterText) x += std::floor(room / 2.0);
  if (align == CHoriTxtAlign::kRightText) x += room;
  drawStringAt(text, CRect::nearest(x), where);
}

void CDrawContext::drawStringAt(std::string_view text, int x, const CRect& where) {
  if (m_typeface == nullptr) return;
  const CTypeface::Metrics metrics = m_typeface->metrics(m_font);
  const CRect place = where.scaledBy(m_scale);
  const int baseline =
      CRect::nearest((place.top + place.bottom + metrics.ascent - metrics.descent) / 2.0);
  const PixelRect area = platform::intersection(place.nearestPixels(), m_clip);
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
      for (int px = box.left; px < box.right; ++px) {
        const std::uint32_t coverage = glyph.coverageAt(px - left, py - top);
        row[px] = over(scaled(colour, evenedCoverage(coverage, light)), row[px]);
      }
    }
  }
}

} // namespace qlx::gui
