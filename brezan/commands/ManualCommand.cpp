// SPDX-License-Identifier: ISC
#include "brezan/commands/Commands.h"

#include "presets/store/PersistentSettings.h"

#include <filesystem>
#include <iostream>
#include <stdexcept>

namespace qlx::tools {

namespace {

struct ManualOptions {
  std::string place;
  std::string gone;
};

/// Nothing answers when a value can't be stored but its absence afterwards.
void expect(const presets::PersistentSettings& settings, const std::string& path) {
  if (settings.manualPath() != path)
    throw std::runtime_error("the manual's place cannot be kept in this user's settings");
}

void manual(const ManualOptions& options) {
  const auto store = presets::openUserSettings();
  const presets::PersistentSettings settings(store);
  if (!options.place.empty()) {
    const std::string path = std::filesystem::absolute(options.place).string();
    if (!std::filesystem::is_regular_file(path))
      throw std::runtime_error("no manual '" + path + "'");
    store->writeText(presets::PersistentSettings::kManualPath, path);
    expect(settings, path);
  } else if (!options.gone.empty()) {
    const std::string path = std::filesystem::absolute(options.gone).string();
    if (settings.manualPath() != path) return;
    store->remove(presets::PersistentSettings::kManualPath);
    expect(settings, {});
  } else if (const std::string path = settings.userManual(); !path.empty()) {
    std::cout << path << '\n';
  }
}

} // namespace

void addManualCommand(CLI::App& program) {
  CLI::App* command = program.add_subcommand(
      "manual", "Print which file the editor's manual button opens, or choose it");
  auto options = std::make_shared<ManualOptions>();
  CLI::Option* place =
      command->add_option("--set", options->place, "From now on it opens this file");
  command
      ->add_option("--forget", options->gone,
                   "If it has opened this file, it opens the installed manual again")
      ->excludes(place);
  command->callback([options] { manual(*options); });
}

} // namespace qlx::tools
