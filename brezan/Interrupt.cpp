// SPDX-License-Identifier: ISC
#include "brezan/Interrupt.h"

#include "brezan/System.h"

#include <csignal>

namespace qlx::tools {

namespace {

volatile std::sig_atomic_t interrupted = 0; // the signal's number

extern "C" void noteSignal(int number) { interrupted = number; }

} // namespace

void noteInterrupts() { watchForInterrupts(noteSignal); }

void throwIfInterrupted() {
  if (interrupted != 0) throw Interrupted(interrupted);
}

bool takeInterrupt() {
  const bool noted = interrupted != 0;
  interrupted = 0;
  return noted;
}

} // namespace qlx::tools
