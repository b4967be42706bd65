// SPDX-License-Identifier: ISC
#pragma once

#include "engine/cabinet/CabinetGeometry.h"
#include "engine/settings/SmoothedSettings.h"
#include "engine/signal/Biquad.h"
#include "engine/signal/Interpolation.h"
#include "engine/signal/OnePole.h"
#include "engine/signal/SubBlock.h"

namespace qlx::engine {

/// What the microphones hear from the cabinet's other sources: the horn microphones the drum, the
/// bass-reflex port and the horn's own return, the drum microphone the horn and the port. Fed by
/// the reduced models and the port's resonance, read from short delay lines. Audio thread only.
class CrossTalk {
 public:
  CrossTalk();

  void setSampleRate(double hz) noexcept; ///< engine rate
  void clearSmoothers() noexcept;         ///< the two returns' low-passes
  void clearRings() noexcept;
  void setInstantUpdate() noexcept { m_portFilter.setInstantUpdate(true); }
  void clearFilters() noexcept { m_portFilter.clearState(); }

  /// Microphones and circles from which delays and levels of the five paths follow.
  struct Geometry {
    MicrophonePosition drumMicrophone;
    double drumAmRadius;
    MicrophonePosition hornMicrophone;
    double hornAmRadius;
    const AttenuationLaw& hornLaw;
    const AttenuationLaw& drumLaw;
  };
  void computeTargets(const Geometry& geometry, SmoothedSettings& settings) const noexcept;

  /// What reaches the microphones, one value a sample.
  struct Output {
    SubBlock toHorns;
    SubBlock hornEcho;
    SubBlock toDrum;
  };

  /// n samples of the reduced drum's and horn's sound and of the engine's input, which excites the
  /// port.
  void process(const SubBlock& drum, const SubBlock& horn, const SubBlock& input,
               const SmoothedValues& settings, int n, Output& out) noexcept;

 private:
  static constexpr int kRingSize = 1024;
  using Ring = ContinuedRing<kRingSize>;

  /// A path from one of the lines to a microphone.
  struct Path {
    const Ring& ring;
    Smoothed delay;
    SubBlock value;
  };

  static double tap(const Ring& ring, int writeIndex, double delay) noexcept;
  bool readAhead(Path& path, const SmoothedValues& settings, int n) const noexcept;

  Ring m_drumReturn, m_hornReturn, m_port;
  int m_writeIndex = 0;
  Biquad m_portFilter;
  OnePole m_drumSmoother, m_hornSmoother;
  double m_drumPole = 0.0;
  double m_hornPole = 0.0;
  double m_sampleRate = 44100.0;
};

} // namespace qlx::engine
