// SPDX-License-Identifier: ISC
#pragma once

#include "platform/SettingsStore.h"
#include "presets/format/PresetBytes.h"

#include <memory>
#include <string>

namespace qlx::presets {

/// Where the last preset and bank file were.
struct FileLocations {
  std::string presetDirectory; ///< shared by both, with its trailing separator; empty: wherever the
                               ///< dialog starts
  std::string presetFileName;
  std::string bankFileName;
};

/// The images that outlive the host's project.
enum class StoredImage { DefaultBank, DefaultPreset, MemoA, MemoB };

/// What this program keeps per user: default bank and preset, the two memories, file locations,
/// the window's size and the manual's place. Failures are silent, as the store's are. For the
/// user-interface thread.
class PersistentSettings {
 public:
  /// Name of the text that says where the manual is; the installation writes it.
  static constexpr std::string_view kManualPath = "ManualPath";

  /// Name of the text that says how large the window is, for example "1.5".
  static constexpr std::string_view kScale = "Scale";

  explicit PersistentSettings(std::shared_ptr<platform::SettingsStore> store)
      : m_store(std::move(store)) {}

  /// Empty when there is none.
  std::vector<std::uint8_t> readImage(StoredImage which) const;
  void writeImage(StoredImage which, Bytes image);
  void clearImage(StoredImage which);

  FileLocations readLocations() const;
  /// Texts are cut to 256 bytes between two characters. A value that is stored already isn't
  /// written again.
  void writeLocations(const FileLocations& locations);

  /// How large the user wants the window, as it was written; empty when nobody has chosen.
  std::string readScale() const { return m_store->readText(kScale); }
  void writeScale(std::string_view scale) { m_store->writeText(kScale, scale); }

  /// Full path of the user manual as set; empty when nobody has set it. Never written here.
  std::string manualPath() const;

  /// The file that the manual button opens: the one set, else the installed one; empty when there
  /// is neither.
  std::string userManual() const;

 private:
  std::shared_ptr<platform::SettingsStore> m_store;
};

/// This user's settings on this system.
std::shared_ptr<platform::SettingsStore> openUserSettings();

} // namespace qlx::presets
