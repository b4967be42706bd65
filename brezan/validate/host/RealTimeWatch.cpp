// SPDX-License-Identifier: ISC
#include "brezan/validate/host/RealTimeWatch.h"

#include <array>
#include <csignal>
#include <cstdlib>
#include <mutex>
#include <sys/prctl.h>
#include <ucontext.h>
#include <unistd.h>

// Since Linux 5.11; by number where the headers are older.
#ifndef PR_SET_SYSCALL_USER_DISPATCH
#define PR_SET_SYSCALL_USER_DISPATCH 59
#endif

namespace qlx::validate {

namespace {

constexpr int kDispatchOff = 0;
constexpr int kDispatchOn = 1;
constexpr char kAllow = 0;
constexpr char kBlock = 1;

// Plain data, so that a function that stands in for malloc may use it at any time.
thread_local bool watching = false;
thread_local std::array<const char*, kStalls> firstStall{};
thread_local int firstSystemCall = -1;
// The kernel looks at it at every system call of the thread: kBlock makes it a SIGSYS.
thread_local volatile char selector = kAllow;

#ifdef __x86_64__
constexpr int kInstructionBytes = 2; // of "syscall"

/// Notes the call and has it done all the same.
void onSystemCall(int, siginfo_t* info, void* context) {
  selector = kAllow;
  if (firstSystemCall < 0) firstSystemCall = info->si_syscall;
  static_cast<ucontext_t*>(context)->uc_mcontext.gregs[REG_RIP] -= kInstructionBytes;
}

bool dispatchSystemCalls(int mode) {
  return ::prctl(PR_SET_SYSCALL_USER_DISPATCH, mode, 0, 0,
                 mode == kDispatchOn ? &selector : nullptr) == 0;
}

void installHandler() {
  struct sigaction action {};
  action.sa_sigaction = onSystemCall;
  action.sa_flags = SA_SIGINFO;
  ::sigaction(SIGSYS, &action, nullptr);
}
#else
bool dispatchSystemCalls(int) { return false; }
void installHandler() {}
#endif

} // namespace

RealTimeWatch::RealTimeWatch() {
  static std::once_flag once;
  std::call_once(once, installHandler);
  firstStall.fill(nullptr);
  firstSystemCall = -1;
  selector = kAllow;
  const bool dispatched = dispatchSystemCalls(kDispatchOn);
  watching = true;
  if (dispatched) selector = kBlock;
}

void RealTimeWatch::end() {
  selector = kAllow;
  if (watching) dispatchSystemCalls(kDispatchOff);
  watching = false;
}

std::string RealTimeWatch::seen(Stall kind) const {
  if (kind == Stall::SystemCall)
    return firstSystemCall < 0 ? "" : "system call " + std::to_string(firstSystemCall);
  const char* name = firstStall[static_cast<std::size_t>(kind)];
  return name == nullptr ? "" : name;
}

bool RealTimeWatch::works(Stall kind) {
  RealTimeWatch watch;
  // Through pointers that the compiler cannot see through, so that it does not leave them out.
  void* (*volatile allocate)(std::size_t) = std::malloc;
  std::free(allocate(1));
  std::mutex mutex;
  mutex.lock();
  mutex.unlock();
  pid_t (*volatile ask)() = ::getppid;
  ask();
  watch.end();
  // A program with a sanitizer, which stands in for malloc itself, sees that one's system calls.
  return !watch.seen(Stall::Allocation).empty() && !watch.seen(kind).empty();
}

WatchPause::WatchPause() : m_active(watching), m_selector(selector) {
  watching = false;
  selector = kAllow;
}

WatchPause::~WatchPause() {
  watching = m_active;
  selector = m_selector;
}

void noteStall(Stall kind, const char* name) noexcept {
  const auto at = static_cast<std::size_t>(kind);
  if (watching && firstStall[at] == nullptr) firstStall[at] = name;
}

} // namespace qlx::validate
