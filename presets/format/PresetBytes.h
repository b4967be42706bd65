// SPDX-License-Identifier: ISC
#pragma once

#include <bit>
#include <cstdint>
#include <cstring>
#include <optional>
#include <span>

/// Numbers in preset bytes.
namespace qlx::presets {

using Bytes = std::span<const std::uint8_t>;

/// The same four bytes read on a machine of the other byte order.
constexpr std::uint32_t reverseBytes(std::uint32_t number) {
  return number << 24 | (number & 0xFF00U) << 8 | (number >> 8 & 0xFF00U) | number >> 24;
}

/// A 32-bit number at the start of `bytes` (at least four), in this machine's byte order or
/// reversed.
inline std::uint32_t readNumber(Bytes bytes, bool reversed) {
  std::uint32_t number = 0;
  std::memcpy(&number, bytes.data(), sizeof number);
  return reversed ? reverseBytes(number) : number;
}

inline std::int32_t readInt(Bytes bytes, bool reversed) {
  return static_cast<std::int32_t>(readNumber(bytes, reversed));
}

inline float readFloat(Bytes bytes, bool reversed) {
  return std::bit_cast<float>(readNumber(bytes, reversed));
}

/// Whether the identifier in front of preset data is ours: false in this machine's byte order, true
/// in the other's, nothing when it is somebody else's or not there.
inline std::optional<bool> matchFileId(Bytes bytes, std::uint32_t fileId) {
  if (bytes.size() < sizeof fileId) return std::nullopt;
  const std::uint32_t found = readNumber(bytes, false);
  if (found == fileId) return false;
  if (found == reverseBytes(fileId)) return true;
  return std::nullopt;
}

} // namespace qlx::presets
