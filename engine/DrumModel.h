#pragma once

#include "engine/Biquad.h"
#include "engine/CabinetGeometry.h"
#include "engine/ReducedRay.h"
#include "engine/RotorNoisePlayer.h"
#include "engine/RotorTrack.h"

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
};

/// The six images that the drum microphone hears: direct, side wall B, side wall A, back wall, back
/// wall and wall B, back wall and wall A.
std::array<ImageSource, 6> drumImages(const MicrophonePosition& microphone,
                                      const CabinetWalls& walls) noexcept;

/// Walls of the drum's cabinet; unlike the horn's they are exchanged unless the flip is positive.
CabinetWalls drumWalls(const CabinetSettings& cabinet) noexcept;

/// The bass speaker and the scoop's mouth ahead of the rotation: four saturating sections. Both
/// drum models hear the same.
class DrumPreFilter {
 public:
  DrumPreFilter();
  void clear() noexcept;
  void setSampleRate(double hz) noexcept;
  void setSaturation(double drive) noexcept;
  void process(std::span<double> run) noexcept;

 private:
  std::array<Biquad, 4> m_sections;
};

/// What the drum microphone hears: six rays of the band above the splitter, Doppler-shifted and
/// swelling with the scoop's turn, and a static ray that carries the band below. Audio thread only.
class DrumModel {
 public:
  DrumModel(const DrumSettings& settings, const Recordings& recordings);

  void setSampleRate(double hz) noexcept; ///< engine rate, at least 11025 Hz
  void clear() noexcept;
  void resetFilters() noexcept;
  void rebuildGeometry() noexcept;
  void updateReflectionPoles() noexcept;
  void updateSplitter() noexcept;

  void setMicAngle(double turns) noexcept { m_microphone.angle = turns; }
  void setMicDistance(double metres) noexcept;
  const MicrophonePosition& microphone() const noexcept { return m_microphone; }
  DrumNoisePlayer& noisePlayer() noexcept { return m_noisePlayer; }

  /// Level of the direct path without the rotor's movement.
  double staticLevel() const noexcept;

  /// The next n samples: `line` holds the pre-filtered bass up to them. Fills `out` with the
  /// rotating sound and the static ray, `lowStatic` with the static low band, `noise` with the
  /// motor's.
  void process(const RotorTrack& track, const SoundLine& line, int n, RunBuffer& out,
               RunBuffer& lowStatic, RunBuffer& noise) noexcept;

 private:
  void addRay(const RotorTrack& track, const SoundLine& line, int n, std::size_t ray,
              RunBuffer& sum) noexcept;
  void addStaticRay(const RotorTrack& track, const SoundLine& line, int n, double gainSum,
                    RunBuffer& sum, RunBuffer& lowStatic) noexcept;
  bool isHeard(std::size_t ray) const noexcept;

  static constexpr std::size_t kRayCount = 6;

  const DrumSettings& m_settings;
  MicrophonePosition m_microphone;
  Rays m_rays;
  AttenuationLaw m_attenuation;
  MicrophoneRegion m_region = MicrophoneRegion::Front;
  double m_sampleRate = 44100.0;
  double m_staticPole = 0.0;
  double m_splitterPole = 0.0;
  std::array<double, 2> m_bouncePole{};

  std::array<OnePole, kRayCount> m_lowBand{};
  std::array<Biquad, kRayCount> m_lowPass;
  std::array<OnePole, kRayCount> m_bounce{};
  OnePole m_staticLowPass;
  OnePole m_staticLowBand;
  DrumNoisePlayer m_noisePlayer;
};

/// The drum as the cross-talk paths hear it: direct ray, back wall, one side wall, static part;
/// straight in front at 1 m.
class ReducedDrumModel {
 public:
  explicit ReducedDrumModel(const DrumSettings& settings) noexcept : m_settings(settings) {}

  void setSampleRate(double hz) noexcept;
  void clear() noexcept;
  void resetFilters() noexcept { clear(); }
  void rebuildGeometry() noexcept;
  const AttenuationLaw& attenuation() const noexcept { return m_attenuation; }
  void process(const RotorTrack& track, const SoundLine& line, int n, RunBuffer& out) noexcept;

 private:
  const DrumSettings& m_settings;
  MicrophonePosition m_microphone;
  Rays m_rays;
  AttenuationLaw m_attenuation;
  MicrophoneRegion m_region = MicrophoneRegion::Front;
  double m_sampleRate = 44100.0;
  double m_polePole = 0.0;
  double m_bouncePole = 0.0;
  double m_staticPole = 0.0;
  ReducedRay m_direct, m_side, m_back;
  OnePole m_staticLowPass;
};

} // namespace qlx::engine
