// SPDX-License-Identifier: ISC
#pragma once

#include "brezan/plugin/PluginHost.h"
#include "presets/format/PresetData.h"
#include "presets/format/SlotUpdate.h"

#include <map>
#include <optional>
#include <string>
#include <vector>

namespace qlx::tools {

/// A preset file, a bank file or a saved state, as the plug-in would take it, and what is wrong
/// with it.
struct PresetFile {
  std::string layout; ///< in words
  presets::Scope scope = presets::Scope::Bank;
  bool isState = false;
  bool reversed = false; ///< in the byte order of other machines
  std::size_t bytes = 0;
  int current = 0; ///< the bank's current preset
  /// What it says about each preset that it mentions; the only one of a preset file is 0.
  std::map<int, presets::SlotUpdate> presets;
  /// A line for everything that is not as it should be.
  std::vector<std::string> faults;
  /// False where the plug-in would refuse it.
  bool usable = true;
};

/// Reads and judges a file. `parameterNames` are for the faults. Throws std::runtime_error when it
/// can't be read or is nothing of this plug-in's.
PresetFile readPresetFile(const std::string& path, std::uint32_t fileId,
                          const std::vector<std::string>& parameterNames);

/// A state chunk with what the file says and nothing else, for the plug-in to take.
/// @param first the preset that a preset file is for; a bank's presets keep their numbers
/// @param current the preset that is current afterwards
std::vector<char> stateChunk(const PresetFile& file, std::uint32_t fileId, int first, int current);

/// Takes the presets of a usable file over the plug-in's; its faults go to standard error as
/// warnings. A single one goes into preset `index`; of a bank that preset becomes current. Throws
/// std::runtime_error.
PresetFile loadPresetFile(PluginHost& host, const std::string& path, std::optional<int> index);

} // namespace qlx::tools
