// SPDX-License-Identifier: ISC
#pragma once

#include "tests/support/ChildProcess.h"

#include <cstdlib>
#include <optional>

namespace qlx::test {

/// An X server without a screen, on a free display of its own, that lives as long as this object.
/// While it does, DISPLAY names it.
class VirtualDisplay {
 public:
  explicit VirtualDisplay(const std::vector<std::string>& extraArguments = {}) {
    std::vector<std::string> words{"Xvfb",       "-displayfd", "FD",        "-screen", "0",
                                   "640x480x24", "-noreset",   "-nolisten", "tcp"};
    words.insert(words.end(), extraArguments.begin(), extraArguments.end());
    m_server.emplace(words, "/dev/null", &m_number);
    if (isRunning()) setenv("DISPLAY", (":" + m_number).c_str(), 1);
  }
  ~VirtualDisplay() {
    kill();
    unsetenv("DISPLAY");
  }

  bool isRunning() const { return !m_number.empty(); }
  /// Ends the server at once, clients or not.
  void kill() {
    m_server->end(SIGKILL);
    // A server that is killed leaves these behind.
    if (!isRunning()) return;
    unlink(("/tmp/.X11-unix/X" + m_number).c_str());
    unlink(("/tmp/.X" + m_number + "-lock").c_str());
  }

 private:
  std::optional<ChildProcess> m_server;
  std::string m_number;
};

} // namespace qlx::test
