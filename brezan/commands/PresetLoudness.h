// SPDX-License-Identifier: ISC
#pragma once

#include <filesystem>

namespace qlx::tools {

/// Plays the organ phrase, with its lever moves, through each of the plug-in's presets and prints
/// their integrated loudness (ITU-R BS.1770) beside that of the dry organ, as a table or as JSON.
/// Throws std::runtime_error.
void printPresetLoudness(const std::filesystem::path& plugin, bool json);

} // namespace qlx::tools
