// SPDX-License-Identifier: ISC
#include "resources/artwork/drawing/Materials.h"

#include "resources/artwork/drawing/Noise.h"
#include "resources/artwork/drawing/Palette.h"

#include <array>

namespace qlx::artwork {
namespace {

constexpr std::uint32_t kWoodField = 100;
constexpr std::uint32_t kPaintField = 300;
constexpr std::uint32_t kBrushField = 500;

/// Height of the wrinkles of the paint, about -1..1.
double wrinkle(double x, double y) {
  const double warpX = 0.6 * noise(x * 0.31, y * 0.31, kPaintField);
  const double warpY = 0.6 * noise(x * 0.31, y * 0.31, kPaintField + 1);
  const double coarse = noise((x + warpX) * 0.55, (y + warpY) * 0.55, kPaintField + 2);
  const double fine = noise((x - warpY) * 1.1, (y + warpX) * 1.1, kPaintField + 3);
  return 0.65 * (1.0 - 2.0 * std::abs(coarse)) + 0.35 * (1.0 - 2.0 * std::abs(fine));
}

} // namespace

Colour walnut(double along, double across, std::uint32_t piece) {
  const std::uint32_t field = kWoodField + 16 * piece;
  // Growth rings, cut lengthways: wide slow bands that wander, finer ones inside.
  const double sway = 2.2 * fractal(along * 0.011, across * 0.05, 3, field);
  const double rings = noise(along * 0.004, (across + 3.0 * sway) * 0.22, field + 4);
  const double fine = noise(along * 0.016, (across + 2.0 * sway) * 0.95, field + 5);
  const double fibre = noise(along * 0.07, across * 2.9, field + 6);
  double tone = 0.58 + 0.42 * rings + 0.26 * fine + 0.15 * fibre;
  // Pores: short dark dashes along the grain.
  const double pore = noise(along * 0.16, across * 1.9, field + 7);
  tone -= 0.55 * smoothstep(0.42, 0.75, pore);
  tone = clamp01(tone) * 3.0;
  const int step = std::min(2, static_cast<int>(tone));
  const Colour low = srgb(palette::kWalnut[step]);
  const Colour high = srgb(palette::kWalnut[step + 1]);
  return mix(low, high, tone - step);
}

Colour crackle(Point p) {
  constexpr double kReach = 0.3;
  const double here = wrinkle(p.x, p.y);
  const double slopeX = (wrinkle(p.x + kReach, p.y) - here) / kReach;
  const double slopeY = (wrinkle(p.x, p.y + kReach) - here) / kReach;
  // The slope that faces the lamp is lighter by up to some four levels of 255.
  const double facing = -(slopeX * kLamp.x + slopeY * kLamp.y);
  const double falling = 1.22 - 0.00075 * (p.x + 0.8 * p.y);
  const double tone = falling * (1.0 + 0.20 * std::clamp(facing, -1.6, 2.2) + 0.05 * here);
  return srgb(palette::kSteel) * tone;
}

Colour brushedBrass(Point p, double shine) {
  const double stroke = 0.6 * noise(p.x * 0.045, p.y * 2.6, kBrushField) +
                        0.4 * noise(p.x * 0.11, p.y * 5.1, kBrushField + 1);
  const double tone = clamp01(shine + 0.10 * stroke);
  return tone < 0.5 ? mix(srgb(palette::kBrassDark), srgb(palette::kBrass), tone * 2.0)
                    : mix(srgb(palette::kBrass), srgb(palette::kBrassLit), tone * 2.0 - 1.0);
}

Material bakelite() { return {srgb(palette::kBakelite), {0.045, 0.043, 0.04}, 0.22, 0.5}; }

Material chrome() { return {{0.01, 0.01, 0.01}, {0.80, 0.80, 0.79}, 0.05, 1.0}; }

Material brass() {
  const Colour tint = srgb(palette::kBrass);
  return {tint * 0.35, mix(tint, srgb(palette::kBrassLit), 0.4), 0.25, 0.6};
}

Material ivory() { return {srgb(palette::kIvory) * 0.72, {0.04, 0.04, 0.04}, 0.25, 0.5}; }

} // namespace qlx::artwork
