// SPDX-License-Identifier: ISC
#pragma once

#include "engine/cabinet/RayLanes.h"
#include "engine/rotor/RotorNoisePlayer.h"
#include "engine/signal/Biquad.h"
#include "engine/signal/OnePole.h"
#include "engine/signal/SubBlock.h"

#include <array>

namespace qlx::engine {

/// Settings that both drum models have in common, beside the cabinet's.
struct DrumSettings {
  CabinetSettings cabinet;
  std::array<double, 4> rayGain{}; ///< direct, back and sides, back-left, back-right
  double staticGain = 0.0;
  double lowStaticGain = 0.0;
  double splitterHz = 200.0;
  double filterSaturation = 0.0;
  double noiseLevel = 1.0;

  bool operator==(const DrumSettings&) const = default;
};

/// The six images that the drum microphone hears: direct, side wall B, side wall A, back wall, back
/// wall and wall B, back wall and wall A.
std::array<ImageSource, 6> drumImages(const MicrophonePosition& microphone,
                                      const CabinetWalls& walls) noexcept;

/// Walls of the drum's cabinet; unlike the horn's they are exchanged unless the flip is positive.
CabinetWalls drumWalls(const CabinetSettings& cabinet) noexcept;

/// What the drum microphone hears: six rays of the band above the splitter, Doppler-shifted and
/// swelling with the scoop's turn, and a static ray that carries the band below. Audio thread only.
class DrumModel {
 public:
  static constexpr std::size_t kRayCount = 6;

  DrumModel(const DrumSettings& settings, const Recordings& recordings,
            const kernels::Kernels& kernels);

  void setSampleRate(double hz) noexcept; ///< engine rate, at least 11025 Hz
  void clear() noexcept;
  void resetFilters() noexcept;
  void rebuildGeometry() noexcept;
  void updateReflectionPoles() noexcept;
  void updateSplitter() noexcept;
  void updateStaticPole() noexcept;

  void setMicAngle(double turns) noexcept { m_microphone.angle = turns; }
  void setMicDistance(double metres) noexcept;
  const MicrophonePosition& microphone() const noexcept { return m_microphone; }
  const AttenuationLaw& attenuation() const noexcept { return m_attenuation; }
  DrumNoisePlayer& noisePlayer() noexcept { return m_noisePlayer; }

  /// Level of the direct path without the rotor's movement.
  double staticLevel() const noexcept;

  /// The next n samples: `line` holds the pre-filtered bass up to them. Writes the rotating sound
  /// with the static ray and the static low band.
  void process(const RotorHistory& history, const DelayLine& line, int n, SubBlock& out) noexcept;

 private:
  void refreshLanes(const RotorHistory& history, const DelayLine& line) noexcept;
  double rayGain(std::size_t ray) const noexcept;
  void addStaticRay(const RotorHistory& history, const DelayLine& line, int n,
                    SubBlock& sum) noexcept;

  const DrumSettings& m_settings;
  const kernels::Kernels& m_kernels;
  MicrophonePosition m_microphone;
  Rays m_rays;
  AttenuationLaw m_attenuation;
  MicrophoneRegion m_region = MicrophoneRegion::Front;
  kernels::DrumBank m_bank{};
  bool m_lanesFresh = false;
  DrumSettings m_laneSettings; ///< from which the lanes were made
  double m_gainSum = 0.0;      ///< of the rays that are heard
  double m_sampleRate = 44100.0;
  double m_staticPole = 0.0;
  double m_wantedStaticPole = 0.0; ///< taken when the filters are next tuned
  double m_splitterPole = 0.0;
  std::array<double, 2> m_reflectionPole{};
  OnePole m_staticLowPass;
  OnePole m_staticLowBand;
  DrumNoisePlayer m_noisePlayer;
};

} // namespace qlx::engine
