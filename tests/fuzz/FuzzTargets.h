// SPDX-License-Identifier: ISC
#pragma once

#include <cstdint>
#include <cstdlib>
#include <span>
#include <string>
#include <vector>

/// What the fuzzers feed. Each target takes any bytes, and aborts when what it fed is afterwards in
/// a state that it must never reach.
namespace qlx::test {

struct FuzzTarget {
  const char* name;
  void (*run)(std::span<const std::uint8_t> bytes);
  std::vector<std::vector<std::uint8_t>> (*seeds)();
};

inline void require(bool condition) {
  if (!condition) std::abort();
}

/// chunk, preset_file, bank_file, stored_values
std::span<const FuzzTarget> presetFuzzTargets();

/// image, glyph_pack
std::span<const FuzzTarget> drawingFuzzTargets();

inline std::vector<FuzzTarget> allFuzzTargets() {
  const auto presets = presetFuzzTargets();
  std::vector<FuzzTarget> all(presets.begin(), presets.end());
  for (const FuzzTarget& target : drawingFuzzTargets()) all.push_back(target);
  return all;
}

} // namespace qlx::test
