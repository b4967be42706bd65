// SPDX-License-Identifier: ISC
#pragma once

#include "brezan/plugin/ParameterText.h"
#include "brezan/plugin/PluginHost.h"

#include <CLI/CLI.hpp>

#include <string>
#include <vector>

namespace qlx::tools {

/// How the plug-in stands before anything happens: a state, a bank over it, a preset over that,
/// parameters over that.
struct StartingPoint {
  std::string state;
  std::string bank;
  std::string preset; ///< number, name or file
  std::vector<std::string> settings;

  /// The options --state, --bank, --preset and --set, alike in every command that has them.
  void addOptions(CLI::App& command);

  /// Answers what --set gave, in its order. Throws std::runtime_error.
  std::vector<ParameterValue> apply(PluginHost& host, ParameterText& parameters) const;
};

} // namespace qlx::tools
