// SPDX-License-Identifier: ISC
#include "brezan/validate/host/VirtualScreen.h"

#include "brezan/Interrupt.h"

#include <array>
#include <cerrno>
#include <csignal>
#include <cstdlib>
#include <fcntl.h>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

namespace qlx::validate {

namespace {

/// The number that the server writes when it is ready; empty when it ends before.
std::string readNumber(int file) {
  std::string number;
  for (char c = 0;;) {
    const ssize_t got = ::read(file, &c, 1);
    if (got < 0 && errno == EINTR) {
      tools::throwIfInterrupted();
      continue;
    }
    if (got <= 0) return "";
    if (c == '\n') return number;
    number += c;
  }
}

} // namespace

VirtualScreen::VirtualScreen() {
  std::array<int, 2> ends{-1, -1};
  if (::pipe2(ends.data(), O_CLOEXEC) != 0) return;
  const std::string target = std::to_string(ends[1]);
  m_pid = ::fork();
  if (m_pid == 0) {
    ::setpgid(0, 0); // Ctrl+C is for this program, which ends the server
    ::prctl(PR_SET_PDEATHSIG, SIGTERM);
    ::fcntl(ends[1], F_SETFD, 0);
    const int nowhere = ::open("/dev/null", O_RDWR);
    for (const int stream : {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO}) ::dup2(nowhere, stream);
    ::execlp("Xvfb", "Xvfb", "-displayfd", target.c_str(), "-screen", "0", "1280x1024x24",
             "-noreset", "-nolisten", "tcp", static_cast<char*>(nullptr));
    ::_exit(127);
  }
  ::close(ends[1]);
  std::string number;
  try {
    number = readNumber(ends[0]);
  } catch (...) {
    if (m_pid > 0) ::kill(m_pid, SIGTERM);
    ::close(ends[0]);
    throw;
  }
  ::close(ends[0]);
  const char* own = std::getenv("DISPLAY");
  m_display = !number.empty() ? ":" + number : own != nullptr ? own : "";
}

VirtualScreen::~VirtualScreen() {
  if (m_pid <= 0) return;
  ::kill(m_pid, SIGTERM);
  while (::waitpid(m_pid, nullptr, 0) < 0 && errno == EINTR) continue;
}

} // namespace qlx::validate
