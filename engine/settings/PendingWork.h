// SPDX-License-Identifier: ISC
#pragma once

#include <cstdint>

namespace qlx::engine {

/// Re-initialisation work, one bit each, carried out by the audio thread behind a short mute
/// (RotaryEngine::request).
enum PendingWork : std::uint32_t {
  kPendingSetup = 1U << 0,       ///< write the microphone placement's settings
  kPendingRoomTaps = 1U << 1,    ///< early reflections
  kPendingHornMic1 = 1U << 2,    ///< rays of horn microphone 1
  kPendingHornMic2 = 1U << 3,    ///< rays of horn microphone 2
  kPendingReducedHorn = 1U << 4, ///< rays of the cross-talk horn
  kPendingDrum = 1U << 5,        ///< rays of the drum microphone
  kPendingReducedDrum = 1U << 6, ///< rays of the cross-talk drum
  kPendingRateSetup = 1U << 7,   ///< engine rate and everything that follows from it
  kPendingCrossDelays = 1U << 8, ///< cross-talk delays and levels
  kPendingResume = 1U << 9,      ///< host rate, engine rate, cleared delay lines
  kPendingFullReset = 1U << 10,  ///< everything
};

inline constexpr std::uint32_t kAllPendingWork = (1U << 11) - 1;

} // namespace qlx::engine
