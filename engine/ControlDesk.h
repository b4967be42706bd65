#pragma once

#include "engine/Setting.h"

#include <array>
#include <atomic>
#include <bit>
#include <cstdint>

namespace qlx::engine {

/// Where other threads leave settings for the audio thread: one value and one mark each, no lock.
/// Of several writes of one setting between two blocks the last counts.
class ControlDesk {
 public:
  void write(Setting setting, double value) noexcept {
    const auto i = static_cast<std::size_t>(setting);
    m_values[i].store(value, std::memory_order_relaxed);
    m_marks[i / 64].fetch_or(std::uint64_t{1} << (i % 64), std::memory_order_release);
  }

  /// Audio thread: calls take(setting, value) for every setting written since the last collection,
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
};

} // namespace qlx::engine
