// SPDX-License-Identifier: ISC
#pragma once

#include <exception>

namespace qlx::tools {

/// Thrown when the user or the system stops the program (Ctrl-C, a closed terminal, a shutdown), so
/// that what is half done is taken back.
class Interrupted : public std::exception {
 public:
  explicit Interrupted(int signal) : m_signal(signal) {}
  const char* what() const noexcept override { return "interrupted"; }
  int status() const { return 128 + m_signal; } ///< what shells report for a program so ended

 private:
  int m_signal;
};

/// From now on, signals to stop are noted for `throwIfInterrupted`, and system calls that wait end
/// with EINTR. Signals that the caller had ignored (nohup) stay so. A reader that has gone and a
/// limit of the file's size become errors of writing instead of signals.
void noteInterrupts();
void throwIfInterrupted();
/// Forgets the noted signal and answers whether there was one, for a command whose end is work of
/// its own.
bool takeInterrupt();

} // namespace qlx::tools
