// SPDX-License-Identifier: ISC
#pragma once

#include "presets/format/ImageRecords.h"
#include "presets/format/SlotUpdate.h"

#include <array>
#include <cstdint>
#include <functional>
#include <optional>
#include <span>
#include <string_view>
#include <vector>

/// The serialised form of presets, as pure functions between slots and bytes: what files, stored
/// settings and the host's state chunk carry. No function here looks outside the bytes it is given,
/// whatever they hold, and all may be called from any thread.
namespace qlx::presets {

/// Gets one line of text, without its end, for each value that had to be repaired.
using DiagnosticSink = std::function<void(std::string_view)>;

/// The image of one preset with the values of `saved`, as they stand.
std::vector<std::uint8_t> makePresetImage(const PresetSlot& slot, std::uint32_t fileId,
                                          const ParameterSet& saved);

/// The image of all slots with the values of `saved`. A value below 0 or not a number is written as
/// 0, one above 1 as 1, each with a diagnostic line.
std::vector<std::uint8_t> makeBankImage(std::span<const PresetSlot, kNumPresetSlots> slots,
                                        int currentIndex, std::uint32_t fileId,
                                        const ParameterSet& saved, const DiagnosticSink& diagnose);

struct BankUpdate {
  std::array<SlotUpdate, kNumPresetSlots> slots;
  int currentIndex = 0;
};

/// Reads the records of a bank image. Values out of range are repaired to 0 or 1 with a diagnostic
/// line. A name record starts its slot from the template. Reading ends at the first record that
/// does not fit into `records`. Nothing is returned for a negative record count.
/// @param present the slots as they are now: the names in diagnostic lines come from here until a
/// record renames them
std::optional<BankUpdate> readBankRecords(const ImageHeader& header, Bytes records, bool reversed,
                                          std::span<const PresetSlot, kNumPresetSlots> present,
                                          const DiagnosticSink& diagnose);

/// Reads the records of a preset image, ending at the first record that does not fit. Nothing is
/// returned for a negative record count or a value outside 0..1.
std::optional<SlotUpdate> readPresetRecords(const ImageHeader& header, Bytes records,
                                            bool reversed);

} // namespace qlx::presets
