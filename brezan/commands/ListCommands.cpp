// SPDX-License-Identifier: ISC
#include "brezan/commands/Commands.h"

#include "brezan/Table.h"
#include "brezan/commands/ListOutput.h"
#include "brezan/plugin/PluginHost.h"
#include "brezan/plugin/PluginLocation.h"

namespace qlx::tools {

namespace {

struct ListOptions {
  std::string plugin;
  bool json = false;
};

std::shared_ptr<ListOptions> listOptions(CLI::App& command) {
  auto options = std::make_shared<ListOptions>();
  addPluginOption(command, options->plugin);
  command.add_flag("--json", options->json, "Print JSON instead of a table");
  return options;
}

/// What the plug-in shows with the parameter at `value`; the parameter stays where it is.
std::string shownAt(PluginHost& host, int index, float value) {
  const float before = host.value(index);
  host.setValue(index, value);
  std::string text = trimmed(host.display(index) + ' ' + host.label(index));
  host.setValue(index, before);
  return text;
}

void listParameters(const ListOptions& options) {
  PluginHost host(locatePlugin(options.plugin));
  Json json = Json::array();
  Table table({"index", "name", "value", "display", "unit", "lowest", "highest", "step"});
  for (int i = 0; i < host.parameterCount(); ++i) {
    const ParameterInfo info = host.parameter(i);
    const std::string display = host.display(i);
    const std::string unit = trimmed(host.label(i));
    const std::string lowest = shownAt(host, i, 0.0F);
    const std::string highest = shownAt(host, i, 1.0F);
    json.push_back({{"index", i},
                    {"name", info.name},
                    {"value", host.value(i)},
                    {"display", display},
                    {"unit", unit},
                    {"lowest", lowest},
                    {"highest", highest},
                    {"switch", info.isSwitch},
                    {"step", info.step}});
    const auto value = static_cast<double>(host.value(i));
    const std::string step = info.isSwitch ? "switch" : fixed(static_cast<double>(info.step), 4);
    table.add({std::to_string(i), info.name.empty() ? "-" : info.name, fixed(value, 4), display,
               unit, lowest, highest, step});
  }
  if (options.json)
    print(json);
  else
    table.print(std::cout);
}

void showInfo(const ListOptions& options) {
  PluginHost host(locatePlugin(options.plugin));
  const sdk::EffectRecord& record = host.record();
  std::string id(4, ' ');
  for (std::size_t i = 0; i < 4; ++i)
    id[i] = static_cast<char>(record.uniqueId >> (24 - 8 * static_cast<int>(i)) & 0xFF);
  const auto has = [&record](int flag) { return (record.flags & flag) != 0; };
  Json json = {{"file", host.file().string()},
               {"name", host.effectName()},
               {"product", host.product()},
               {"vendor", host.vendor()},
               {"id", id},
               {"version", record.version},
               {"vendorVersion", host.vendorVersion()},
               {"vstVersion", host.vstVersion()},
               {"inputs", record.numInputs},
               {"outputs", record.numOutputs},
               {"parameters", record.numParams},
               {"programs", record.numPrograms},
               {"presets", host.presetNames().size()},
               {"latencySamples", record.initialDelay},
               {"editor", has(sdk::kHasEditor)},
               {"doublePrecision", has(sdk::kCanDoubleReplacing)},
               {"stateChunk", has(sdk::kProgramChunks)},
               {"stateBytes", host.state().size()},
               {"receivesMidi", host.canDo("receiveVstMidiEvent")}};
  if (options.json) {
    print(json);
    return;
  }
  Table table({"", ""});
  for (const auto& [key, value] : json.items()) {
    if (value.is_boolean())
      table.add({key, value.get<bool>() ? "yes" : "no"});
    else
      table.add({key, value.is_string() ? value.get<std::string>() : value.dump()});
  }
  table.print(std::cout);
}

} // namespace

void addParamsCommand(CLI::App& program) {
  CLI::App* command = program.add_subcommand("params", "List the parameters and their values");
  command->callback([options = listOptions(*command)] { listParameters(*options); });
}

void addInfoCommand(CLI::App& program) {
  CLI::App* command = program.add_subcommand("info", "Say what the plug-in tells about itself");
  command->callback([options = listOptions(*command)] { showInfo(*options); });
}

} // namespace qlx::tools
