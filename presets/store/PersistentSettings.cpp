// SPDX-License-Identifier: ISC
#include "presets/store/PersistentSettings.h"

#include "platform/InstalledDocument.h"
#include "presets/format/ClippedText.h"

#include <array>

namespace qlx::presets {
namespace {

constexpr std::size_t kMaxTextBytes = 256;
constexpr std::size_t kMaxManualPathBytes = 1024;

struct LocationValue {
  std::string_view name;
  std::string FileLocations::*text;
};

constexpr std::array<LocationValue, 3> kLocationValues{{
    {"CurrDir", &FileLocations::presetDirectory},
    {"CurrBank", &FileLocations::bankFileName},
    {"CurrPreset", &FileLocations::presetFileName},
}};

std::string_view nameOf(StoredImage which) {
  switch (which) {
  case StoredImage::DefaultBank: return "DefaultBank";
  case StoredImage::DefaultPreset: return "DefaultPreset";
  case StoredImage::MemoA: return "MemoA";
  case StoredImage::MemoB: break;
  }
  return "MemoB";
}

} // namespace

std::vector<std::uint8_t> PersistentSettings::readImage(StoredImage which) const {
  return m_store->readBinary(nameOf(which)).value_or(std::vector<std::uint8_t>());
}

void PersistentSettings::writeImage(StoredImage which, Bytes image) {
  m_store->writeBinary(nameOf(which), image);
}

void PersistentSettings::clearImage(StoredImage which) { m_store->remove(nameOf(which)); }

FileLocations PersistentSettings::readLocations() const {
  FileLocations locations;
  for (const auto& [name, text] : kLocationValues) {
    locations.*text = cutText(m_store->readText(name), kMaxTextBytes);
  }
  return locations;
}

void PersistentSettings::writeLocations(const FileLocations& locations) {
  for (const auto& [name, text] : kLocationValues) {
    const std::string_view wanted = cutText(locations.*text, kMaxTextBytes);
    if (m_store->readText(name) != wanted) m_store->writeText(name, wanted);
  }
}

std::string PersistentSettings::manualPath() const {
  return std::string(cutText(m_store->readText(kManualPath), kMaxManualPathBytes));
}

std::string PersistentSettings::userManual() const {
  const std::string path = manualPath();
  return path.empty() ? platform::findInstalledDocument("qlx-brezan/manual.pdf") : path;
}

std::shared_ptr<platform::SettingsStore> openUserSettings() {
  return platform::openUserSettings("Meridane", "QLXBRZ1");
}

} // namespace qlx::presets
