// SPDX-License-Identifier: ISC
#pragma once

#include <algorithm>
#include <array>
#include <atomic>
#include <chrono>
#include <cmath>
#include <cstddef>
#include <cstdint>

namespace qlx::engine {

/// Where the rotors are, for displays. The audio thread knows it at the ends of its blocks only; a
/// display that drew those positions would move by one block in one picture and by two in the next.
/// So speed and time are kept beside the phase, and the reader carries the phase on to its own
/// time.
///
/// store belongs to the audio thread and is wait-free. The read-outs may be called on any thread
/// and never wait for the audio thread: they look at the newest finished entry of a ring, and look
/// again only when the writer has gone nearly once round meanwhile.
class RotorReadout {
 public:
  using Clock = std::chrono::steady_clock;

  struct Rotor {
    double phase = 0.0; ///< turns, 0 <= phase < 1
    double speed = 0.0; ///< change of phase, turns a second
  };

  /// The positions at `now`, the end of a block that lasts `blockSeconds`.
  void store(const Rotor& horn, const Rotor& drum, Clock::time_point now,
             double blockSeconds) noexcept {
    const std::uint32_t count = m_count.load(std::memory_order_relaxed) + 1;
    Entry& entry = m_ring[count % kEntries];
    write(entry.horn, horn);
    write(entry.drum, drum);
    entry.time.store(now.time_since_epoch().count(), std::memory_order_release);
    entry.block.store(blockSeconds, std::memory_order_release);
    m_count.store(count, std::memory_order_release);
  }

  /// Phases at `now`, turns, 0 <= phase < 1. They are carried on by at most one block, so that they
  /// stand still soon after the audio does.
  double hornPhase(Clock::time_point now) const noexcept { return phase(&Entry::horn, now); }
  double drumPhase(Clock::time_point now) const noexcept { return phase(&Entry::drum, now); }

 private:
  static constexpr std::uint32_t kEntries = 4;

  struct SharedRotor {
    std::atomic<double> phase{0.0};
    std::atomic<double> speed{0.0};
  };
  struct Entry {
    SharedRotor horn, drum;
    std::atomic<Clock::rep> time{0};
    std::atomic<double> block{0.0};
  };
  static_assert(std::atomic<double>::is_always_lock_free);
  static_assert(std::atomic<Clock::rep>::is_always_lock_free);

  // Release and acquire on every value: who sees a value of an entry that is being overwritten sees
  // the count that had been reached by then, too.
  static void write(SharedRotor& shared, const Rotor& rotor) noexcept {
    shared.phase.store(rotor.phase, std::memory_order_release);
    shared.speed.store(rotor.speed, std::memory_order_release);
  }

  double phase(SharedRotor Entry::*rotor, Clock::time_point now) const noexcept {
    for (;;) {
      const std::uint32_t count = m_count.load(std::memory_order_acquire);
      const Entry& entry = m_ring[count % kEntries];
      const double phase = (entry.*rotor).phase.load(std::memory_order_acquire);
      const double speed = (entry.*rotor).speed.load(std::memory_order_acquire);
      const Clock::duration stored{entry.time.load(std::memory_order_acquire)};
      const double block = entry.block.load(std::memory_order_acquire);
      // This entry is written again once the count is kEntries - 1 further.
      if (m_count.load(std::memory_order_acquire) - count >= kEntries - 1) continue;
      const std::chrono::duration<double> since = now.time_since_epoch() - stored;
      const double carried = phase + speed * std::clamp(since.count(), 0.0, block);
      const double turns = carried - std::floor(carried);
      return turns < 1.0 ? turns : 0.0;
    }
  }

  std::array<Entry, kEntries> m_ring{};
  std::atomic<std::uint32_t> m_count{0};
};

} // namespace qlx::engine
