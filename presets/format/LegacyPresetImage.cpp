// SPDX-License-Identifier: ISC
#include "presets/format/LegacyPresetImage.h"

#include <algorithm>

namespace qlx::presets {
namespace {

constexpr std::size_t kHeadBytes = 32;
constexpr std::size_t kValueBytes = sizeof(float);

std::size_t recordBytes(int valueCount) {
  return kPresetNameBytes + static_cast<std::size_t>(valueCount) * kValueBytes;
}

/// Fills `update` from a record of at least recordBytes(valueCount); false where a value outside
/// 0..1 ended it.
bool readRecord(Bytes record, bool reversed, int valueCount, const ParameterSet& loaded,
                SlotUpdate& update) {
  update.fromTemplate = true;
  update.named = true;
  std::memcpy(update.slot.name.data(), record.data(), kPresetNameBytes);
  const auto count = static_cast<std::size_t>(std::min(valueCount, kNumPresetParameters));
  for (std::size_t p = 0; p < count; ++p) {
    if (!loaded[p]) continue;
    const float value = readFloat(record.subspan(kPresetNameBytes + p * kValueBytes), reversed);
    if (!isNormalised(value)) return false;
    update.setValue(p, value);
  }
  return true;
}

} // namespace

std::optional<SlotUpdate> readLegacyPreset(Bytes body, bool reversed, int valueCount,
                                           const ParameterSet& loaded) {
  auto slots = readLegacyBank(body, reversed, 1, valueCount, loaded);
  if (!slots) return std::nullopt;
  return slots->front();
}

std::optional<std::vector<SlotUpdate>> readLegacyBank(Bytes body, bool reversed, int recordCount,
                                                      int valueCount, const ParameterSet& loaded) {
  if (recordCount < 1 || valueCount < 1) return std::nullopt;
  const std::size_t stride = recordBytes(valueCount);
  // Divided, because the product could overflow.
  if (static_cast<std::size_t>(recordCount) > body.size() / stride) return std::nullopt;
  std::vector<SlotUpdate> slots(static_cast<std::size_t>(std::min(recordCount, kNumPresetSlots)));
  for (SlotUpdate& slot : slots) {
    if (!readRecord(body, reversed, valueCount, loaded, slot)) return std::nullopt;
    body = body.subspan(stride);
  }
  return slots;
}

std::optional<LegacyChunk> readLegacyChunk(Bytes chunk, bool reversed, const ParameterSet& loaded) {
  if (chunk.size() < kHeadBytes) return std::nullopt;
  const std::int32_t recordCount = readInt(chunk.subspan(8), reversed);
  const std::int32_t current = readInt(chunk.subspan(12), reversed);
  Bytes body = chunk.subspan(kHeadBytes);
  if (recordCount < 1) return std::nullopt;
  const std::size_t stride = body.size() / static_cast<std::size_t>(recordCount);
  if (stride < recordBytes(1)) return std::nullopt;
  const auto valueCount = static_cast<int>(
      std::min<std::size_t>((stride - kPresetNameBytes) / kValueBytes, kNumPresetParameters));

  LegacyChunk result;
  result.currentIndex = current >= 0 && current < kNumPresetSlots ? current : 0;
  for (int i = 0; i < std::min(recordCount, kNumPresetSlots); ++i) {
    if (!readRecord(body, reversed, valueCount, loaded, result.slots.emplace_back())) return result;
    body = body.subspan(stride);
  }
  result.complete = true;
  return result;
}

} // namespace qlx::presets
