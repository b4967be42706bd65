// SPDX-License-Identifier: ISC
#pragma once

#include <fcntl.h>
#include <signal.h>
#include <spawn.h>
#include <sys/types.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <string>
#include <vector>

extern char** environ;

namespace qlx::test {

/// A program that runs as long as this object does.
class ChildProcess {
 public:
  /// Searches PATH for the first of `words`. The program writes into the file `output`; its errors
  /// stay visible. With `line` it writes a line to the descriptor whose number replaces "FD" at the
  /// end of a word, and is waited for until then; an empty line when it ends before.
  explicit ChildProcess(std::vector<std::string> words, const std::string& output = "/dev/null",
                        std::string* line = nullptr) {
    std::array<int, 2> ends{-1, -1};
    if (line != nullptr && pipe(ends.data()) != 0) return;
    fcntl(ends[0], F_SETFD, FD_CLOEXEC);
    std::vector<char*> raw;
    for (std::string& word : words) {
      if (word.ends_with("FD")) word.replace(word.size() - 2, 2, std::to_string(ends[1]));
      raw.push_back(word.data());
    }
    raw.push_back(nullptr);
    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    posix_spawn_file_actions_addopen(&actions, STDOUT_FILENO, output.c_str(), O_CREAT | O_WRONLY,
                                     0600);
    if (line != nullptr)
      posix_spawn_file_actions_addopen(&actions, STDERR_FILENO, "/dev/null", O_WRONLY, 0);
    if (posix_spawnp(&m_pid, raw[0], &actions, nullptr, raw.data(), environ) != 0) m_pid = -1;
    posix_spawn_file_actions_destroy(&actions);
    if (line == nullptr) return;
    close(ends[1]);
    for (char c = 0; read(ends[0], &c, 1) == 1 && c != '\n';) *line += c;
    close(ends[0]);
  }
  ~ChildProcess() { end(); }
  ChildProcess(const ChildProcess&) = delete;
  ChildProcess& operator=(const ChildProcess&) = delete;

  void send(int signal) const {
    if (m_pid > 0) kill(m_pid, signal);
  }
  /// The exit status after a signal; -1 when it ended otherwise or did not run.
  int end(int signal = SIGTERM) {
    if (m_pid <= 0) return -1;
    send(signal);
    send(SIGCONT);
    int status = 0;
    waitpid(m_pid, &status, 0);
    m_pid = -1;
    return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
  }

 private:
  pid_t m_pid = -1;
};

} // namespace qlx::test
