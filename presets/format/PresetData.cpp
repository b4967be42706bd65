// SPDX-License-Identifier: ISC
#include "presets/format/PresetData.h"

#include <algorithm>
#include <bit>

namespace qlx::presets {
namespace {

constexpr std::size_t kFileHeadBytes = 5;

/// How many values a record of `bytes` bytes has behind its name.
int valuesIn(std::size_t bytes) {
  if (bytes < kPresetNameBytes) return 0;
  return static_cast<int>((bytes - kPresetNameBytes) / sizeof(float));
}

PresetData openRecords(Bytes bytes, bool reversed) {
  const auto header = readImageHeader(bytes, reversed);
  if (!header) return UnknownData{};
  const Bytes rest = bytes.subspan(kImageHeaderBytes);
  return RecordData{*header, rest.first(std::min<std::size_t>(header->recordBytes, rest.size())),
                    reversed};
}

} // namespace

std::optional<PresetData> openPresetData(Bytes bytes, std::uint32_t fileId, Scope scope,
                                         bool otherOrder) {
  const auto found = matchFileId(bytes, fileId);
  if (!found || bytes.size() < kFileHeadBytes) return std::nullopt;
  const bool reversed = *found != otherOrder;
  const auto kind = static_cast<ImageKind>(bytes[kImageKindAt]);
  const Bytes body = bytes.subspan(kFileHeadBytes);
  if (kind == (scope == Scope::Preset ? ImageKind::Preset : ImageKind::Bank)) {
    return openRecords(bytes, reversed);
  }
  if (scope == Scope::Preset && kind == ImageKind::LegacyPreset) {
    return LegacyData{body, reversed, 1, valuesIn(body.size())};
  }
  if (scope == Scope::Bank && kind == ImageKind::LegacyBank) {
    return LegacyData{body, reversed, kNumPresetSlots, valuesIn(body.size() / kNumPresetSlots)};
  }
  return UnknownData{};
}

std::array<std::uint8_t, kChunkHeadBytes> makeChunkHead(std::uint32_t fileId) {
  return std::bit_cast<std::array<std::uint8_t, kChunkHeadBytes>>(
      std::array{kChunkBankImage, fileId});
}

std::optional<ChunkData> openChunk(Bytes chunk, std::uint32_t fileId) {
  if (chunk.size() < kChunkHeadBytes) return std::nullopt;
  const auto reversed = matchFileId(chunk.subspan(4), fileId);
  if (!reversed) return std::nullopt;
  switch (readNumber(chunk, *reversed)) {
  case kChunkBankImage: {
    const Bytes image = chunk.subspan(kChunkHeadBytes);
    const auto header = readImageHeader(image, *reversed);
    if (!header) return std::nullopt;
    // The host tells how long the chunk is; the header's own length is not needed here.
    return RecordData{*header, image.subspan(kImageHeaderBytes), *reversed};
  }
  case kChunkLegacyBank: return LegacyChunkData{chunk, *reversed};
  default: return std::nullopt;
  }
}

} // namespace qlx::presets
