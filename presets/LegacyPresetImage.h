#pragma once

#include <optional>
#include <vector>

#include "presets/PresetBytes.h"
#include "presets/PresetSlot.h"

/// Readers of the layouts from before there were records: a name followed by values, by parameter
/// index. Pure functions like those of PresetImage.h, bounded by the bytes that are there.
namespace qlx::presets {

/// A name and `valueCount` values without header, the values of `loaded` taken over `blank`.
/// Nothing is returned for a value outside 0..1, a count below 1 or a body shorter than that.
std::optional<PresetSlot> readLegacyPreset(Bytes body, bool reversed, int valueCount,
                                           const PresetSlot& blank, const ParameterSet& loaded);

/// `recordCount` such records back to back; at most 32 are taken, as the first slots. Nothing is
/// returned where one of them would be refused or the counts are not positive.
std::optional<std::vector<PresetSlot>> readLegacyBank(Bytes body, bool reversed, int recordCount,
                                                      int valueCount, const PresetSlot& blank,
                                                      const ParameterSet& loaded);

/// The oldest state chunk, from its 32-byte head on.
struct LegacyChunk {
  std::vector<PresetSlot>
      slots; ///< the first slots, the last of them incomplete where `complete` is not set
  bool complete = false; ///< false: a value outside 0..1 ended the reading
  int currentIndex = 0;  ///< 0..31
};

/// Nothing is returned when head and record count do not describe the bytes.
std::optional<LegacyChunk> readLegacyChunk(Bytes chunk, bool reversed, const PresetSlot& blank,
                                           const ParameterSet& loaded);

} // namespace qlx::presets
