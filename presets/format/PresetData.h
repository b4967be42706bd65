// SPDX-License-Identifier: ISC
#pragma once

#include "presets/format/PresetImage.h"

#include <array>
#include <cstdint>
#include <optional>
#include <variant>

/// What stands around preset images: the head of files and stored settings, which name their kind,
/// and of the host's state chunk. Pure functions that find out what is there; all spans they return
/// lie in the bytes they were given.
namespace qlx::presets {

/// A bank is 42 kB; a file beyond this is something else.
inline constexpr std::size_t kMaxPresetFileBytes = std::size_t{16} << 20;

enum class Scope { Preset, Bank };

/// An image with records, for the readers of PresetImage.h.
struct RecordData {
  ImageHeader header;
  Bytes records;
  bool reversed = false;
};

/// Name and value records without heads, for the readers of LegacyPresetImage.h.
struct LegacyData {
  Bytes body;
  bool reversed = false;
  int recordCount = 1;
  int valueCount = 0; ///< per record; below 1 where the bytes are too few for a name
};

/// Ours, but of no kind that the scope knows, or cut off in its header.
struct UnknownData {};

using PresetData = std::variant<UnknownData, RecordData, LegacyData>;

/// Looks into a file or stored setting. Nothing is returned for bytes that are not ours.
/// @param otherOrder read in the byte order that the identifier does not announce
std::optional<PresetData> openPresetData(Bytes bytes, std::uint32_t fileId, Scope scope,
                                         bool otherOrder = false);

inline constexpr std::uint32_t kChunkBankImage = 0x02000000;
inline constexpr std::uint32_t kChunkLegacyBank = 0x01000000;
inline constexpr std::size_t kChunkHeadBytes = 8;
/// Where a chunk with a bank image has the number of the current slot, 32 bits in the byte order of
/// the machine that wrote it.
inline constexpr std::size_t kChunkCurrentIndexAt = kChunkHeadBytes + kImageCurrentIndexAt;

/// What stands in front of a bank image in a state chunk.
std::array<std::uint8_t, kChunkHeadBytes> makeChunkHead(std::uint32_t fileId);

/// A state chunk that holds the oldest layout, whole.
struct LegacyChunkData {
  Bytes chunk;
  bool reversed = false;
};

using ChunkData = std::variant<RecordData, LegacyChunkData>;

/// Looks into a state chunk. Nothing is returned for a foreign identifier, an unknown type or a
/// chunk too short for its heads.
std::optional<ChunkData> openChunk(Bytes chunk, std::uint32_t fileId);

} // namespace qlx::presets
