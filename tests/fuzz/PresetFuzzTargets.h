// SPDX-License-Identifier: ISC
#pragma once

#include <cstdint>
#include <span>
#include <string>
#include <vector>

/// What the fuzzers feed. Each target takes any bytes, and aborts when the instance afterwards is
/// in a state that it must never reach.
namespace qlx::test {

struct FuzzTarget {
  const char* name;
  void (*run)(std::span<const std::uint8_t> bytes);
  std::vector<std::vector<std::uint8_t>> (*seeds)();
};

/// chunk, preset_file, bank_file, stored_values
std::span<const FuzzTarget> presetFuzzTargets();

} // namespace qlx::test
