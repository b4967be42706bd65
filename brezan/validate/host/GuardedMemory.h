// SPDX-License-Identifier: ISC
#pragma once

#include <cstddef>

namespace qlx::validate {

/// Memory between two pages that nobody may touch: an access before or behind it ends the process
/// at once.
class GuardedMemory {
 public:
  /// Room for so many bytes. Throws std::bad_alloc.
  explicit GuardedMemory(std::size_t bytes);
  ~GuardedMemory();
  GuardedMemory(const GuardedMemory&) = delete;
  GuardedMemory& operator=(const GuardedMemory&) = delete;
  GuardedMemory(GuardedMemory&& other) noexcept;
  GuardedMemory& operator=(GuardedMemory&&) = delete;

  /// The last `bytes` of it: behind them is the guard.
  char* last(std::size_t bytes) const { return m_begin + m_size - bytes; }
  /// Its beginning, directly behind the guard before it.
  char* first() const { return m_begin; }
  void allowWrites(bool allowed) const;

 private:
  char* m_begin;
  std::size_t m_size; ///< whole pages
};

} // namespace qlx::validate
