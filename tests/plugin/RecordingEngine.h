// SPDX-License-Identifier: ISC
#pragma once

#include "engine/RotaryEngine.h"

#include <cstdint>
#include <optional>
#include <vector>

/// A RotaryEngine that only remembers what it is told: it takes the real one's place at link time
/// in the tests of what parameters do.
namespace qlx::test {

struct EngineCall {
  engine::Setting setting;
  double value;
};

struct EngineLog {
  std::vector<EngineCall> sets{};
  std::uint32_t requested = 0;
  std::vector<engine::CpuMode> modes{};
  std::vector<double> rates{};
  int switchedOff = 0;
  int switchedOn = 0;
  engine::MicrophonePlacement* placement = nullptr;

  /// Forgets what was told so far.
  void clear();
  std::optional<double> last(engine::Setting setting) const;
};

/// Of the engine made last.
EngineLog& engineLog();

} // namespace qlx::test
