// SPDX-License-Identifier: ISC
#pragma once

#include <atomic>
#include <exception>
#include <functional>
#include <thread>
#include <utility>

namespace qlx::validate {

/// A thread of a check. What it throws, `join` throws.
class Worker {
 public:
  explicit Worker(std::function<void()> work)
      : m_thread([this, work = std::move(work)] {
          try {
            work();
          } catch (...) {
            m_error = std::current_exception();
          }
          m_done = true;
        }) {}
  ~Worker() {
    if (m_thread.joinable()) m_thread.join();
  }
  Worker(const Worker&) = delete;
  Worker& operator=(const Worker&) = delete;

  bool done() const { return m_done; }
  void join() {
    m_thread.join();
    if (m_error) std::rethrow_exception(m_error);
  }

 private:
  std::exception_ptr m_error;
  std::atomic<bool> m_done{false};
  std::thread m_thread; // last: uses the others
};

} // namespace qlx::validate
