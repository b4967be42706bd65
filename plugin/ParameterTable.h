// SPDX-License-Identifier: ISC
#pragma once

#include "plugin/parameters/ParameterDisplays.h"
#include "plugin/parameters/ParameterIndex.h"

#include <array>
#include <cstdint>
#include <span>

namespace qlx::plugin {

class ParameterApplication;

/// How far one step of the host's generic controls moves a parameter.
struct ParameterSteps {
  float step;
  float smallStep;
  float largeStep;
  bool isSwitch;
};
inline constexpr ParameterSteps kFineSteps{1.0F / 35.0F, 1.0F / 70.0F, 1.0F / 35.0F, false};
inline constexpr ParameterSteps kSwitchSteps{1.0F, 1.0F, 1.0F, true};
inline constexpr ParameterSteps kSetupSteps{0.2F, 0.2F, 0.2F, false};
inline constexpr ParameterSteps kTypeSteps{0.5F, 0.5F, 0.5F, false};
inline constexpr ParameterSteps kSizeSteps{0.25F, 0.25F, 0.25F, false};

/// Where a parameter's value is remembered.
enum class ParameterKeeping : unsigned char {
  NotKept,     ///< reserved: reads 0
  Kept,        ///< by the effect and, for host parameters, in the current preset
  InAllPresets ///< the same in every preset: loading one never changes it
};
inline constexpr auto kNotKept = ParameterKeeping::NotKept;
inline constexpr auto kKept = ParameterKeeping::Kept;
inline constexpr auto kInAllPresets = ParameterKeeping::InAllPresets;

/// Hands a new normalised value on in its physical form.
using ApplyParameter = void (*)(ParameterApplication& application, float v);

/// Changes nothing but the stored value.
inline void nothing(ParameterApplication& /*application*/, float /*v*/) {}

/// Everything about one parameter.
struct ParameterRow {
  ParameterIndex index;
  const char* name; ///< empty for reserved ones
  const Display& display;
  float defaultValue;
  ApplyParameter apply = nothing;
  ParameterKeeping keeping = kKept;
  const ParameterSteps& steps = kFineSteps;
};

/// The row of an index, null outside 0..119.
const ParameterRow* parameterRow(std::int32_t index) noexcept;

/// The order in which a new effect takes its defaults. It matters: HDistance moves the Horn
/// Amplitude Clip, whose own default comes later.
std::span<const std::int32_t> parameterDefaultsOrder() noexcept;

} // namespace qlx::plugin
