// SPDX-License-Identifier: ISC
// Where programs come as an archive, without a package manager or script that installs them.
#include "brezan/commands/Commands.h"

#include "brezan/System.h"
#include "presets/store/PersistentSettings.h"

#include <filesystem>
#include <iostream>
#include <stdexcept>

namespace qlx::tools {

namespace {

namespace fs = std::filesystem;

constexpr const char* kManual = "doc/qlx-brezan/manual.pdf";

/// The unpacked archive: the folder of this program.
fs::path unpacked() { return executablePath().parent_path(); }

fs::path manualBesideProgram() { return (unpacked() / kManual).make_preferred(); }

std::string manualPath(const std::shared_ptr<platform::SettingsStore>& store) {
  return presets::PersistentSettings(store).manualPath();
}

void install(const std::string& folder) {
  const fs::path manual = manualBesideProgram();
  if (!fs::is_regular_file(manual))
    throw std::runtime_error("no manual '" + manual.string() + "': unpack the whole archive");
  if (!folder.empty()) {
    fs::create_directories(folder);
    const fs::path plugin = fs::path(folder) / pluginFileName();
    fs::copy_file(unpacked() / pluginFileName(), plugin, fs::copy_options::overwrite_existing);
    std::cout << "Plug-in: " << plugin.string() << '\n';
  }
  const auto store = presets::openUserSettings();
  store->writeText(presets::PersistentSettings::kManualPath, manual.string());
  if (manualPath(store) != manual.string())
    throw std::runtime_error("the manual's place cannot be kept in this user's settings");
  std::cout << "Manual: " << manual.string() << '\n';
}

void uninstall(const std::string& folder) {
  if (!folder.empty()) {
    const fs::path plugin = fs::path(folder) / pluginFileName();
    if (fs::remove(plugin)) std::cout << "Removed: " << plugin.string() << '\n';
  }
  const auto store = presets::openUserSettings();
  const std::string manual = manualBesideProgram().string();
  if (manualPath(store) != manual) return; // somebody else's
  store->remove(presets::PersistentSettings::kManualPath);
  std::cout << "Forgotten: " << manual << '\n';
}

} // namespace

void addInstallCommands(CLI::App& program) {
  const auto add = [&program](const char* name, const char* help, const char* folderHelp,
                              void (*run)(const std::string&)) {
    CLI::App* command = program.add_subcommand(name, help);
    auto folder = std::make_shared<std::string>();
    command->add_option("FOLDER", *folder, folderHelp);
    command->callback([folder, run] { run(*folder); });
  };
  add("install", "Let the editor's manual button open the manual beside this program",
      "Also put the plug-in into this folder, where your host looks for plug-ins", install);
  add("uninstall", "Take back what 'install' did; settings and presets stay",
      "Also remove the plug-in from this folder", uninstall);
}

} // namespace qlx::tools
