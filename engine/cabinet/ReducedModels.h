// SPDX-License-Identifier: ISC
#pragma once

#include "engine/cabinet/DrumModel.h"
#include "engine/cabinet/HornMicrophone.h"
#include "engine/cabinet/RayLanes.h"
#include "engine/signal/SubBlock.h"

#include <array>

namespace qlx::engine {

/// Horn and drum as the cross-talk paths hear them: direct ray, back wall, the side wall that shows
/// and the static part, one low-pass each instead of the full filters, its pole following the
/// mouth's angle within 5 ms; and a coarse body for the horn. Both are listened to straight in
/// front at 1 m, from where with these cabinets' walls neither side wall shows. Audio thread only.
class ReducedModels {
 public:
  ReducedModels(const HornSettings& horn, const DrumSettings& drum,
                const kernels::Kernels& kernels);

  void setSampleRate(double hz) noexcept; ///< engine rate, at least 11025 Hz
  void clearHorn() noexcept;
  void clearDrum() noexcept;
  void resetHornFilters() noexcept;
  void resetDrumFilters() noexcept { clearDrum(); }
  /// `like`: a law of the full model.
  void rebuildHorn(const AttenuationLaw& like) noexcept;
  void rebuildDrum(const AttenuationLaw& like) noexcept;
  void updateHornStaticPole() noexcept;
  void updateDrumStaticPole() noexcept;

  const AttenuationLaw& hornAttenuation() const noexcept { return m_horn.attenuation; }
  const AttenuationLaw& drumAttenuation() const noexcept { return m_drum.attenuation; }

  /// The sound of one rotor and where it stands.
  struct Source {
    const RotorHistory& history;
    const DelayLine& line;
  };

  /// The next n samples of both.
  void process(const Source& horn, const Source& drum, int n, SubBlock& hornOut,
               SubBlock& drumOut) noexcept;

 private:
  struct Model {
    Rays rays;
    AttenuationLaw attenuation;
    MicrophoneRegion region = MicrophoneRegion::Front;
  };

  void clearLanes(std::size_t first) noexcept;
  void refreshLanes(const Source& horn, const Source& drum) noexcept;
  void addStaticRays(const Source& horn, const Source& drum, int n, double* pairs) noexcept;

  const HornSettings& m_hornSettings;
  const DrumSettings& m_drumSettings;
  const kernels::Kernels& m_kernels;
  MicrophonePosition m_microphone;
  Model m_horn, m_drum;
  kernels::ReducedBank m_bank{};
  bool m_lanesFresh = false;
  HornSettings m_laneHornSettings; ///< from which the lanes were made
  DrumSettings m_laneDrumSettings;
  double m_sampleRate = 44100.0;
  double m_reflectionPole = 0.0;
  double m_wantedDrumPole = 0.0; ///< of the static part, taken when the filters are next tuned
  kernels::FixedPair m_static{};
  kernels::ReducedBodySections m_body{};
};

} // namespace qlx::engine
