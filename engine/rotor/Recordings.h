// SPDX-License-Identifier: ISC
#pragma once

#include <array>
#include <atomic>
#include <cstddef>
#include <span>

namespace qlx::engine {

/// Loop lengths of the motor-noise recordings in samples at 44100 Hz. Every span of Recordings
/// holds the loop followed by kRecordingGuard samples equal to its first ones, so that a four-point
/// read never wraps; the one-shot start/stop sound is followed by a single zero.
inline constexpr std::size_t kHornSlowLength = 63884;
inline constexpr std::size_t kHornFastLength = 219418;
inline constexpr std::size_t kDrumSlowLength = 270144;
inline constexpr std::size_t kDrumFastLength = 627298;
inline constexpr std::size_t kStartStopLength = 3955;
inline constexpr std::size_t kRecordingGuard = 3;

/// Rotor turns that one pass of a phase-locked loop covers.
inline constexpr double kHornFastTurns = 34.0;
inline constexpr double kDrumSlowTurns = 5.0;
inline constexpr double kDrumFastTurns = 88.0;

/// The motor-noise recordings, mono, full scale 1. The memory stays the owner's and must outlive
/// the engine.
struct Recordings {
  std::array<std::span<const float>, 2>
      hornSlow;                     ///< free running, one per microphone: kHornSlowLength + guard
  std::span<const float> hornFast;  ///< kHornFastLength + guard
  std::span<const float> drumSlow;  ///< kDrumSlowLength + guard
  std::span<const float> drumFast;  ///< kDrumFastLength + guard
  std::span<const float> startStop; ///< kStartStopLength + 1

  /// Whether the memory is filled; until then nothing reads it and the motors are silent. Null:
  /// it is from the beginning. May become true at any time, by any thread; never false again.
  const std::atomic<bool>* filled = nullptr;
};

} // namespace qlx::engine
