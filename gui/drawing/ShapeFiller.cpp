// SPDX-License-Identifier: ISC
#include "gui/drawing/ShapeFiller.h"

#include "gui/drawing/PixelMath.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <limits>
#include <numbers>

namespace qlx::gui {

namespace {

constexpr int kLinesPerPixel = 16;
constexpr int kUnitsPerPixel = 256; // across
constexpr int kFullCoverage = kLinesPerPixel * kUnitsPerPixel;

// Chords of a quarter circle: at most 0.0022 of the radius away from it.
constexpr int kStepsPerQuarter = 12;

/// Where a line meets an edge, in units from the left end of the row; +1 for edges that go down.
struct Crossing {
  int place;
  int winding;
};

/// The row's coverage as differences between neighbouring pixels.
class RowCoverage {
 public:
  explicit RowCoverage(int width)
      : m_width(width), m_differences(static_cast<std::size_t>(width) + 2) {}

  void clear() { std::ranges::fill(m_differences, 0); }

  /// All that lies to the right of `place` gains (or, with sign -1, loses) one line.
  void addFrom(int place, int sign) {
    const int clamped = std::clamp(place, 0, m_width * kUnitsPerPixel);
    const auto pixel = static_cast<std::size_t>(clamped / kUnitsPerPixel);
    const int part = clamped % kUnitsPerPixel;
    m_differences[pixel] += sign * (kUnitsPerPixel - part);
    m_differences[pixel + 1] += sign * part;
  }

  void layOver(std::uint32_t* row, std::uint32_t colour) const {
    int covered = 0;
    for (std::size_t x = 0; x < static_cast<std::size_t>(m_width); ++x) {
      covered += m_differences[x];
      if (covered == 0) continue;
      const int factor = (covered * static_cast<int>(kFull) + kFullCoverage / 2) / kFullCoverage;
      row[x] = over(scaled(colour, static_cast<std::uint32_t>(factor)), row[x]);
    }
  }

 private:
  int m_width;
  std::vector<int> m_differences;
};

void findCrossings(std::span<const CPoint> outline, double y, int left,
                   std::vector<Crossing>& crossings) {
  for (std::size_t i = 0; i < outline.size(); ++i) {
    const CPoint& a = outline[i];
    const CPoint& b = outline[i + 1 < outline.size() ? i + 1 : 0];
    if ((a.y <= y) == (b.y <= y)) continue;
    const double x = a.x + (b.x - a.x) * (y - a.y) / (b.y - a.y);
    const auto place = static_cast<int>(std::lround(x * kUnitsPerPixel)) - left * kUnitsPerPixel;
    crossings.push_back({place, a.y <= y ? 1 : -1});
  }
}

} // namespace

void ShapeFiller::addRoundRect(const CRect& where, CCoord radius, Direction direction) {
  if (where.empty()) return;
  const double r = std::clamp(radius, 0.0, std::min(where.width(), where.height()) / 2.0);
  const std::array<CPoint, 4> centres{{{where.right - r, where.top + r},
                                       {where.right - r, where.bottom - r},
                                       {where.left + r, where.bottom - r},
                                       {where.left + r, where.top + r}}};
  Outline outline;
  double quarter = -1.0; // y grows downwards: from the top of the circle clockwise
  for (const CPoint& centre : centres) {
    for (int step = 0; step <= kStepsPerQuarter; ++step) {
      const double angle =
          (quarter + static_cast<double>(step) / kStepsPerQuarter) * std::numbers::pi / 2.0;
      outline.push_back(centre + CPoint{r * std::cos(angle), r * std::sin(angle)});
    }
    quarter += 1.0;
  }
  if (direction == Direction::Anticlockwise) std::ranges::reverse(outline);
  m_outlines.push_back(std::move(outline));
}

void ShapeFiller::addLine(std::span<const CPoint> points, CCoord width) {
  if (points.size() < 2) return;
  const double half = width / 2.0;
  const auto sideways = [&](std::size_t piece) {
    const CPoint along = points[piece + 1] - points[piece];
    const double scale = half / std::hypot(along.x, along.y);
    return CPoint{-along.y * scale, along.x * scale};
  };
  Outline outline;
  Outline back;
  for (std::size_t i = 0; i < points.size(); ++i) {
    const CPoint sum = sideways(i == 0 ? 0 : i - 1) + sideways(std::min(i, points.size() - 2));
    // Where the edges of both pieces meet.
    const double scale = 2.0 * half * half / (sum.x * sum.x + sum.y * sum.y);
    const CPoint corner{sum.x * scale, sum.y * scale};
    outline.push_back(points[i] + corner);
    back.push_back(points[i] - corner);
  }
  outline.insert(outline.end(), back.rbegin(), back.rend());
  m_outlines.push_back(std::move(outline));
}

PixelRect ShapeFiller::touchedPixels() const {
  constexpr double kFar = std::numeric_limits<int>::max() / (2.0 * kUnitsPerPixel);
  CRect box{kFar, kFar, -kFar, -kFar};
  for (const Outline& outline : m_outlines)
    for (const CPoint& p : outline)
      box = {std::min(box.left, p.x), std::min(box.top, p.y), std::max(box.right, p.x),
             std::max(box.bottom, p.y)};
  return box.touchedPixels();
}

void ShapeFiller::fill(PixelBuffer& target, const PixelRect& clip, std::uint32_t colour) const {
  const PixelRect area = platform::intersection(touchedPixels(), clip);
  if (area.empty()) return;
  RowCoverage coverage(area.width());
  std::vector<Crossing> crossings;
  for (int y = area.top; y < area.bottom; ++y) {
    coverage.clear();
    for (int line = 0; line < kLinesPerPixel; ++line) {
      crossings.clear();
      for (const Outline& outline : m_outlines)
        findCrossings(outline, y + (line + 0.5) / kLinesPerPixel, area.left, crossings);
      std::ranges::sort(crossings, {}, &Crossing::place);
      int winding = 0;
      for (const Crossing& crossing : crossings) {
        const bool inside = winding != 0;
        winding += crossing.winding;
        if (inside != (winding != 0)) coverage.addFrom(crossing.place, inside ? -1 : 1);
      }
    }
    coverage.layOver(target.row(y) + area.left, colour);
  }
}

} // namespace qlx::gui
