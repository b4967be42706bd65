// SPDX-License-Identifier: ISC
#include "presets/format/PresetImage.h"

#include <charconv>
#include <string>

namespace qlx::presets {
namespace {

std::string decimal(float value) {
  // The largest float has 39 digits in front of the point; the point is one in every locale.
  std::array<char, 64> text{};
  const auto end =
      std::to_chars(text.data(), text.data() + text.size(), value, std::chars_format::fixed, 6);
  return {text.data(), end.ptr};
}

/// 0 or 1 for a value outside that range, with a diagnostic line; `occasion` is "save" or "load".
float repaired(float value, std::int32_t parameter, std::int32_t slot, std::string_view occasion,
               std::string_view name, const DiagnosticSink& diagnose) {
  if (isNormalised(value)) return value;
  std::string line = "Invalid parameter " + std::to_string(parameter) + " value " + decimal(value);
  line.append(" on ").append(occasion).append(" of preset ");
  line.append(std::to_string(slot)).append(" ").append(name);
  diagnose(line);
  return value > 1.0F ? 1.0F : 0.0F;
}

} // namespace

std::vector<std::uint8_t> makePresetImage(const PresetSlot& slot, std::uint32_t fileId,
                                          const ParameterSet& saved) {
  ImageWriter image(fileId, ImageKind::Preset, 0, imageBytes(1, saved.count()));
  image.nameRecord(0, slot);
  for (int p = 0; p < kNumPresetParameters; ++p) {
    const auto index = static_cast<std::size_t>(p);
    if (saved[index]) image.valueRecord(0, p, slot.values[index]);
  }
  return image.take();
}

std::vector<std::uint8_t> makeBankImage(std::span<const PresetSlot, kNumPresetSlots> slots,
                                        int currentIndex, std::uint32_t fileId,
                                        const ParameterSet& saved, const DiagnosticSink& diagnose) {
  ImageWriter image(fileId, ImageKind::Bank, currentIndex, imageBytes(slots.size(), saved.count()));
  for (int s = 0; s < kNumPresetSlots; ++s) {
    const PresetSlot& slot = slots[static_cast<std::size_t>(s)];
    image.nameRecord(s, slot);
    for (int p = 0; p < kNumPresetParameters; ++p) {
      const auto index = static_cast<std::size_t>(p);
      if (!saved[index]) continue;
      image.valueRecord(s, p,
                        repaired(slot.values[index], p, s, "save", slot.nameText(), diagnose));
    }
  }
  return image.take();
}

std::optional<BankUpdate> readBankRecords(const ImageHeader& header, Bytes records, bool reversed,
                                          std::span<const PresetSlot, kNumPresetSlots> present,
                                          const DiagnosticSink& diagnose) {
  if (header.recordCount < 0) return std::nullopt;
  BankUpdate bank;
  const bool known = header.currentIndex >= 0 && header.currentIndex < kNumPresetSlots;
  bank.currentIndex = known ? header.currentIndex : 0;
  RecordReader record(header, records, reversed);
  while (record.next()) {
    if (record.slot() < 0 || record.slot() >= kNumPresetSlots) continue;
    const auto slot = static_cast<std::size_t>(record.slot());
    SlotUpdate& update = bank.slots[slot];
    if (record.isName()) {
      update.fromTemplate = true;
      update.named = true;
      update.changed.reset();
      record.copyName(update.slot);
    } else if (record.isValue()) {
      const std::string_view name = (update.named ? update.slot : present[slot]).nameText();
      const float value =
          repaired(record.value(), record.parameter(), record.slot(), "load", name, diagnose);
      if (!isPresetParameter(record.parameter())) continue;
      update.setValue(static_cast<std::size_t>(record.parameter()), value);
    }
  }
  return bank;
}

std::optional<SlotUpdate> readPresetRecords(const ImageHeader& header, Bytes records,
                                            bool reversed) {
  if (header.recordCount < 0) return std::nullopt;
  SlotUpdate update;
  update.fromTemplate = true;
  RecordReader record(header, records, reversed);
  while (record.next()) {
    if (record.isName()) {
      update.named = true;
      record.copyName(update.slot);
    } else if (record.isValue() && isPresetParameter(record.parameter())) {
      if (!isNormalised(record.value())) return std::nullopt;
      update.setValue(static_cast<std::size_t>(record.parameter()), record.value());
    }
  }
  return update;
}

} // namespace qlx::presets
