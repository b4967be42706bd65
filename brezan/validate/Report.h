// SPDX-License-Identifier: ISC
#pragma once

#include "brezan/validate/CheckRunner.h"

#include <string>
#include <vector>

namespace qlx::validate {

/// A check's result as a line: "FAIL  audio      rates           0.42 s  reason".
std::string resultLine(const CheckResult& result);

/// Numbers of a run.
struct Totals {
  int passed = 0;
  int failed = 0;
  int skipped = 0;
  double cpuSeconds = 0.0;
};
Totals totals(const std::vector<CheckResult>& results);

/// The whole run as a JSON document, with a line's end.
std::string jsonReport(const Settings& settings, const std::vector<CheckResult>& results);

} // namespace qlx::validate
