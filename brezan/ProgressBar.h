// SPDX-License-Identifier: ISC
#pragma once

#include <chrono>
#include <string>

namespace qlx::tools {

/// One line for a terminal of so many columns: the bar as wide as there is room, at most 40, the
/// part in percent and the time left.
std::string progressLine(double part, double secondsLeft, int columns);

/// A bar on standard error, redrawn in place; silent when that is no terminal. Its end wipes it.
class ProgressBar {
 public:
  ProgressBar();
  ~ProgressBar();
  ProgressBar(const ProgressBar&) = delete;
  ProgressBar& operator=(const ProgressBar&) = delete;

  void show(double part); ///< 0..1

 private:
  bool m_visible;
  std::chrono::steady_clock::time_point m_begin;
  std::chrono::steady_clock::time_point m_drawn;
};

} // namespace qlx::tools
