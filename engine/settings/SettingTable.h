// SPDX-License-Identifier: ISC
#pragma once

#include "engine/settings/Setting.h"

#include <cstdint>

namespace qlx::engine {

class SignalPath;

/// What the engine knows about a setting. The limits leave room around all that controls reach
/// within their range and are so narrow that the engine stays finite and that gains and filters are
/// back within 100 ms after a value out of range.
struct SettingRow {
  Setting setting;
  double lowest, highest;
  /// What the audio thread does with a new value.
  void (*apply)(SignalPath& path, double v);
  /// What a new value makes stale, as PendingWork; 0 where it acts at once.
  std::uint32_t stale = 0;
};

/// Any thread.
const SettingRow& settingRow(Setting setting) noexcept;

} // namespace qlx::engine
