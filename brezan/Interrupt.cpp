// SPDX-License-Identifier: ISC
#include "brezan/Interrupt.h"

#include <array>
#include <csignal>

namespace qlx::tools {

namespace {

volatile std::sig_atomic_t interrupted = 0; // the signal's number

extern "C" void noteSignal(int number) { interrupted = number; }

} // namespace

void noteInterrupts() {
  for (const int number : std::array{SIGINT, SIGTERM, SIGHUP}) {
    struct sigaction before {};
    if (sigaction(number, nullptr, &before) != 0 || before.sa_handler == SIG_IGN) continue;
    struct sigaction action {};
    action.sa_handler = noteSignal;
    sigaction(number, &action, nullptr);
  }
  for (const int number : std::array{SIGPIPE, SIGXFSZ}) std::signal(number, SIG_IGN);
}

void throwIfInterrupted() {
  if (interrupted != 0) throw Interrupted(interrupted);
}

bool takeInterrupt() {
  const bool noted = interrupted != 0;
  interrupted = 0;
  return noted;
}

} // namespace qlx::tools
