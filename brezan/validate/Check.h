// SPDX-License-Identifier: ISC
#pragma once

#include <span>
#include <vector>

namespace qlx::validate {

class CheckRun;

/// One thing that an effect is tried with. `run` is called in a process of its own.
struct Check {
  const char* group;
  const char* name;
  int level; ///< from which it belongs to a run, 1 to 10
  const char* about;
  void (*run)(CheckRun& run);
  bool opensWindow = false; ///< is given a display
};

// Each group, in the order of a run.
std::span<const Check> scanChecks();
std::span<const Check> textChecks();
std::span<const Check> callChecks();
std::span<const Check> parameterChecks();
std::span<const Check> programChecks();
std::span<const Check> stateChecks();
std::span<const Check> audioChecks();
std::span<const Check> midiChecks();
std::span<const Check> lifecycleChecks();
std::span<const Check> editorChecks();
std::span<const Check> threadChecks();
std::span<const Check> realTimeChecks();
std::span<const Check> hostChecks();

/// All of them.
std::vector<Check> allChecks();

} // namespace qlx::validate
