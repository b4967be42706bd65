// SPDX-License-Identifier: ISC
#pragma once

#include "presets/format/PresetSlot.h"

#include <array>

namespace qlx::plugin {

/// The bank that a new effect starts with: 17 sounds, then neutral slots.
std::array<presets::PresetSlot, presets::kNumPresetSlots> factoryPresets();

} // namespace qlx::plugin
