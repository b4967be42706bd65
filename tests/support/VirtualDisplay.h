// SPDX-License-Identifier: ISC
#pragma once

#include <string>
#include <sys/types.h>
#include <vector>

namespace qlx::test {

/// An X server without a screen, on a free display of its own, that lives as long as this object.
/// While it does, DISPLAY names it.
class VirtualDisplay {
 public:
  explicit VirtualDisplay(const std::vector<std::string>& extraArguments = {});
  ~VirtualDisplay();
  VirtualDisplay(const VirtualDisplay&) = delete;
  VirtualDisplay& operator=(const VirtualDisplay&) = delete;

  bool isRunning() const { return !m_name.empty(); }
  /// Ends the server at once, clients or not.
  void kill();

 private:
  pid_t m_pid = -1;
  std::string m_name;
};

} // namespace qlx::test
