// SPDX-License-Identifier: ISC
#include "engine/cabinet/CabinetGeometry.h"

#include "engine/signal/Interpolation.h"
#include "engine/signal/Phase.h"

#include <cmath>

namespace qlx::engine {

Point planePosition(const MicrophonePosition& microphone) noexcept {
  const double bearing = (microphone.angle - 0.25) * kTwoPi;
  return {std::cos(bearing) * microphone.distance, std::sin(bearing) * microphone.distance};
}

double microphoneSide(const MicrophonePosition& microphone) noexcept {
  return microphone.angle < -0.25 || microphone.angle > 0.25 ? -1.0 : 1.0;
}

MicrophoneRegion microphoneRegion(const MicrophonePosition& microphone,
                                  const CabinetWalls& walls) noexcept {
  const Point m = planePosition(microphone);
  const double side = microphoneSide(microphone);
  double direction = std::atan(-m.y * side / std::sqrt(m.x * m.x + m.y * m.y)) / kTwoPi;
  if (m.x > 0.0) direction = -direction;
  const double thresholdA = std::atan(walls.sideA / walls.back) / kTwoPi;
  const double thresholdB = std::atan(walls.sideB / walls.back) / kTwoPi;
  const bool behind = side < 0.0;
  if (direction > thresholdA) return behind ? MicrophoneRegion::SideA : MicrophoneRegion::SideB;
  if (direction < -thresholdB) return behind ? MicrophoneRegion::SideB : MicrophoneRegion::SideA;
  return MicrophoneRegion::Front;
}

void Rays::rebuild(std::span<const ImageSource> images, const MicrophonePosition& microphone,
                   double amRadius) noexcept {
  const Point m = planePosition(microphone);
  count = static_cast<int>(images.size());
  for (std::size_t r = 0; r < images.size(); ++r) {
    const ImageSource& image = images[r];
    const double dx = image.x - m.x, dy = image.y - m.y;
    distance[r] = std::sqrt(dx * dx + dy * dy);
    angle[r] = std::atan(dy / distance[r]) / kTwoPi;
    if ((m.x - image.x) * image.signX > 0.0) angle[r] = -angle[r];
    signY[r] = image.signY;
    halfWidth[r] = std::atan(amRadius / distance[r]) / kTwoPi;
  }
}

void AttenuationLaw::rebuild(const CabinetSettings& cabinet, const Rays& rays) noexcept {
  const double amRadius = cabinet.amRadius;
  const double nearest = 0.3 - amRadius;
  double* table = m_table.data();
  table[0] = std::pow(amRadius * 3.3333333333333335, cabinet.attenuationExponent);
  double previous = nearest;
  for (int i = 1; i < kSize; ++i) {
    const double d = nearest + 0.01 * i;
    const double exponent = d < nearest + cabinet.attenuationDistance
                                ? 1.0 - std::pow((d - nearest) / cabinet.attenuationDistance,
                                                 cabinet.attenuationFadeExponent)
                                : 0.0;
    table[i] = table[i - 1] * std::pow(previous / d, exponent * cabinet.attenuationExponent);
    previous = d;
  }
  fitPieces();
  // Mean of the direct ray's distance over a turn, the near half weighted by the arc it takes.
  const double mean = (0.6366 - rays.halfWidth[0] * 2.546) * rays.signY[0] * amRadius;
  const double direct =
      cubicTableRead((amRadius + rays.distance[0] - mean - 0.3) * 100.0, table, kSize - 1);
  m_norm = std::pow(1.0 / direct, 0.7);
}

void AttenuationLaw::fitPieces() noexcept {
  for (std::size_t i = 0; i + 1 < m_table.size(); ++i) {
    const double p0 = m_table[i > 0 ? i - 1 : 0], p1 = m_table[i], p2 = m_table[i + 1];
    const double p3 = m_table[i + 2 < m_table.size() ? i + 2 : i + 1];
    m_pieces[i] = {p1, 0.5 * (p2 - p0), p0 - 2.5 * p1 + 2.0 * p2 - 0.5 * p3,
                   1.5 * (p1 - p2) + 0.5 * (p3 - p0)};
  }
}

double AttenuationLaw::level(double distance, double amRadius, double sine) const noexcept {
  return cubicTableRead((amRadius * sine + distance - 0.3 + amRadius) * 100.0, m_table.data(),
                        kSize - 1) *
         m_norm;
}

double AttenuationLaw::rawAt(double d) const noexcept {
  return cubicTableRead(d * kSize, m_table.data(), kSize - 1);
}

} // namespace qlx::engine
