// SPDX-License-Identifier: ISC
#include "brezan/plugin/StartingPoint.h"

#include "brezan/Words.h"
#include "brezan/plugin/PresetFile.h"
#include "brezan/sound/InputFile.h"

#include <cmath>
#include <iterator>
#include <stdexcept>

namespace qlx::tools {

namespace {

int presetNumber(PluginHost& host, const std::string& wanted) {
  const std::vector<std::string> names = host.presetNames();
  for (std::size_t i = 0; i < names.size(); ++i)
    if (folded(names[i]) == folded(wanted)) return static_cast<int>(i);
  const auto number = asNumber(wanted);
  if (number && *number >= 0.0 && *number < static_cast<double>(names.size()) &&
      *number == std::floor(*number))
    return static_cast<int>(*number);
  throw std::runtime_error("no preset '" + wanted + "'; 'brezan presets' lists them");
}

} // namespace

void StartingPoint::addOptions(CLI::App& command) {
  command.add_option("--preset", preset, "Preset, by number from 0, by name, or a file (.qlx)");
  command
      .add_option("--set", settings,
                  "NAME=VALUE as the plug-in displays it, may be given again and again")
      ->allow_extra_args(false);
  command.add_option("--bank", bank, "Bank file (.qlb) whose presets --preset chooses from");
  command.add_option("--state", state, "Start from a state saved with 'render --save-state'");
}

std::vector<ParameterValue> StartingPoint::apply(PluginHost& host,
                                                 ParameterText& parameters) const {
  if (!state.empty()) {
    std::ifstream in = openToRead(state);
    host.setState({std::istreambuf_iterator<char>(in), {}});
  }
  if (!bank.empty() && loadPresetFile(host, bank, std::nullopt).scope != presets::Scope::Bank)
    throw std::runtime_error("'" + bank + "' is a single preset; give it with --preset");
  if (folded(std::filesystem::path(preset).extension().string()) == ".qlx") {
    if (loadPresetFile(host, preset, host.currentPreset()).scope != presets::Scope::Preset)
      throw std::runtime_error("'" + preset + "' is a bank; give it with --bank");
  } else if (!preset.empty())
    host.selectPreset(presetNumber(host, preset));
  std::vector<ParameterValue> given;
  for (const std::string& setting : settings) {
    given.push_back(parameters.assignment(setting));
    host.setValue(given.back().index, given.back().value);
  }
  return given;
}

} // namespace qlx::tools
