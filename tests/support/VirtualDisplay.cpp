// SPDX-License-Identifier: ISC
#include "tests/support/VirtualDisplay.h"

#include <fcntl.h>
#include <signal.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <cstdlib>

extern char** environ;

namespace qlx::test {

VirtualDisplay::VirtualDisplay(const std::vector<std::string>& extraArguments) {
  std::array<int, 2> ends{};
  if (pipe(ends.data()) != 0) return;
  fcntl(ends[0], F_SETFD, FD_CLOEXEC);
  std::vector<std::string> arguments{"Xvfb",     "-displayfd", std::to_string(ends[1]),
                                     "-screen",  "0",          "640x480x24",
                                     "-noreset", "-nolisten",  "tcp"};
  arguments.insert(arguments.end(), extraArguments.begin(), extraArguments.end());
  std::vector<char*> raw;
  for (std::string& argument : arguments) raw.push_back(argument.data());
  raw.push_back(nullptr);
  posix_spawn_file_actions_t actions;
  posix_spawn_file_actions_init(&actions);
  posix_spawn_file_actions_addopen(&actions, STDERR_FILENO, "/dev/null", O_WRONLY, 0);
  if (posix_spawnp(&m_pid, "Xvfb", &actions, nullptr, raw.data(), environ) != 0) m_pid = -1;
  posix_spawn_file_actions_destroy(&actions);
  close(ends[1]);
  std::string number;
  char c = 0;
  while (read(ends[0], &c, 1) == 1 && c != '\n') number += c;
  close(ends[0]);
  if (m_pid < 0 || number.empty()) return;
  m_name = ":" + number;
  setenv("DISPLAY", m_name.c_str(), 1);
}

VirtualDisplay::~VirtualDisplay() {
  kill();
  unsetenv("DISPLAY");
}

void VirtualDisplay::kill() {
  if (m_pid <= 0) return;
  ::kill(m_pid, SIGKILL);
  waitpid(m_pid, nullptr, 0);
  // A server that is killed leaves these behind.
  if (!m_name.empty()) {
    unlink(("/tmp/.X11-unix/X" + m_name.substr(1)).c_str());
    unlink(("/tmp/.X" + m_name.substr(1) + "-lock").c_str());
  }
  m_pid = -1;
}

} // namespace qlx::test
