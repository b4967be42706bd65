// SPDX-License-Identifier: ISC
#pragma once

#include "presets/format/ImageRecords.h"
#include "presets/format/PresetBytes.h"

#include <cstdint>
#include <string>
#include <vector>

namespace qlx::presets {

/// The preset editor as the preset store sees it: it writes and reads the bank images of state
/// chunks and shows what changed in the store.
class PresetStoreEditor {
 public:
  /// The image of all slots. Any thread.
  virtual std::vector<std::uint8_t> writeBankImage() = 0;
  /// Takes the records of a bank image into the slots and makes the image's current slot current;
  /// records that are not valid change nothing.
  virtual void readBankImage(Bytes records, const ImageHeader& header, bool reversed) = 0;
  /// Loads the user's stored default bank, default preset and file locations.
  virtual void loadStartupDefaults() = 0;
  /// Shows a new name of the current slot.
  virtual void showPresetName(const std::string& name) = 0;
  /// Shows the names of all slots anew.
  virtual void refreshPanel() = 0;

 protected:
  ~PresetStoreEditor() = default;
};

} // namespace qlx::presets
