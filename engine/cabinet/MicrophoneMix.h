// SPDX-License-Identifier: ISC
#pragma once

#include "engine/settings/SmoothedSettings.h"
#include "engine/signal/BiquadLanes.h"
#include "engine/signal/OnePole.h"
#include "engine/signal/SubBlock.h"

namespace qlx::engine {

/// The three microphones' way to stereo: optional high-pass on the horn's, low-pass on the drum's,
/// panorama, mix. Engine rate; audio thread only.
class MicrophoneMix {
 public:
  explicit MicrophoneMix(const kernels::Kernels& kernels);

  void setSampleRate(double hz) noexcept;
  void clear() noexcept; ///< the drum low-pass
  void setInstantUpdate() noexcept;
  void clearFilters() noexcept;

  /// Wanted cut-offs in Hz, kept over rate changes; limited to 20 Hz .. half the engine rate where
  /// the filters get them.
  void setHornHighPass(double hz) noexcept;
  void setDrumLowPass(double hz) noexcept;

  /// n samples of both horn microphones and the drum; writes the mix to `left` and `right`.
  void process(const kernels::MixSignals& signals, const kernels::MixGains& gains,
               const SmoothedValues& settings, int n, SubBlock& left, SubBlock& right) noexcept;

 private:
  double inRange(double hz) const noexcept;

  const kernels::Kernels& m_kernels;
  PairRunner m_pairs;
  std::array<Biquad, 2> m_highPass; ///< microphone 1, 2
  OnePole m_drumLowPass;
  double m_drumPole = 0.0;
  double m_hornHighPassHz = 20.0;
  double m_drumLowPassHz = 20000.0;
  double m_sampleRate = 44100.0;
};

} // namespace qlx::engine
