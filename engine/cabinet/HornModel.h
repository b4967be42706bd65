// SPDX-License-Identifier: ISC
#pragma once

#include "engine/cabinet/HornMicrophone.h"
#include "engine/cabinet/RayLanes.h"
#include "engine/signal/SubBlock.h"

#include <array>

namespace qlx::engine {

/// What both microphones hear from the horn turning inside the cabinet: direct ray, eleven
/// reflections, a static part, echoes from floor and ceiling, and the body's resonances. The two
/// microphones go side by side, in pairs. Audio thread only.
class HornModel {
 public:
  HornModel(const HornSettings& settings, const Recordings& recordings,
            const kernels::Kernels& kernels);

  HornMicrophone& microphone(std::size_t number) noexcept { return m_microphones[number]; }

  /// Engine rate in Hz; at least 11025.
  void setSampleRate(double hz) noexcept;
  void clear() noexcept;
  void resetFilters() noexcept;
  void rebuildGeometry(std::size_t microphone) noexcept;
  void updateStaticPole() noexcept;
  void updateReflectionPoles() noexcept;

  /// The next n samples: `line` holds the treble up to them, written at history.writeIndex; writes
  /// what both microphones hear.
  void process(const RotorHistory& history, const DelayLine& line, int n, SubBlock& out1,
               SubBlock& out2) noexcept;

 private:
  static constexpr std::size_t kReflectionCount = HornMicrophone::kMostReflections;
  static constexpr int kPastSize = 32; ///< samples of the past that the echoes reach

  void refreshLanes(const RotorHistory& history, const DelayLine& line) noexcept;
  void addStaticRays(const RotorHistory& history, const DelayLine& line, int n,
                     double* pairs) noexcept;
  void addZAxisEchoes(int n, double* pairs) noexcept;

  const HornSettings& m_settings;
  const kernels::Kernels& m_kernels;
  std::array<HornMicrophone, 2> m_microphones;
  kernels::HornBank m_bank{};
  bool m_lanesFresh = false;
  HornSettings m_laneSettings; ///< from which the lanes were made

  double m_sampleRate = 44100.0;
  std::array<double, kReflectionCount> m_reflectionPole{};
  kernels::FixedPair m_static{};
  kernels::BodySections m_body{};
  std::array<double, 2 * (kPastSize + kSubBlock + 2)> m_past{};
  kernels::PairTaps m_echoes{};
};

} // namespace qlx::engine
