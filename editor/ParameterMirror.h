// SPDX-License-Identifier: ISC
#pragma once

#include "plugin/parameters/ParameterIndex.h"

#include <array>
#include <atomic>
#include <bit>
#include <cstddef>
#include <cstdint>

namespace qlx::editor {

/// The newest values of parameters on their way from any thread to the window's.
class ParameterMirror {
 public:
  /// Any thread. Indices of no host parameter are passed over.
  void put(std::int32_t index, float value) noexcept {
    if (index < 0 || index >= plugin::kNumHostParameters) return;
    m_values[static_cast<std::size_t>(index)].store(value, std::memory_order_relaxed);
    // Release: a thread that sees the mark sees the value.
    m_changed.fetch_or(std::uint64_t{1} << index, std::memory_order_release);
  }

  /// Forgets what has been put.
  void clear() noexcept { m_changed.store(0, std::memory_order_relaxed); }

  /// Calls take(index, value) for each parameter that has been put since the last time.
  template <typename Take>
  void takeAll(Take take) {
    if (m_changed.load(std::memory_order_relaxed) == 0) return;
    std::uint64_t changed = m_changed.exchange(0, std::memory_order_acquire);
    while (changed != 0) {
      const int index = std::countr_zero(changed);
      changed &= changed - 1;
      take(index, m_values[static_cast<std::size_t>(index)].load(std::memory_order_relaxed));
    }
  }

 private:
  static_assert(plugin::kNumHostParameters <= 64);
  static_assert(std::atomic<float>::is_always_lock_free);
  static_assert(std::atomic<std::uint64_t>::is_always_lock_free);

  std::array<std::atomic<float>, plugin::kNumHostParameters> m_values{};
  std::atomic<std::uint64_t> m_changed{0};
};

} // namespace qlx::editor
