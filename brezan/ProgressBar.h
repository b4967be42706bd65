// SPDX-License-Identifier: ISC
#pragma once

#include <chrono>

namespace qlx::tools {

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
