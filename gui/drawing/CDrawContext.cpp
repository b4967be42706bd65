// SPDX-License-Identifier: ISC
#include "gui/drawing/CDrawContext.h"

#include "gui/drawing/PixelMath.h"
#include "gui/drawing/ShapeFiller.h"
#include "gui/drawing/Utf8.h"

#include <algorithm>
#include <array>
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

constexpr int kBlock = 64; ///< pixels that are worked on at a time
using Block = std::array<std::uint32_t, kBlock>;

/// `count` pixels, kBlock at most, over those at `to`. By bytes, of which many fit into a register.
void layBlock(const std::uint32_t* __restrict from, int count, std::uint32_t* __restrict to) {
  Block transparency;
  for (int i = 0; i < count; ++i) {
    const std::uint32_t single = ~from[i] >> 24;
    const std::uint32_t two = single | single << 8;
    transparency[static_cast<std::size_t>(i)] = two | two << 16;
  }
  const auto* above = reinterpret_cast<const std::uint8_t*>(from);
  const auto* factor = reinterpret_cast<const std::uint8_t*>(transparency.data());
  auto* below = reinterpret_cast<std::uint8_t*>(to);
  for (int i = 0; i < 4 * count; ++i) {
    const auto product = static_cast<std::uint16_t>(below[i] * factor[i] + 0x80);
    const auto scaled = static_cast<std::uint16_t>(product + (product >> 8)) >> 8;
    below[i] = static_cast<std::uint8_t>(above[i] + scaled);
  }
}

/// `count` pixels over those at `to`, which are others.
void layPixels(const std::uint32_t* __restrict from, int count, std::uint32_t opacity,
               std::uint32_t* __restrict to) {
  std::uint32_t all = ~0U;
  for (int i = 0; i < count; ++i) all &= from[i];
  if ((all >> 24) == kFull && opacity == kFull) {
    std::copy_n(from, count, to);
    return;
  }
  Block faded;
  for (int done = 0; done < count; done += kBlock) {
    const int now = std::min(kBlock, count - done);
    for (int i = 0; i < now && opacity != kFull; ++i)
      faded[static_cast<std::size_t>(i)] = scaled(from[done + i], opacity);
    layBlock(opacity == kFull ? from + done : faded.data(), now, to + done);
  }
}

template <typename RowOf>
void layRows(const RowOf& rowOf, const PlacedRows& rows, PixelBuffer& target,
             const PixelRect& clip) {
  const PixelRect area = platform::intersection(rows.part, clip);
  if (area.empty()) return;
  for (int y = area.top; y < area.bottom; ++y) {
    layPixels(rowOf(y + rows.shiftY) + rows.shiftX + area.left, area.right - area.left,
              rows.opacity, target.row(y) + area.left);
  }
}

/// Means of two by two pixels, pixel 0 that of the first two of both rows.
void halvePixels(const std::uint32_t* __restrict upper, const std::uint32_t* __restrict lower,
                 int count, std::uint32_t* __restrict to) {
  for (int i = 0; i < count; ++i) {
    QuarteredPixels sums;
    sums.add(upper[2 * i]);
    sums.add(upper[2 * i + 1]);
    sums.add(lower[2 * i]);
    sums.add(lower[2 * i + 1]);
    to[i] = sums.mean();
  }
}

/// The same as layRows, each pixel of the target the mean of two by two pixels of the rows; those
/// outside the part count as transparent.
template <typename RowOf>
void layHalvedRows(const RowOf& rowOf, const PlacedRows& rows, PixelBuffer& target,
                   const PixelRect& clip) {
  const PixelRect& part = rows.part;
  if (part.empty()) return;
  const PixelRect touched{part.left >> 1, part.top >> 1, (part.right + 1) >> 1,
                          (part.bottom + 1) >> 1};
  const PixelRect area = platform::intersection(touched, clip);
  constexpr int kMost = 64; // at a time
  for (int y = area.top; y < area.bottom; ++y) {
    for (int left = area.left; left < area.right; left += kMost) {
      const int count = std::min(kMost, area.right - left);
      std::array<std::array<std::uint32_t, 2 * kMost>, 2> pair{};
      const int first = std::max(2 * left, part.left);
      const int last = std::min(2 * (left + count), part.right);
      for (int i = 0; i < 2; ++i) {
        const int row = 2 * y + i;
        if (row < part.top || row >= part.bottom) continue;
        std::copy(rowOf(row + rows.shiftY) + rows.shiftX + first,
                  rowOf(row + rows.shiftY) + rows.shiftX + last,
                  pair[static_cast<std::size_t>(i)].begin() + (first - 2 * left));
      }
      std::array<std::uint32_t, kMost> means;
      halvePixels(pair[0].data(), pair[1].data(), count, means.data());
      layPixels(means.data(), count, rows.opacity, target.row(y) + left);
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
