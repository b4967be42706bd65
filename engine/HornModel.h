#pragma once

#include "engine/Biquad.h"
#include "engine/CabinetGeometry.h"
#include "engine/RotorNoisePlayer.h"
#include "engine/RotorTrack.h"

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
};

/// The twelve images that a horn microphone hears, in the order direct, back wall, back-right,
/// back-left, left-back-right, right-back-left, right wall, left wall, and four of four and five
/// bounces.
std::array<ImageSource, 12> hornImages(const MicrophonePosition& microphone,
                                       const CabinetWalls& walls) noexcept;

/// What one microphone hears from the horn turning inside the cabinet: direct ray, eleven
/// reflections, a static part, echoes from floor and ceiling, the body's resonances, and the
/// motor's noise beside it. Audio thread only.
class HornModel {
 public:
  /// `microphone` 0 or 1.
  HornModel(const HornSettings& settings, const Recordings& recordings, int microphone);

  /// Engine rate in Hz; at least 11025.
  void setSampleRate(double hz) noexcept;
  void clear() noexcept;
  void resetFilters() noexcept;
  void rebuildGeometry() noexcept;
  void updateStaticPole() noexcept;

  void setMicAngle(double turns) noexcept { m_microphone.angle = turns; }
  void setMicDistance(double metres) noexcept;
  void updateReflectionPoles() noexcept;

  /// Level of the direct path without the rotor's movement.
  double staticLevel() const noexcept;

  const MicrophonePosition& microphone() const noexcept { return m_microphone; }
  HornNoisePlayer& noisePlayer() noexcept { return m_noisePlayer; }

  /// The next n samples: `line` holds the treble up to them, written at track.writeIndex; fills
  /// `out` with the microphone's signal and `noise` with the motor's.
  void process(const RotorTrack& track, const SoundLine& line, int n, RunBuffer& out,
               RunBuffer& noise) noexcept;

 private:
  void addRay(const RotorTrack& track, const SoundLine& line, int n, std::size_t ray,
              RunBuffer& sum) noexcept;
  void addStaticRay(const RotorTrack& track, const SoundLine& line, int n, RunBuffer& sum) noexcept;
  void filterRay(const RotorTrack& track, std::size_t ray, const RayMovement& movement, int n,
                 RunBuffer& run) noexcept;
  void tuneRay(std::size_t ray, double phase) noexcept;
  void addZAxisEchoes(int n, RunBuffer& run) noexcept;

  static constexpr int kZRingSize = 512;
  static constexpr std::size_t kRayCount = 12;
  static constexpr std::size_t kBounceCount = 5;

  const HornSettings& m_settings;
  MicrophonePosition m_microphone;
  Rays m_rays;
  AttenuationLaw m_attenuation;
  MicrophoneRegion m_region = MicrophoneRegion::Front;
  double m_reflectionScale = 1.0;
  double m_outputGain = 1.0;

  double m_sampleRate = 44100.0;
  double m_staticPole = 0.0;
  std::array<double, kBounceCount> m_bouncePole{};

  std::array<Biquad, kRayCount> m_peak;
  std::array<Biquad, kRayCount> m_shelf;
  std::array<OnePole, kRayCount> m_bounce{};
  OnePole m_staticLowPass;
  std::array<Biquad, 28> m_body;

  MirroredRing<kZRingSize> m_raySum;
  int m_zIndex = 0;
  HornNoisePlayer m_noisePlayer;
};

} // namespace qlx::engine
