// SPDX-License-Identifier: ISC
#pragma once

#include <algorithm>
#include <array>
#include <atomic>
#include <thread>

namespace qlx::presets {

/// Which threads are inside a section of the code. Any thread may ask at any time; nothing waits.
class ThreadMarks {
 public:
  /// Marks the calling thread until the end of the scope. Inside a scope that has marked it already
  /// it does nothing, so the mark ends with the outermost.
  class Scope {
   public:
    explicit Scope(ThreadMarks& marks) noexcept
        : m_cell(marks.holdsThisThread() ? nullptr : marks.takeCell()) {}
    ~Scope() {
      if (m_cell != nullptr) m_cell->store({}, std::memory_order_relaxed);
    }
    Scope(const Scope&) = delete;
    Scope& operator=(const Scope&) = delete;

   private:
    std::atomic<std::thread::id>* m_cell;
  };

  bool holdsThisThread() const noexcept {
    const auto own = std::this_thread::get_id();
    return std::ranges::any_of(
        m_cells, [own](const auto& cell) { return cell.load(std::memory_order_relaxed) == own; });
  }

 private:
  /// More threads than there are cells go unmarked.
  std::atomic<std::thread::id>* takeCell() noexcept {
    for (auto& cell : m_cells) {
      std::thread::id nobody;
      if (cell.compare_exchange_strong(nobody, std::this_thread::get_id(),
                                       std::memory_order_relaxed)) {
        return &cell;
      }
    }
    return nullptr;
  }

  static_assert(std::atomic<std::thread::id>::is_always_lock_free);
  std::array<std::atomic<std::thread::id>, 4> m_cells{};
};

} // namespace qlx::presets
