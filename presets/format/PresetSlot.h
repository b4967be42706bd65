// SPDX-License-Identifier: ISC
#pragma once

#include "presets/format/ClippedText.h"

#include <algorithm>
#include <array>
#include <bitset>
#include <cstddef>
#include <cstdint>
#include <string_view>

namespace qlx::presets {

inline constexpr int kNumPresetSlots = 32;
inline constexpr int kNumPresetParameters = 36;
inline constexpr std::size_t kPresetNameBytes = 24;

constexpr bool isPresetSlot(std::int32_t index) { return index >= 0 && index < kNumPresetSlots; }
constexpr bool isPresetParameter(std::int32_t index) {
  return index >= 0 && index < kNumPresetParameters;
}

/// One bit per host parameter index.
using ParameterSet = std::bitset<kNumPresetParameters>;

/// One stored preset: its name (text, then zero bytes; all 24 bytes may be text) and the normalised
/// values 0..1 of the host parameters by index. The memory layout is also that of a record in the
/// oldest bank files.
struct PresetSlot {
  std::array<char, kPresetNameBytes> name{};
  std::array<float, kNumPresetParameters> values{};

  /// The name up to its first zero byte, at most 24 characters; valid as long as the slot is.
  std::string_view nameText() const {
    const auto end = std::find(name.begin(), name.end(), '\0');
    return {name.data(), static_cast<std::size_t>(end - name.begin())};
  }

  /// Takes over at most 23 bytes, whole characters, so that the field always ends in a zero byte;
  /// the rest becomes zero.
  void setNameText(std::string_view text) {
    text = cutText(text.substr(0, text.find('\0')), kPresetNameBytes - 1);
    name.fill('\0');
    std::copy(text.begin(), text.end(), name.begin());
  }

  friend bool operator==(const PresetSlot&, const PresetSlot&) = default;
};

static_assert(sizeof(PresetSlot) == 168);

/// Whether a value may be applied to the effect; not-a-number may not.
constexpr bool isNormalised(float value) { return value >= 0.0F && value <= 1.0F; }

} // namespace qlx::presets
