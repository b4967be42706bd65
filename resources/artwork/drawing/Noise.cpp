// SPDX-License-Identifier: ISC
#include "resources/artwork/drawing/Noise.h"

#include "resources/artwork/drawing/Colour.h"

#include <cmath>

namespace qlx::artwork {
namespace {

std::uint32_t scramble(std::int32_t x, std::int32_t y, std::uint32_t field) {
  std::uint32_t h = kSeed + field * 0x9e3779b9U;
  h ^= static_cast<std::uint32_t>(x) * 0x85ebca6bU;
  h = (h ^ (h >> 15)) * 0x2c1b3c6dU;
  h ^= static_cast<std::uint32_t>(y) * 0xc2b2ae35U;
  h = (h ^ (h >> 12)) * 0x297a2d39U;
  return h ^ (h >> 15);
}

/// Dot product of the lattice point's gradient, one of eight directions, with the offset to it.
double slope(std::int32_t x, std::int32_t y, std::uint32_t field, double dx, double dy) {
  constexpr double kDiagonal = 0.70710678118654752;
  constexpr double kGradients[8][2] = {
      {1, 0},  {kDiagonal, kDiagonal},   {0, 1},  {-kDiagonal, kDiagonal},
      {-1, 0}, {-kDiagonal, -kDiagonal}, {0, -1}, {kDiagonal, -kDiagonal}};
  const auto& g = kGradients[scramble(x, y, field) >> 29];
  return g[0] * dx + g[1] * dy;
}

} // namespace

double hashed(std::int32_t x, std::int32_t y, std::uint32_t field) {
  return scramble(x, y, field) * (1.0 / 4294967296.0);
}

double noise(double x, double y, std::uint32_t field) {
  const double fx = std::floor(x);
  const double fy = std::floor(y);
  const auto ix = static_cast<std::int32_t>(fx);
  const auto iy = static_cast<std::int32_t>(fy);
  const double dx = x - fx;
  const double dy = y - fy;
  auto fade = [](double t) { return t * t * t * (t * (t * 6.0 - 15.0) + 10.0); };
  const double upper =
      mix(slope(ix, iy, field, dx, dy), slope(ix + 1, iy, field, dx - 1.0, dy), fade(dx));
  const double lower = mix(slope(ix, iy + 1, field, dx, dy - 1.0),
                           slope(ix + 1, iy + 1, field, dx - 1.0, dy - 1.0), fade(dx));
  return 1.4 * mix(upper, lower, fade(dy));
}

double fractal(double x, double y, int octaves, std::uint32_t field) {
  double sum = 0.0;
  double weight = 0.5;
  for (int i = 0; i < octaves; ++i) {
    sum += weight * noise(x, y, field + static_cast<std::uint32_t>(i));
    x *= 2.0;
    y *= 2.0;
    weight *= 0.5;
  }
  return sum;
}

} // namespace qlx::artwork
