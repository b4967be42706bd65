// SPDX-License-Identifier: ISC
#include "resources/artwork/drawing/Studio.h"

namespace qlx::artwork {

Colour room(const Direction& from, double roughness) {
  // The soft box: a rectangle on the sphere of directions, seen along the lamp's own axes.
  constexpr Direction kAcross{0.7682, -0.6402, 0.0};
  constexpr Direction kAlong{-0.4479, -0.5375, -0.7146};
  const double towards = dot(from, kLamp);
  const double u = dot(from, kAcross);
  const double v = dot(from, kAlong);
  const double soft = 0.06 + 0.55 * roughness;
  const double size = 0.38;
  const double box = towards > 0.0 ? (1.0 - smoothstep(size - soft, size + soft, std::abs(u))) *
                                         (1.0 - smoothstep(size - soft, size + soft, std::abs(v)))
                                   : 0.0;
  const double strength = 2.6 / (1.0 + 3.0 * roughness);
  // Ceiling above, a warm wall to the right, dark floor below.
  const double up = -from.y;
  const double ceiling = smoothstep(-0.35 - roughness, 0.95 + roughness, up);
  const double wall = smoothstep(0.55 - 0.3 * roughness, 0.95 + 0.3 * roughness, from.x);
  Colour light = mix(Colour{0.018, 0.015, 0.013}, Colour{0.30, 0.27, 0.23}, ceiling);
  light = light + Colour{0.16, 0.11, 0.07} * wall;
  return light + kLampColour * (strength * box);
}

Colour lit(const Material& material, const Direction& normal, double open) {
  const double facing = clamp01(normal.z);
  const double diffuse = clamp01(dot(normal, kLamp));
  const double ambient = 0.16 + 0.10 * (0.5 - 0.5 * normal.y);
  const Colour matt = material.body * kLampColour * (open * (1.15 * diffuse + ambient));
  // The direction that is mirrored towards the viewer at (0, 0, 1).
  const Direction mirrored{2.0 * normal.z * normal.x, 2.0 * normal.z * normal.y,
                           2.0 * normal.z * normal.z - 1.0};
  const double rise = material.grazing * std::pow(1.0 - facing, 5.0);
  const Colour share = mix(material.mirror, Colour{1, 1, 1}, rise);
  return matt + room(mirrored, material.roughness) * share * open;
}

} // namespace qlx::artwork
