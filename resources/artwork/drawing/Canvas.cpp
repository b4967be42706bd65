// SPDX-License-Identifier: ISC
#include "resources/artwork/drawing/Canvas.h"

#include "resources/artwork/drawing/Noise.h"

#include <array>
#include <cmath>

namespace qlx::artwork {
namespace {

constexpr std::uint32_t kDitherField = 7001;

/// What is added before rounding down to 8 bits, 0..1: random at the plain size, where single
/// pixels show; a small pattern in larger pictures, which disappears there and packs far better.
double ditherAt(int x, int y, int scale) {
  constexpr std::array<std::array<int, 4>, 4> kPattern{
      {{0, 8, 2, 10}, {12, 4, 14, 6}, {3, 11, 1, 9}, {15, 7, 13, 5}}};
  if (scale == 1) return hashed(x, y, kDitherField);
  return (kPattern[static_cast<std::size_t>(y % 4)][static_cast<std::size_t>(x % 4)] + 0.5) / 16.0;
}

std::uint8_t quantised(double linear, double dither) {
  return static_cast<std::uint8_t>(
      std::clamp(std::floor(srgbFromLinear(clamp01(linear)) * 255.0 + dither), 0.0, 255.0));
}

} // namespace

Canvas::Canvas(int width, int height, int scale)
    : m_width(width), m_height(height), m_scale(scale), m_columns(width * density()),
      m_rows(height * density()),
      m_samples(static_cast<std::size_t>(m_columns) * static_cast<std::size_t>(m_rows)) {}

void Canvas::glow(const Mask& shape, const Colour& colour, double strength) {
  forEach(shape.box(), [&](Point, Sample& under, int x, int y) {
    const double k = strength * static_cast<double>(shape.sample(x, y));
    under.r += static_cast<float>(colour.r * k);
    under.g += static_cast<float>(colour.g * k);
    under.b += static_cast<float>(colour.b * k);
  });
}

void Canvas::overlay(const Canvas& other, int x, int y) {
  const int n = density();
  for (int row = 0; row < other.m_rows; ++row) {
    for (int column = 0; column < other.m_columns; ++column) {
      const Sample& over = other.at(column, row);
      Sample& under = at(x * n + column, y * n + row);
      const float keep = 1.0F - over.a;
      under = {over.r + under.r * keep, over.g + under.g * keep, over.b + under.b * keep,
               over.a + under.a * keep};
    }
  }
}

Picture Canvas::finished() const {
  Picture picture(m_width * m_scale, m_height * m_scale);
  for (int y = 0; y < picture.height(); ++y) {
    for (int x = 0; x < picture.width(); ++x) {
      double r = 0;
      double g = 0;
      double b = 0;
      double a = 0;
      for (int j = 0; j < kOversampling; ++j) {
        for (int i = 0; i < kOversampling; ++i) {
          const Sample& s = at(x * kOversampling + i, y * kOversampling + j);
          r += s.r;
          g += s.g;
          b += s.b;
          a += s.a;
        }
      }
      const double alpha = a / (kOversampling * kOversampling);
      const int alpha8 = static_cast<int>(std::lround(clamp01(alpha) * 255.0));
      if (alpha8 == 0) continue;
      const double dither = ditherAt(x, y, m_scale);
      picture.at(x, y) = {quantised(r / a, dither), quantised(g / a, dither),
                          quantised(b / a, dither), static_cast<std::uint8_t>(alpha8)};
    }
  }
  return picture;
}

} // namespace qlx::artwork
