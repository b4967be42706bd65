// SPDX-License-Identifier: ISC
#include "tests/reference/Cabinet.h"

#include "tests/reference/Primitives.h"

#include <cmath>
#include <utility>

namespace qlx::reference {

Cabinet::Point Cabinet::micPosition() const {
  const double a = (micAngle - 0.25) * kTwoPi;
  return {std::cos(a) * micDistance, std::sin(a) * micDistance};
}

double Cabinet::side() const { return micAngle < -0.25 || micAngle > 0.25 ? -1.0 : 1.0; }

int Cabinet::region() const {
  const auto [mx, my] = micPosition();
  const double s = side();
  double t = std::atan(-my * s / std::sqrt(mx * mx + my * my)) / kTwoPi;
  if (mx > 0.0) t = -t;
  int r = 1;
  if (t > std::atan(sideWallA / backWall) / kTwoPi)
    r = 0;
  else if (t < -std::atan(sideWallB / backWall) / kTwoPi)
    r = 2;
  return s < 0.0 ? 2 - r : r;
}

void Cabinet::place(Ray& ray) const {
  const auto [mx, my] = micPosition();
  const double dx = ray.x - mx, dy = ray.y - my;
  ray.distance = std::sqrt(dx * dx + dy * dy);
  ray.angle = std::atan(dy / ray.distance) / kTwoPi;
  if ((mx - ray.x) * ray.signX > 0.0) ray.angle = -ray.angle;
  ray.halfWidth = std::atan(amRadius / ray.distance) / kTwoPi;
}

void Cabinet::exchangeWalls() { std::swap(sideWallA, sideWallB); }

void Cabinet::buildAttenuation(const Ray& direct) {
  const double d0 = 0.3 - amRadius;
  table[0] = std::pow(amRadius * 3.3333333333333335, attenuationExponent);
  for (std::size_t i = 1; i < table.size(); ++i) {
    const double di = d0 + 0.01 * double(i), before = d0 + 0.01 * double(i - 1);
    double e = 0.0;
    if (di < d0 + attenuationDistance)
      e = 1.0 - std::pow((di - d0) / attenuationDistance, attenuationFadeExponent);
    table[i] = table[i - 1] * std::pow(before / di, e * attenuationExponent);
  }
  const double nearest = amRadius + direct.distance -
                         (0.6366 - direct.halfWidth * 2.546) * direct.signY * amRadius - 0.3;
  normGain = std::pow(1.0 / cubicTable<double>(nearest * 100.0, table, 511), 0.7);
}

double Cabinet::amplitude(double distance) const {
  return cubicTable<double>((distance - 0.3 + amRadius) * 100.0, table, 511) * normGain;
}

double Cabinet::attenuationAt(double d) const { return cubicTable<double>(d * 512.0, table, 511); }

Mouth Cabinet::mouth(double emissionAngle, const Ray& ray) {
  constexpr double pi = std::numbers::pi;
  const double w = ray.halfWidth;
  double x = emissionAngle - ray.angle * ray.signY;
  if (x < 0.0)
    x += 1.0;
  else if (x > 1.0)
    x -= 1.0;
  double phi = 0.0;
  if (x <= w)
    phi = ray.signY * ((x - w) * pi / (2.0 * w));
  else if (x >= 1.0 - w)
    phi = ray.signY * ((x - (1.0 - w)) * pi / (2.0 * w)) - pi;
  else
    phi = ray.signY * ((x - w) * pi / (1.0 - 2.0 * w));
  double turn = phi / kTwoPi + 0.25;
  while (turn < 0.0) turn += 1.0;
  while (turn > 1.0) turn -= 1.0;
  return {std::sin(phi), turn};
}

} // namespace qlx::reference
