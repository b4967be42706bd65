// SPDX-License-Identifier: ISC
#pragma once

#include <array>
#include <cstddef>

namespace qlx::reference {

// One path from the rotor's image behind a wall to the microphone.
struct Ray {
  double x = 0, y = 0;         // image, metres
  double signX = 1, signY = 1; // mirrored by the walls or not
  double distance = 1, angle = 0, halfWidth = 0;
};

// Where the mouth points as a ray sees it.
struct Mouth {
  double sine; // +1 away, -1 towards along the warped circle
  double turn; // 0..1
};

// Walls, microphone and distance law that horn and drum share. The rotor axis is the origin.
struct Cabinet {
  struct Point {
    double x, y;
  };
  Point micPosition() const;
  double side() const; // +1 in front, -1 behind
  int region() const;  // 0, 1 or 2
  void place(Ray& ray) const;
  void exchangeWalls();
  void buildAttenuation(const Ray& direct);
  double amplitude(double distance) const; // of a mouth centred that far away
  double attenuationAt(double d) const;
  static Mouth mouth(double emissionAngle, const Ray& ray);

  double micAngle = 0, micDistance = 1, amRadius = 0.18, fmRadius = 0.18;
  double attenuationExponent = 1, attenuationDistance = 1, attenuationFadeExponent = 0.5;
  double sideWallA = 0.24, sideWallB = 0.43, backWall = 0.235;
  std::array<double, 512> table{};
  double normGain = 1;
};

// Linear interpolation at `position` in entries of a closed circle whose last equals its first.
template <std::size_t N>
double onCircle(const std::array<double, N>& entries, double position) {
  const auto whole = std::size_t(position);
  const double t = position - double(whole);
  const std::size_t i = whole % (N - 1);
  return entries[i] + (entries[i + 1] - entries[i]) * t;
}

} // namespace qlx::reference
