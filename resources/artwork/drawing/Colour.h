// SPDX-License-Identifier: ISC
#pragma once

#include <algorithm>
#include <cmath>
#include <cstdint>

namespace qlx::artwork {

/// A colour in linear light, 1.0 being the brightest displayable channel.
struct Colour {
  double r = 0;
  double g = 0;
  double b = 0;

  constexpr Colour operator+(const Colour& o) const { return {r + o.r, g + o.g, b + o.b}; }
  constexpr Colour operator*(const Colour& o) const { return {r * o.r, g * o.g, b * o.b}; }
  constexpr Colour operator*(double k) const { return {r * k, g * k, b * k}; }
};

inline double linearFromSrgb(double v) {
  return v <= 0.04045 ? v / 12.92 : std::pow((v + 0.055) / 1.055, 2.4);
}

inline double srgbFromLinear(double v) {
  return v <= 0.0031308 ? v * 12.92 : 1.055 * std::pow(v, 1.0 / 2.4) - 0.055;
}

/// Linear light of a colour written as 0xRRGGBB in sRGB.
inline Colour srgb(std::uint32_t hex) {
  auto channel = [hex](int shift) { return linearFromSrgb(((hex >> shift) & 0xffU) / 255.0); };
  return {channel(16), channel(8), channel(0)};
}

constexpr double mix(double a, double b, double t) { return a + (b - a) * t; }
constexpr Colour mix(const Colour& a, const Colour& b, double t) {
  return {mix(a.r, b.r, t), mix(a.g, b.g, t), mix(a.b, b.b, t)};
}
constexpr double clamp01(double v) { return std::clamp(v, 0.0, 1.0); }

/// 0 below `from`, 1 above `to`, a smooth step between them.
constexpr double smoothstep(double from, double to, double v) {
  const double t = clamp01((v - from) / (to - from));
  return t * t * (3.0 - 2.0 * t);
}

} // namespace qlx::artwork
