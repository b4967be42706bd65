// SPDX-License-Identifier: ISC
#pragma once

#include <string>

namespace qlx::validate {

/// What has no place on an audio thread, as its time has no bound.
enum class Stall { Allocation, Lock, SystemCall };
inline constexpr int kStalls = 3;

/// Watches the calling thread from construction to `end`. One at a time in a thread.
class RealTimeWatch {
 public:
  RealTimeWatch();
  ~RealTimeWatch() { end(); }
  RealTimeWatch(const RealTimeWatch&) = delete;
  RealTimeWatch& operator=(const RealTimeWatch&) = delete;

  void end();
  /// Names the first stall of that kind that was seen ("malloc", "system call 202"); empty when
  /// there was none.
  std::string seen(Stall kind) const;
  /// Whether this program and system can see stalls of that kind.
  static bool works(Stall kind);
};

/// Within it the calling thread's RealTimeWatch sees nothing.
class WatchPause {
 public:
  WatchPause();
  ~WatchPause();
  WatchPause(const WatchPause&) = delete;
  WatchPause& operator=(const WatchPause&) = delete;

 private:
  bool m_active;
  char m_selector;
};

/// For the functions that stand in for malloc, pthread_mutex_lock and the like: `name`, which
/// lives as long as the program, was called.
void noteStall(Stall kind, const char* name) noexcept;

} // namespace qlx::validate
