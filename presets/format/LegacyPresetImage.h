// SPDX-License-Identifier: ISC
#pragma once

#include "presets/format/PresetBytes.h"
#include "presets/format/SlotUpdate.h"

#include <optional>
#include <vector>

/// Readers of the layouts from before there were records: a name followed by values, by parameter
/// index. Pure functions like those of PresetImage.h, bounded by the bytes that are there.
/// Parameters outside `loaded` are passed over.
namespace qlx::presets {

/// A name and `valueCount` values. Nothing is returned for a value outside 0..1, a count below 1 or
/// a body shorter than that.
std::optional<SlotUpdate> readLegacyPreset(Bytes body, bool reversed, int valueCount,
                                           const ParameterSet& loaded);

/// `recordCount` such records back to back; at most 32 are taken, for the first slots. Nothing is
/// returned where one of them would be refused or the counts are not positive.
std::optional<std::vector<SlotUpdate>> readLegacyBank(Bytes body, bool reversed, int recordCount,
                                                      int valueCount, const ParameterSet& loaded);

/// What the oldest state chunk holds.
struct LegacyChunk {
  std::vector<SlotUpdate>
      slots;             ///< for the first slots; the last stops early where `complete` is not set
  bool complete = false; ///< false: a value outside 0..1 ended the reading
  int currentIndex = 0;  ///< 0..31
};

/// Reads the chunk from its 32-byte head on. Nothing is returned when head and record count do not
/// describe the bytes.
std::optional<LegacyChunk> readLegacyChunk(Bytes chunk, bool reversed, const ParameterSet& loaded);

} // namespace qlx::presets
