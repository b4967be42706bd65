// SPDX-License-Identifier: ISC
#pragma once

#include "engine/settings/Setting.h"

#include <array>
#include <atomic>
#include <bit>
#include <cstdint>

namespace qlx::engine {

/// Where other threads leave settings for the audio thread, one value and one mark each, and ask
/// for work, one bit each (PendingWork); no lock. Of several writes of one setting between two
/// blocks the last counts.
class SettingMailbox {
 public:
  // Any thread.
  void request(std::uint32_t work) noexcept { m_work.fetch_or(work, std::memory_order_release); }
  void write(Setting setting, double value) noexcept {
    const auto i = static_cast<std::size_t>(setting);
    m_values[i].store(value, std::memory_order_relaxed);
    m_marks[i / 64].fetch_or(std::uint64_t{1} << (i % 64), std::memory_order_release);
  }

  // Audio thread.

  /// True where some of the work is asked for.
  bool isRequested(std::uint32_t work) const noexcept {
    return (m_work.load(std::memory_order_relaxed) & work) != 0;
  }

  /// Takes the work that is asked for of `work`, and then every setting that was written before it
  /// was asked for: a value that came after the last collection is not missing in the work.
  template <class Take>
  std::uint32_t takeWork(std::uint32_t work, Take take) noexcept {
    const std::uint32_t taken = m_work.fetch_and(~work, std::memory_order_acquire) & work;
    if (taken != 0) collect(take);
    return taken;
  }

  /// Calls take(setting, value) for every setting written since the last collection,
  /// in their order.
  template <class Take>
  void collect(Take take) noexcept {
    for (std::size_t word = 0; word < kWords; ++word) {
      if (m_marks[word].load(std::memory_order_relaxed) == 0) continue;
      std::uint64_t marks = m_marks[word].exchange(0, std::memory_order_acquire);
      for (; marks != 0; marks &= marks - 1) {
        const std::size_t i = word * 64 + static_cast<std::size_t>(std::countr_zero(marks));
        take(static_cast<Setting>(i), m_values[i].load(std::memory_order_relaxed));
      }
    }
  }

 private:
  static constexpr std::size_t kWords = (kSettingCount + 63) / 64;
  static_assert(std::atomic<double>::is_always_lock_free);
  static_assert(std::atomic<std::uint64_t>::is_always_lock_free);

  std::array<std::atomic<double>, kSettingCount> m_values{};
  std::array<std::atomic<std::uint64_t>, kWords> m_marks{};
  std::atomic<std::uint32_t> m_work{0};
};

} // namespace qlx::engine
