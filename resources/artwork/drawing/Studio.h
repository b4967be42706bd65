// SPDX-License-Identifier: ISC
#pragma once

#include "resources/artwork/drawing/Colour.h"

#include <cmath>

/// The one warm light that everything stands in: from the upper left, with a little room around.
/// Directions: x right, y down, z towards the viewer.
namespace qlx::artwork {

struct Direction {
  double x = 0;
  double y = 0;
  double z = 0;

  constexpr Direction operator+(const Direction& o) const { return {x + o.x, y + o.y, z + o.z}; }
  constexpr Direction operator-(const Direction& o) const { return {x - o.x, y - o.y, z - o.z}; }
  constexpr Direction operator*(double k) const { return {x * k, y * k, z * k}; }
};

constexpr double dot(const Direction& a, const Direction& b) {
  return a.x * b.x + a.y * b.y + a.z * b.z;
}
inline Direction unit(const Direction& v) { return v * (1.0 / std::sqrt(dot(v, v))); }

/// The lamp's direction and colour.
inline constexpr Direction kLamp{-0.4575, -0.5490, 0.6996};
inline constexpr Colour kLampColour{1.0, 0.95, 0.86};

/// What a surface is made of.
struct Material {
  Colour body;            // diffuse colour
  Colour mirror;          // reflectance seen straight on
  double roughness = 0.2; // 0 a mirror, 1 matt: widens and dims the lamp's image
  double grazing = 1.0;   // how far reflectance rises towards grazing view
};

/// Light arriving from a direction of the room: the lamp's soft box, ceiling, walls, floor.
Colour room(const Direction& from, double roughness);

/// Light that a surface sends to the viewer straight in front. `normal` is of unit length;
/// `open` is the share of the surroundings that it sees (1 in the open, less in grooves).
Colour lit(const Material& material, const Direction& normal, double open = 1.0);

} // namespace qlx::artwork
