// SPDX-License-Identifier: ISC
#pragma once

#include "presets/format/PresetSlot.h"

namespace qlx::presets {

/// What preset data wants done to one slot, in this order: start again from the template, take the
/// name, take the values in `changed`. What it doesn't mention stays.
struct SlotUpdate {
  bool fromTemplate = false;
  bool named = false;
  ParameterSet changed;
  PresetSlot slot; ///< meaningful where `named` and `changed` say so

  void setValue(std::size_t parameter, float value) {
    changed.set(parameter);
    slot.values[parameter] = value;
  }
};

} // namespace qlx::presets
