// SPDX-License-Identifier: ISC
#pragma once

#include "engine/cabinet/CabinetGeometry.h"
#include "engine/rotor/RotorNoisePlayer.h"

#include <array>

namespace qlx::engine {

/// Settings that all horn models have in common, beside the cabinet's.
struct HornSettings {
  CabinetSettings cabinet;
  std::array<double, 7>
      rayGain{}; ///< direct, back and sides, back-right, back-left, LBR, RBL, misc
  double zAxisGain = 0.0;
  double staticGain = 0.0;
  double ampClip = 0.0;
  int openBackMode = 0;
  double noiseLevel = 1.0; ///< motor noise at the microphones

  bool operator==(const HornSettings&) const = default;
};

/// Rays of a horn microphone.
inline constexpr std::size_t kHornRayCount = 12;

/// The images that a horn microphone hears, in the order direct, back wall, back-right,
/// back-left, left-back-right, right-back-left, right wall, left wall, and four of four and five
/// reflections.
std::array<ImageSource, kHornRayCount> hornImages(const MicrophonePosition& microphone,
                                                  const CabinetWalls& walls) noexcept;

/// One microphone before the horn: its position, the paths that lead there and their levels, and
/// the motor's noise beside it. Audio thread only.
class HornMicrophone {
 public:
  static constexpr std::size_t kRayCount = kHornRayCount;
  static constexpr unsigned kMostReflections = 5;

  /// `number` 0 or 1.
  HornMicrophone(const HornSettings& settings, const Recordings& recordings,
                 const kernels::Kernels& kernels, int number)
      : m_settings(settings), m_noisePlayer(recordings, kernels, number) {}

  void setAngle(double turns) noexcept { m_position.angle = turns; }
  void setDistance(double metres) noexcept;
  /// `like`: the other microphone's law.
  void rebuildGeometry(const AttenuationLaw& like) noexcept;

  const MicrophonePosition& position() const noexcept { return m_position; }
  const Rays& rays() const noexcept { return m_rays; }
  const AttenuationLaw& attenuation() const noexcept { return m_attenuation; }
  bool hearsSideWalls() const noexcept { return m_region != MicrophoneRegion::Front; }

  /// Gain of a ray from the settings of this moment; 0 where it is not heard.
  double rayGain(std::size_t ray) const noexcept;
  static unsigned reflections(std::size_t ray) noexcept;

  /// Level of the direct path without the rotor's movement.
  double staticLevel() const noexcept;
  double outputGain() const noexcept { return m_outputGain; }
  HornNoisePlayer& noisePlayer() noexcept { return m_noisePlayer; }

 private:
  const HornSettings& m_settings;
  MicrophonePosition m_position;
  Rays m_rays;
  AttenuationLaw m_attenuation;
  MicrophoneRegion m_region = MicrophoneRegion::Front;
  double m_reflectionScale = 1.0;
  double m_outputGain = 1.0;
  HornNoisePlayer m_noisePlayer;
};

} // namespace qlx::engine
