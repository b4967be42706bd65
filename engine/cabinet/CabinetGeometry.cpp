// SPDX-License-Identifier: ISC
#include "engine/cabinet/CabinetGeometry.h"

#include "engine/signal/Interpolation.h"
#include "engine/signal/Phase.h"

#include <cmath>

namespace qlx::engine {

namespace {

constexpr double kInverseNearestDistance = 3.3333333333333335; ///< of AttenuationLaw
constexpr double kTableStep = 0.01;                            ///< metres an entry

// Mean of the sine of the mouth's angle over a turn: the arc of 2 w turns that faces the microphone
// takes the sine's negative half period, the rest of the turn the positive one, and a half period's
// mean is 2 / pi; so the mean is 2 / pi (1 - 4 w), here with four digits.
constexpr double kHalfPeriodMean = 0.6366;      ///< 2 / pi
constexpr double kHalfPeriodMeanTimes4 = 2.546; ///< 8 / pi

/// How much of the direct path's loss of level, in decibels, the normalisation makes up for; what
/// is left keeps farther microphones softer. Tuned by ear.
constexpr double kNormalisedShare = 0.7;

} // namespace

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

void AttenuationLaw::compute(const Shape& shape) noexcept {
  const double nearest = kNearestDistance - shape.amRadius;
  double* table = m_table.data();
  table[0] = std::pow(shape.amRadius * kInverseNearestDistance, shape.exponent);
  double previous = nearest;
  for (int i = 1; i < kSize; ++i) {
    const double d = nearest + kTableStep * i;
    const double exponent = d < nearest + shape.distance
                                ? 1.0 - std::pow((d - nearest) / shape.distance, shape.fadeExponent)
                                : 0.0;
    table[i] = table[i - 1] * std::pow(previous / d, exponent * shape.exponent);
    previous = d;
  }
  fitPieces();
}

void AttenuationLaw::rebuild(const CabinetSettings& cabinet, const Rays& rays,
                             const AttenuationLaw& like) noexcept {
  const double amRadius = cabinet.amRadius;
  const Shape shape{amRadius, cabinet.attenuationExponent, cabinet.attenuationDistance,
                    cabinet.attenuationFadeExponent};
  if (shape != m_shape) {
    if (shape == like.m_shape) {
      m_table = like.m_table;
      m_pieces = like.m_pieces;
    } else {
      compute(shape);
    }
    m_shape = shape;
  }
  // The reference lies as far before the axis as the mouth is behind it on average.
  const double mean =
      (kHalfPeriodMean - rays.halfWidth[0] * kHalfPeriodMeanTimes4) * rays.signY[0] * amRadius;
  const double direct =
      cubicTableRead((amRadius + rays.distance[0] - mean - kNearestDistance) * kEntriesPerMetre,
                     m_table.data(), kSize - 1);
  m_norm = std::pow(1.0 / direct, kNormalisedShare);
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
  return cubicTableRead((amRadius * sine + distance - kNearestDistance + amRadius) *
                            kEntriesPerMetre,
                        m_table.data(), kSize - 1) *
         m_norm;
}

double AttenuationLaw::rawAt(double d) const noexcept {
  return cubicTableRead(d * kSize, m_table.data(), kSize - 1);
}

} // namespace qlx::engine
