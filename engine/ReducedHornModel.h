#pragma once

#include "engine/HornModel.h"
#include "engine/ReducedRay.h"

namespace qlx::engine {

/// The horn as the cross-talk paths hear it: direct ray, back wall, one side wall and the static
/// part, one low-pass each, and a coarse body. It is listened to straight in front at 1 m. Audio
/// thread only.
class ReducedHornModel {
 public:
  explicit ReducedHornModel(const HornSettings& settings);

  void setSampleRate(double hz) noexcept;
  void clear() noexcept;
  void resetFilters() noexcept;
  void rebuildGeometry() noexcept;
  void updateStaticPole() noexcept;

  const AttenuationLaw& attenuation() const noexcept { return m_attenuation; }

  void process(const RotorTrack& track, const SoundLine& line, int n, RunBuffer& out) noexcept;

 private:
  const HornSettings& m_settings;
  MicrophonePosition m_microphone;
  Rays m_rays;
  AttenuationLaw m_attenuation;
  MicrophoneRegion m_region = MicrophoneRegion::Front;
  double m_sampleRate = 44100.0;
  double m_polePole = 0.0;
  double m_bouncePole = 0.0;
  double m_staticPole = 0.0;
  ReducedRay m_direct, m_back, m_side;
  OnePole m_staticLowPass;
  std::array<Biquad, 5> m_body;
};

} // namespace qlx::engine
