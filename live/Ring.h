// SPDX-License-Identifier: ISC
#pragma once

#include <array>
#include <atomic>
#include <cstddef>
#include <optional>

namespace qlx::live {

/// A queue of fixed size from one thread to one other. Neither waits or allocates. `kSize` is a
/// power of two.
template <typename Item, std::size_t kSize>
class Ring {
  static_assert(kSize > 0 && (kSize & (kSize - 1)) == 0);
  static_assert(std::atomic<std::size_t>::is_always_lock_free);

 public:
  /// The writing thread's: false, and nothing is kept, when the queue is full.
  bool push(const Item& item) noexcept {
    const std::size_t written = m_written.load(std::memory_order_relaxed);
    if (written - m_read.load(std::memory_order_acquire) == kSize) return false;
    m_items[written % kSize] = item;
    m_written.store(written + 1, std::memory_order_release);
    return true;
  }

  /// The reading thread's: the oldest item, or nothing.
  std::optional<Item> pop() noexcept {
    const std::size_t read = m_read.load(std::memory_order_relaxed);
    if (m_written.load(std::memory_order_acquire) == read) return std::nullopt;
    const Item item = m_items[read % kSize];
    m_read.store(read + 1, std::memory_order_release);
    return item;
  }

 private:
  std::array<Item, kSize> m_items{};
  std::atomic<std::size_t> m_written{0}; ///< ever
  std::atomic<std::size_t> m_read{0};
};

} // namespace qlx::live
