// SPDX-License-Identifier: ISC
#pragma once

#include "tests/support/CommandRun.h"

#include <chrono>
#include <csignal>
#include <cstdlib>
#include <fcntl.h>
#include <filesystem>
#include <optional>
#include <spawn.h>
#include <string>
#include <thread>
#include <unistd.h>
#include <vector>

namespace qlx::test {

/// A child process that is ended with this object, by `last`.
class Process {
 public:
  Process(std::vector<std::string> words, const std::filesystem::path& output, int last = SIGKILL)
      : m_last(last) {
    std::vector<char*> raw;
    raw.reserve(words.size() + 1);
    for (std::string& word : words) raw.push_back(word.data());
    raw.push_back(nullptr);
    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    for (const int stream : {STDOUT_FILENO, STDERR_FILENO})
      posix_spawn_file_actions_addopen(&actions, stream, output.c_str(),
                                       O_WRONLY | O_CREAT | O_APPEND, 0600);
    if (posix_spawnp(&m_pid, raw[0], &actions, nullptr, raw.data(), environ) != 0) m_pid = -1;
    posix_spawn_file_actions_destroy(&actions);
  }
  ~Process() { end(m_last); }
  Process(const Process&) = delete;
  Process& operator=(const Process&) = delete;

  int end(int signal) {
    if (m_pid <= 0) return -1;
    ::kill(m_pid, signal);
    int status = 0;
    waitpid(m_pid, &status, 0);
    m_pid = -1;
    return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
  }

 private:
  pid_t m_pid = -1;
  int m_last;
};

/// Whether `holds` becomes true within half a minute.
template <typename Holds>
bool comes(Holds holds) {
  for (int i = 0; i < 600; ++i) {
    if (holds()) return true;
    std::this_thread::sleep_for(std::chrono::milliseconds(50));
  }
  return false;
}

/// A JACK server without a sound card for this test and its children, in a folder of settings of
/// their own.
class JackServer {
 public:
  JackServer() {
    ::setenv("JACK_DEFAULT_SERVER", m_name.c_str(), 1);
    ::setenv("JACK_NO_AUDIO_RESERVATION", "1", 1);
    ::setenv("XDG_CONFIG_HOME", folder.path().c_str(), 1);
  }
  static bool isInstalled() { return run("command -v jackd").status == 0; }
  /// JACK has a list of servers for the whole machine.
  bool listIsFull() const { return words().find("Too many servers") != std::string::npos; }

  void start(int rate, int block) {
    // Synchronous and patient: each client gets each block, however busy the machine is. Ended so
    // that it takes itself off JACK's list of servers, which has room for eight.
    m_process.emplace(std::vector<std::string>{"jackd", "-r", "-S", "-t", "20000", "-n", m_name,
                                               "-d", "dummy", "-r", std::to_string(rate), "-p",
                                               std::to_string(block)},
                      folder / "jackd", SIGTERM);
  }
  void kill() { m_process->end(SIGKILL); }
  std::string words() const { return contents(folder / "jackd"); }

  const TemporaryFolder folder;

 private:
  std::string m_name = "qlx" + std::to_string(::getpid());
  std::optional<Process> m_process;
};

} // namespace qlx::test
