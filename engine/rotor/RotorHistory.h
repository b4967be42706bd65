// SPDX-License-Identifier: ISC
#pragma once

#include "engine/kernels/Kernels.h"
#include "engine/rotor/RotorMotion.h"
#include "engine/signal/Interpolation.h"
#include "engine/signal/SpeedOfSound.h"
#include "engine/signal/SubBlock.h"

#include <array>
#include <span>

namespace qlx::engine {

/// Host samples between two updates of what follows the rotors' angle slowly (filters of the rays).
inline constexpr int kUpdateInterval = 16;

/// Length of the delay lines in which rotors and their sound are remembered: 2048 engine samples,
/// 13.9 m of air at the highest engine rate. The farthest image lies 12.3 m from a microphone.
inline constexpr int kHistorySize = kernels::kLineSize;
using DelayLine = ContinuedRing<kHistorySize>;

/// A rotor as its models see it: the motion, the angles of the recent past (a ray that arrives now
/// left the mouth some time ago), and the clock by which what follows the angle slowly is updated.
/// All models of one rotor share it.
class RotorHistory {
 public:
  explicit RotorHistory(RotorMotion::Direction direction) noexcept : motion(direction) {}

  RotorMotion motion;

  /// `hz` engine rate, `factor` host samples per engine sample.
  void setSampleRate(double hz, int factor) noexcept;
  void clear() noexcept;

  /// Moves the rotor through the next n samples; their sound is to be written to the lines from
  /// writeIndex() on.
  void advance(int n) noexcept;

  /// Ends the sub-block that advance began.
  void finish(int n) noexcept;

  /// Where sample j of the current sub-block stands in the lines, not yet wrapped.
  int writeIndex(int j) const noexcept { return m_writeIndex + j; }

  /// The current sub-block of n samples as the ray kernels take it.
  kernels::RayPass pass(int n) const noexcept {
    return {m_writeIndex, n, nextUpdate(0), m_updateInterval};
  }

  /// Angles (turns) of the past, as a line that is written like the sound.
  const double* angles() const noexcept { return m_angles.data(); }

  /// First sample at or after j at which slow followers are updated; may lie beyond the sub-block.
  int nextUpdate(int j) const noexcept {
    return j + ((m_updateInterval - (m_counter + j)) & (m_updateInterval - 1));
  }

  /// Revolutions a sample, one entry a sample of the current sub-block.
  std::span<const double> speeds(int n) const noexcept {
    return {m_speeds.data(), static_cast<std::size_t>(n)};
  }

  double samplesPerMetre() const noexcept { return m_sampleRate * kInverseSpeedOfSound; }

 private:
  ContinuedRing<kHistorySize> m_angles;
  SubBlock m_speeds{};
  int m_writeIndex = 0;
  int m_counter = 0;
  int m_updateInterval = kUpdateInterval;
  double m_sampleRate = 44100.0;
};

} // namespace qlx::engine
