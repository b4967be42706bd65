// SPDX-License-Identifier: ISC
#include "brezan/Interrupt.h"

#include <csignal>

namespace qlx::tools {

namespace {

volatile std::sig_atomic_t interrupted = 0;

extern "C" void noteSignal(int /*number*/) { interrupted = 1; }

} // namespace

void noteInterrupts() {
  std::signal(SIGINT, noteSignal);
  std::signal(SIGTERM, noteSignal);
}

void throwIfInterrupted() {
  if (interrupted != 0) throw Interrupted();
}

} // namespace qlx::tools
