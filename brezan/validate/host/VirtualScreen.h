// SPDX-License-Identifier: ISC
#pragma once

#include <string>
#include <sys/types.h>

namespace qlx::validate {

/// An X server without a screen (Xvfb), for windows that nobody needs to see, for as long as this
/// object lives.
class VirtualScreen {
 public:
  VirtualScreen();
  ~VirtualScreen();
  VirtualScreen(const VirtualScreen&) = delete;
  VirtualScreen& operator=(const VirtualScreen&) = delete;

  /// What to put into DISPLAY: this server's name, or where no Xvfb is installed the user's own
  /// display; empty when there is none either.
  const std::string& display() const { return m_display; }

 private:
  pid_t m_pid = -1;
  std::string m_display;
};

} // namespace qlx::validate
