// SPDX-License-Identifier: ISC
#include "brezan/commands/Commands.h"

#include "brezan/Table.h"
#include "brezan/commands/ListOutput.h"
#include "brezan/commands/PresetLoudness.h"
#include "brezan/plugin/PluginLocation.h"
#include "brezan/plugin/PresetFile.h"
#include "brezan/plugin/StartingPoint.h"
#include "brezan/sound/PendingFile.h"
#include "presets/format/PresetImage.h"

#include <algorithm>
#include <optional>
#include <stdexcept>

namespace qlx::tools {

namespace {

using Slots = std::array<presets::PresetSlot, presets::kNumPresetSlots>;

struct PresetsOptions {
  std::string plugin;
  std::string file;
  std::string from;
  std::string saveState;
  StartingPoint start;
  std::optional<int> index;
  bool json = false;
  bool loudness = false;
};

/// The presets of a plug-in, loaded and saved. What is wrong with a file goes to standard error,
/// also where the plug-in makes the best of it.
class PresetHome {
 public:
  explicit PresetHome(const std::filesystem::path& plugin) : m_host(plugin) {
    for (int i = 0; i < m_host.parameterCount(); ++i) m_names.push_back(m_host.parameter(i).name);
    if (m_host.parameterCount() != presets::kNumPresetParameters)
      throw std::runtime_error("'" + plugin.string() + "' keeps its presets in another way");
  }

  PluginHost& host() { return m_host; }
  std::uint32_t fileId() const { return static_cast<std::uint32_t>(m_host.record().uniqueId); }
  PresetFile examine(const std::string& path) const {
    return readPresetFile(path, fileId(), m_names);
  }
  const std::string& parameterName(int index) const {
    return m_names[static_cast<std::size_t>(index)];
  }

  /// Takes the file's presets over the plug-in's. A single one goes into preset `index`; of a bank
  /// that preset becomes current.
  PresetFile load(const std::string& path, std::optional<int> index) {
    return loadPresetFile(m_host, path, index);
  }

  Slots slots() {
    const std::vector<char> chunk = m_host.state();
    const presets::Bytes bytes(reinterpret_cast<const std::uint8_t*>(chunk.data()), chunk.size());
    const auto found = presets::openChunk(bytes, fileId());
    const auto* image = found ? std::get_if<presets::RecordData>(&*found) : nullptr;
    const auto bank = image == nullptr
                          ? std::nullopt
                          : presets::readBankRecords(image->header, image->records, image->reversed,
                                                     Slots{}, [](std::string_view) {});
    if (!bank) throw std::runtime_error("the plug-in's state holds no presets");
    Slots slots;
    std::ranges::transform(bank->slots, slots.begin(), [](const auto& slot) { return slot.slot; });
    return slots;
  }

  std::string display(int parameter, float value) {
    m_host.setValue(parameter, value);
    return m_host.display(parameter);
  }
  std::string unit(int parameter) { return trimmed(m_host.label(parameter)); }

 private:
  PluginHost m_host;
  std::vector<std::string> m_names;
};

/// A name from a file, without anything that a terminal would take for an order.
std::string shown(const presets::PresetSlot& slot) {
  std::string name(slot.nameText());
  std::ranges::replace_if(
      name, [](unsigned char c) { return c < 0x20 || c == 0x7F; }, '?');
  return name;
}

void writePresets(const std::string& path, presets::Bytes bytes) {
  writeFile(path, {reinterpret_cast<const char*>(bytes.data()), bytes.size()});
}

void printNames(const PresetsOptions& options, PluginHost& host) {
  const std::vector<std::string> names = host.presetNames();
  const int current = host.currentPreset();
  Json json = Json::array();
  Table table({"number", "name", ""});
  for (int i = 0; i < static_cast<int>(names.size()); ++i) {
    const std::string& name = names[static_cast<std::size_t>(i)];
    json.push_back({{"number", i}, {"name", name}, {"current", i == current}});
    table.add({std::to_string(i), name, i == current ? "current" : ""});
  }
  if (options.json)
    print(json);
  else
    table.print(std::cout);
}

/// Names and values of the presets in `numbers`, a line a value.
void printValues(const PresetsOptions& options, PresetHome& home, const Slots& slots,
                 const std::vector<int>& numbers) {
  Json json = Json::array();
  Table table({"preset", "name", "index", "parameter", "value", "display", "unit"});
  for (const int number : numbers) {
    const presets::PresetSlot& slot = slots[static_cast<std::size_t>(number)];
    Json values = Json::array();
    for (int p = 0; p < presets::kNumPresetParameters; ++p) {
      const float value = slot.values[static_cast<std::size_t>(p)];
      const std::string display = home.display(p, value);
      const std::string& name = home.parameterName(p);
      values.push_back({{"index", p},
                        {"name", name},
                        {"value", value},
                        {"display", display},
                        {"unit", home.unit(p)}});
      table.add({std::to_string(number), shown(slot), std::to_string(p), name.empty() ? "-" : name,
                 fixed(static_cast<double>(value), 4), display, home.unit(p)});
    }
    json.push_back({{"number", number}, {"name", slot.nameText()}, {"values", values}});
  }
  if (options.json)
    print(json);
  else
    table.print(std::cout);
}

void list(const PresetsOptions& options) {
  const std::filesystem::path plugin = locatePlugin(options.plugin);
  if (options.from.empty()) {
    if (options.index) throw std::runtime_error("--index chooses a preset of the file --from");
    PluginHost host(plugin);
    return printNames(options, host);
  }
  PresetHome home(plugin);
  const PresetFile file = home.load(options.from, std::nullopt);
  std::vector<int> numbers;
  for (const auto& [number, update] : file.presets)
    if (!options.index || *options.index == number) numbers.push_back(number);
  if (numbers.empty()) throw std::runtime_error("'" + options.from + "' has no such preset");
  printValues(options, home, home.slots(), numbers);
}

void show(const PresetsOptions& options) {
  PresetHome home(locatePlugin(options.plugin));
  const PresetFile file = home.examine(options.file);
  const bool single = file.scope == presets::Scope::Preset;
  std::cout << options.file << ": " << file.layout << (file.isState ? " in a saved state" : "")
            << ", " << file.bytes << " bytes"
            << (file.reversed ? ", in the byte order of other machines" : "");
  if (!single && !file.presets.empty()) std::cout << ", current preset " << file.current;
  std::cout << '\n';
  Table table({"preset", "name", "values"});
  for (const auto& [number, update] : file.presets)
    table.add({std::to_string(number), update.named ? shown(update.slot) : "(not named)",
               std::to_string(update.changed.count())});
  Table values({"index", "parameter", "value", "display", "unit"});
  if (single && file.usable) {
    const presets::SlotUpdate& update = file.presets.at(0);
    for (int p = 0; p < presets::kNumPresetParameters; ++p) {
      const auto i = static_cast<std::size_t>(p);
      if (!update.changed[i]) continue;
      const float value = update.slot.values[i];
      const std::string& name = home.parameterName(p);
      values.add({std::to_string(p), name.empty() ? "-" : name,
                  fixed(static_cast<double>(value), 4), home.display(p, value), home.unit(p)});
    }
  }
  if (!file.presets.empty()) table.print(std::cout);
  if (single && file.usable) values.print(std::cout);
  for (const std::string& fault : file.faults) std::cout << "fault: " << fault << '\n';
  if (!file.faults.empty())
    throw std::runtime_error("'" + options.file + "' is damaged" +
                             (file.usable ? "" : ", and the plug-in does not load it"));
}

void load(const PresetsOptions& options) {
  PresetHome home(locatePlugin(options.plugin));
  ParameterText parameters(home.host().file());
  options.start.apply(home.host(), parameters);
  home.load(options.file, options.index);
  if (!options.saveState.empty()) {
    writeFile(options.saveState, home.host().state());
  }
  printNames(options, home.host());
}

void save(const PresetsOptions& options) {
  const std::string extension = std::filesystem::path(options.file).extension().string();
  if (extension != ".qlx" && extension != ".qlb")
    throw std::runtime_error("'" + options.file +
                             "' must end in .qlx for one preset or .qlb for all");
  PresetHome home(locatePlugin(options.plugin));
  PluginHost& host = home.host();
  if (!options.from.empty()) home.load(options.from, std::nullopt);
  if (options.index) host.selectPreset(*options.index);
  ParameterText parameters(host.file());
  options.start.apply(host, parameters);

  presets::ParameterSet all;
  all.set();
  const Slots slots = home.slots();
  const int current = host.currentPreset();
  const presets::PresetSlot& slot = slots[static_cast<std::size_t>(current)];
  const auto quiet = [](std::string_view) {}; // the plug-in's own values are in order
  if (extension == ".qlx")
    writePresets(options.file, presets::makePresetImage(slot, home.fileId(), all));
  else
    writePresets(options.file, presets::makeBankImage(slots, current, home.fileId(), all, quiet));
  std::cout << options.file << ": "
            << (extension == ".qlx" ? "preset '" + shown(slot) + "'"
                                    : std::to_string(slots.size()) + " presets")
            << '\n';
}

constexpr const char* kFooter =
    R"(FILE is a preset (.qlx), a bank (.qlb) or a state of 'render --save-state', of this machine or
one of the other byte order, also in the older layouts.

Examples:
  brezan presets
  brezan presets --from church.qlb --index 5
  brezan presets save lead.qlx --from church.qlb --index 5 --set Drive=3dB
  brezan presets load church.qlb --save-state church.state
  brezan presets show doubtful.qlb)";

void addIndex(CLI::App& command, PresetsOptions& options, const char* what) {
  command.add_option("--index", options.index, what)
      ->check(CLI::Range(0, presets::kNumPresetSlots - 1));
}

} // namespace

void addPresetsCommand(CLI::App& program) {
  CLI::App* command = program.add_subcommand("presets", "List, look into, load and save presets");
  command->require_subcommand(0, 1);
  command->footer(kFooter);
  const auto add = [](CLI::App& to) {
    auto options = std::make_shared<PresetsOptions>();
    addPluginOption(to, options->plugin);
    return options;
  };
  const auto listing = add(*command);
  command->add_flag("--json", listing->json, "Print JSON instead of a table");
  command->add_option("--from", listing->from, "List names and values of a file's presets");
  addIndex(*command, *listing, "Only this preset of the file, by number from 0");
  command
      ->add_flag("--loudness", listing->loudness,
                 "Measure the loudness of each of the plug-in's presets on the organ phrase")
      ->excludes("--from", "--index");
  command->callback([command, listing] {
    if (!command->get_subcommands().empty()) return;
    if (listing->loudness)
      printPresetLoudness(locatePlugin(listing->plugin), listing->json);
    else
      list(*listing);
  });

  CLI::App* showing =
      command->add_subcommand("show", "Say what a file holds and what is wrong with it");
  const auto shownFile = add(*showing);
  showing->add_option("FILE", shownFile->file, "Preset, bank or state file")->required();
  showing->callback([shownFile] { show(*shownFile); });

  CLI::App* loading = command->add_subcommand(
      "load", "Try a file in a new instance and list its presets then; only --save-state keeps "
              "them, for 'render --state'");
  const auto loaded = add(*loading);
  loading->add_option("FILE", loaded->file, "Preset, bank or state file")->required();
  addIndex(*loading, *loaded, "Where a single preset goes (0); of a bank, the one to make current");
  loaded->start.addOptions(*loading);
  loading->add_option("--save-state", loaded->saveState, "Save the plug-in's state afterwards");
  loading->add_flag("--json", loaded->json, "Print JSON instead of a table");
  loading->callback([loaded] { load(*loaded); });

  CLI::App* saving = command->add_subcommand("save", "Save one preset (.qlx) or all (.qlb)");
  const auto saved = add(*saving);
  saving->add_option("FILE", saved->file, "File to write; its ending says what")->required();
  saving->add_option("--from", saved->from, "Take the presets of this file first");
  addIndex(*saving, *saved, "The preset to save, and to make current");
  saved->start.addOptions(*saving);
  saving->callback([saved] { save(*saved); });
  for (CLI::App* one : {showing, loading, saving}) one->footer(kFooter);
}

} // namespace qlx::tools
