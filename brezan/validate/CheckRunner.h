// SPDX-License-Identifier: ISC
#pragma once

#include "brezan/validate/CheckRun.h"

#include <filesystem>
#include <functional>
#include <string>

namespace qlx::validate {

struct CheckResult {
  const Check* check;
  Outcome outcome; ///< never Running
  std::string reason;
  double seconds;    ///< by the clock
  double cpuSeconds; ///< of processor time
};

/// Runs checks one after the other, each in a process of its own with an empty home folder. A
/// crash, an end or a call that does not return is the check's failure.
class CheckRunner {
 public:
  /// `display`: the X display for checks that open windows, empty for none.
  /// `quiet`: what the effect prints is thrown away.
  CheckRunner(const Settings& settings, std::string display, bool quiet);
  ~CheckRunner();
  CheckRunner(const CheckRunner&) = delete;
  CheckRunner& operator=(const CheckRunner&) = delete;

  /// `waiting` is called many times a second until the check has ended. What it throws ends the
  /// check's process, too.
  CheckResult run(const Check& check, const std::function<void()>& waiting);

 private:
  [[noreturn]] void runInChild(const Check& check, const std::filesystem::path& home,
                               Progress& progress) const;

  const Settings& m_settings;
  std::string m_display;
  bool m_quiet;
  std::filesystem::path m_folder;
};

} // namespace qlx::validate
