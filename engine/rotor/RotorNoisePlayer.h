// SPDX-License-Identifier: ISC
#pragma once

#include "engine/kernels/Kernels.h"
#include "engine/rotor/Recordings.h"
#include "engine/signal/Biquad.h"
#include "engine/signal/SubBlock.h"

#include <atomic>
#include <cstdint>
#include <span>

namespace qlx::engine {

/// The relay's click and the motor's thump when a rotor starts or stops: a recording played once at
/// its own speed.
class SwitchSound {
 public:
  explicit SwitchSound(std::span<const float> recording) noexcept : m_recording(recording) {}

  void setSampleRate(double hz) noexcept { m_step = 44100.0 / hz; }
  void setVolume(double volume) noexcept { m_volume = volume; }

  /// Plays from the start, at the volume set last.
  void trigger() noexcept;
  void clear() noexcept;

  bool isPlaying() const noexcept { return m_playing; }
  /// Next sample; 0 while nothing plays.
  double tick() noexcept;

 private:
  std::span<const float> m_recording;
  double m_step = 1.0;
  double m_volume = 0.0;
  double m_gain = 0.0;
  double m_position = 0.0;
  bool m_playing = false;
};

/// Gains of a slow and a fast recording at one rotor speed.
struct NoiseBlend {
  double slow, fast;
};

/// Where between the thresholds of slow and fast noise (0.78 and 7.5 revolutions a second) a speed
/// lies.
class NoiseSpeedRange {
 public:
  void setSampleRate(double hz) noexcept;

  NoiseBlend hornBlend(double speed) const noexcept;
  NoiseBlend drumBlend(double speed) const noexcept;

  /// 0 .. 1 strictly between the thresholds, negative outside.
  double between(double speed) const noexcept;

 private:
  double m_slow = 0.0; // revolutions a sample
  double m_fast = 1.0;
  double m_inverseSpan = 1.0;
};

/// What the noise of both rotors has in common: a slow and a fast recording faded by the rotor's
/// speed, the switching sound, and a band-pass that narrows with the microphone's distance. Audio
/// thread only.
class RotorNoisePlayer {
 public:
  void setSlowVolume(double volume) noexcept { m_slowVolume = volume; }
  void setFastVolume(double volume) noexcept { m_fastVolume = volume; }
  void setSwitchVolume(double volume) noexcept { m_switchSound.setVolume(volume); }
  void trigger() noexcept {
    if (areRecordingsFilled()) m_switchSound.trigger();
  }

  /// Farther microphones hear less of the noise, and more of the band's middle.
  void setMicDistance(double metres) noexcept;

 protected:
  /// The band-pass that shapes a rotor's noise, and how it follows the microphone's distance d in
  /// metres: Q = qAtRotor + qPerMetre d, gain (0.3 m / d)^exponent.
  struct Distance {
    double bandHz;
    double firstQ; ///< before a distance is known
    double qAtRotor, qPerMetre;
    double exponent;
  };

  RotorNoisePlayer(const Recordings& recordings, const kernels::Kernels& kernels,
                   std::span<const float> slowLoop, std::span<const float> fastLoop,
                   const Distance& distance) noexcept;

  void setRate(double hz) noexcept; ///< engine rate
  void clearCommon() noexcept;      ///< phases, switching sound and band-pass

  /// How loud both recordings are, a sample of the sub-block each.
  struct Gains {
    SubBlock slow{}, fast{};
    bool slowHeard = false, fastHeard = false;
  };

  /// Blend by the rotor's speeds; `law` is one of NoiseSpeedRange's.
  Gains gainsFor(std::span<const double> speeds,
                 NoiseBlend (NoiseSpeedRange::*law)(double) const noexcept) noexcept;
  void addSwitchSound(std::span<double> samples) noexcept;
  double gain(double level) const noexcept { return m_distanceGain * level; }
  bool areRecordingsFilled() const noexcept {
    return m_filled == nullptr || m_filled->load(std::memory_order_acquire);
  }

  const kernels::Kernels& m_kernels;
  const Distance& m_distance;
  const std::atomic<bool>* m_filled;
  std::span<const float> m_slowLoop;
  std::span<const float> m_fastLoop;
  SwitchSound m_switchSound;
  NoiseSpeedRange m_range;
  double m_blendedSpeed = -1.0; ///< for which the blend was made, revolutions a sample
  NoiseBlend m_blend{};
  Biquad m_bandPass;
  double m_slowVolume = 0.0;
  double m_fastVolume = 0.0;
  double m_micDistance = 1.0; ///< metres
  double m_distanceGain = 1.0;
  double m_fastPhase = 0.0; ///< passes of the loop, 0 .. 1

 private:
  double bandQ() const noexcept;
};

/// Motor and rotor noise at one horn microphone: the slow loop runs freely, the fast one is locked
/// to the rotor.
class HornNoisePlayer : public RotorNoisePlayer {
 public:
  /// `microphone` 0 or 1 chooses the recording and the offset of the fast loop.
  HornNoisePlayer(const Recordings& recordings, const kernels::Kernels& kernels,
                  int microphone) noexcept;

  void setSampleRate(double hz) noexcept;
  void clear() noexcept; ///< phases and switching sound

  /// A microphone and what it hears: its angle in turns, the level that the recordings are played
  /// at, and where they go.
  struct Hearing {
    HornNoisePlayer& player;
    double micAngle;
    double level;
    SubBlock& out;
  };

  /// Fills both microphones' `out` with one sample per entry of `speeds` (revolutions a sample, at
  /// most kSubBlock). Their band-passes run side by side.
  static void process(const Hearing& first, const Hearing& second,
                      std::span<const double> speeds) noexcept;

 private:
  void read(std::span<const double> speeds, double micAngle, SubBlock& out) noexcept;

  static const Distance kHornDistance;

  double m_turnOffset;
  double m_slowStep = 1.0;     // recording samples an engine sample
  double m_slowPosition = 0.0; // recording samples
};

/// Motor and rotor noise at the drum microphone: two loops locked to the rotor; while it speeds up
/// the slow one loses and the fast one gains treble.
class DrumNoisePlayer : public RotorNoisePlayer {
 public:
  DrumNoisePlayer(const Recordings& recordings, const kernels::Kernels& kernels) noexcept;

  void setSampleRate(double hz) noexcept;
  void clear() noexcept;
  void process(std::span<const double> speeds, double micAngle, double level,
               std::span<double> out) noexcept;

 private:
  static const Distance kDrumDistance;

  kernels::NoiseTreble m_treble{};
  double m_slowPhase = 0.0; // passes of the loop, 0 .. 1
};

} // namespace qlx::engine
