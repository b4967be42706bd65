// SPDX-License-Identifier: ISC
#pragma once

#include "engine/cabinet/CrossTalk.h"
#include "engine/cabinet/Room.h"
#include "engine/settings/SmoothedSettings.h"
#include "engine/signal/BiquadLanes.h"
#include "engine/signal/OnePole.h"
#include "engine/signal/SubBlock.h"

namespace qlx::engine {

/// What arrives at the two horn microphones and the drum's, one value a sample each.
struct MicrophoneSignals {
  SubBlock horn1, horn2, drum;
  SubBlock noise1, noise2, drumNoise; ///< of the motors
  CrossTalk::Output cross;
};

/// The three microphones' way to stereo: gains, the room's send and its coloured return, the
/// motors' noise, optional high-pass on the horn's and low-pass on the drum's, panorama, sum.
/// Engine rate; audio thread only.
class MicrophoneMix {
 public:
  explicit MicrophoneMix(const kernels::Kernels& kernels);

  double hornLevel = 1.0; ///< of the chosen microphone placement
  double noiseSendGain = 0.0;

  /// Levels at which the room is heard in each microphone: those of the direct sound.
  struct RoomLevels {
    double horn1, horn2, drum;
  };

  void setSampleRate(double hz) noexcept;
  void clear() noexcept; ///< the drum low-pass
  void setInstantUpdate() noexcept;
  void clearFilters() noexcept;

  /// Wanted cut-offs in Hz, kept over rate changes; limited to 20 Hz .. half the engine rate where
  /// the filters get them.
  void setHornHighPass(double hz) noexcept;
  void setDrumLowPass(double hz) noexcept;

  /// Colour of the room's return: gain in dB of its mid (1500 Hz) and low (350 Hz) filters.
  void setColor(double midDb, double lowDb) noexcept;

  /// n samples; `mics` is worked on in place, the mix goes to `left` and `right`.
  void process(MicrophoneSignals& mics, Room& room, const RoomLevels& levels,
               const SmoothedValues& settings, int n, SubBlock& left, SubBlock& right) noexcept;

 private:
  double inRange(double hz) const noexcept;
  kernels::MixGains gains(const SmoothedValues& settings) const noexcept;

  const kernels::Kernels& m_kernels;
  PairRunner m_pairs;
  using ColorFilters = std::array<Biquad, 2>; ///< mid, low
  std::array<ColorFilters, 2> m_color;        ///< left, right
  std::array<Biquad, 2> m_highPass;           ///< microphone 1, 2
  OnePole m_drumLowPass;
  double m_drumPole = 0.0;
  double m_hornHighPassHz = 20.0;
  double m_drumLowPassHz = 20000.0;
  double m_sampleRate = 44100.0;
};

} // namespace qlx::engine
