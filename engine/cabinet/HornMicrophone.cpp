// SPDX-License-Identifier: ISC
#include "engine/cabinet/HornMicrophone.h"

#include <algorithm>
#include <cmath>

namespace qlx::engine {

namespace {

constexpr double kOpenBackLoss = 0.50118723362; // -6 dB

/// How a ray gets its level: which of the ray gains, after how many reflections, and whether the
/// open back lets some of it out.
struct RayKind {
  unsigned char gain;
  unsigned char reflections;
  bool throughBack;
};
constexpr auto kKinds = std::to_array<RayKind>({{0, 0, false},
                                                {1, 1, true},
                                                {2, 2, true},
                                                {3, 2, true},
                                                {4, 3, true},
                                                {5, 3, true},
                                                {1, 1, false},
                                                {1, 1, false},
                                                {6, 4, false},
                                                {6, 4, false},
                                                {6, 5, false},
                                                {6, 5, false}});
static_assert(kKinds.size() == kHornRayCount);
static_assert(std::ranges::all_of(kKinds, [](const RayKind& kind) {
  return kind.reflections <= HornMicrophone::kMostReflections;
}));
constexpr std::size_t kRightWallRay = 6;
constexpr std::size_t kLeftWallRay = 7;

// Gain over the microphone's distance, tuned by ear: (1.3 - 0.5 x^0.75) at -0.2 dB, where x is 0.1
// at 0.35 m, the nearest of the distance control, and grows by 1 over the next 1.65 m. From +1.5 dB
// at 0.35 m to -2.5 dB at 2 m.
constexpr double kNearGain = 1.3;
constexpr double kDistanceLoss = 0.5;
constexpr double kDistanceExponent = 0.75;
constexpr double kNearDistance = 0.35;              // metres
constexpr double kPerDistance = 0.6060606060606061; // 1 / 1.65 m
constexpr double kLossAtNearDistance = 0.1;
constexpr double kOutputTrim = 0.97723722095; // -0.2 dB

double wholePower(double x, unsigned n) {
  double y = 1.0;
  for (; n > 0; --n) y *= x;
  return y;
}

} // namespace

std::array<ImageSource, kHornRayCount> hornImages(const MicrophonePosition& microphone,
                                                  const CabinetWalls& walls) noexcept {
  const double s = microphoneSide(microphone);
  const double a = s * walls.sideA, b = s * walls.sideB, h = s * walls.back;
  auto images = std::to_array<ImageSource>({{0, 0, 1, 1},
                                            {0, 2 * h, 1, -1},
                                            {2 * b, 2 * h, -1, -1},
                                            {-2 * a, 2 * h, -1, -1},
                                            {2 * a + 2 * b, 2 * h, 1, -1},
                                            {-2 * a - 2 * b, 2 * h, 1, -1},
                                            {2 * b, 0, -1, 1},
                                            {-2 * a, 0, -1, 1},
                                            {},
                                            {},
                                            {},
                                            {}});
  switch (microphoneRegion(microphone, walls)) {
  case MicrophoneRegion::SideB:
    images[8] = {6 * b, 0, -1, -1};
    images[9] = {4 * b + 2 * a, 6 * h, -1, -1};
    images[10] = {4 * a + 6 * b, 0, -1, -1};
    images[11] = {4 * a + 6 * b, 10 * h, -1, -1};
    break;
  case MicrophoneRegion::Front:
    images[8] = {0, 6 * h, 1, -1};
    images[9] = {4 * b + 2 * a, 6 * h, -1, -1};
    images[10] = {-4 * a - 2 * b, 6 * h, 1, -1};
    images[11] = {0, 10 * h, 1, -1};
    break;
  case MicrophoneRegion::SideA:
    images[8] = {-6 * a, 0, -1, 1};
    images[9] = {-4 * a - 2 * b, 6 * h, -1, -1};
    images[10] = {-4 * a - 2 * b, 0, -1, 1};
    images[11] = {-6 * a - 4 * b, 10 * h, -1, -1};
    break;
  }
  return images;
}

void HornMicrophone::setDistance(double metres) noexcept {
  m_position.distance = metres;
  m_noisePlayer.setMicDistance(metres);
}

void HornMicrophone::rebuildGeometry(const AttenuationLaw& like) noexcept {
  const CabinetSettings& cabinet = m_settings.cabinet;
  const CabinetWalls walls(cabinet.flipSign < 0.0);
  m_region = microphoneRegion(m_position, walls);
  m_rays.rebuild(hornImages(m_position, walls), m_position, cabinet.amRadius);
  m_attenuation.rebuild(cabinet, m_rays, like);
  const bool leaks = m_region == MicrophoneRegion::Front && m_settings.openBackMode != 0 &&
                     cabinet.flipSign * microphoneSide(m_position) < 0.0;
  m_reflectionScale = leaks ? kOpenBackLoss : 1.0;
  const double farness = (m_position.distance - kNearDistance) * kPerDistance + kLossAtNearDistance;
  m_outputGain = (kNearGain - kDistanceLoss * std::pow(std::max(farness, 0.0), kDistanceExponent)) *
                 kOutputTrim;
}

unsigned HornMicrophone::reflections(std::size_t ray) noexcept { return kKinds[ray].reflections; }

double HornMicrophone::rayGain(std::size_t ray) const noexcept {
  if (ray == kRightWallRay && m_region != MicrophoneRegion::SideB) return 0.0;
  if (ray == kLeftWallRay && m_region != MicrophoneRegion::SideA) return 0.0;
  const RayKind& kind = kKinds[ray];
  return wholePower(m_settings.cabinet.reflectionCoeff, kind.reflections) *
         (kind.throughBack ? m_reflectionScale : 1.0) * m_settings.rayGain[kind.gain];
}

double HornMicrophone::staticLevel() const noexcept {
  return std::max(m_attenuation.level(m_rays.distance[0], m_settings.cabinet.amRadius, 0.0),
                  m_settings.ampClip);
}

} // namespace qlx::engine
