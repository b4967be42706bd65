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

/// dispatcher, midi, automation, midi_file
std::span<const FuzzTarget> playingFuzzTargets();

/// In the order in which the build numbers the programs.
inline std::vector<FuzzTarget> allFuzzTargets() {
  std::vector<FuzzTarget> all;
  for (const auto targets : {presetFuzzTargets(), drawingFuzzTargets(), playingFuzzTargets()})
    all.insert(all.end(), targets.begin(), targets.end());
  return all;
}

/// What fuzzing found to reach further than the seeds, as kept in tests/fuzz/corpus by
/// ./dev fuzz --keep: one file a target, of inputs one after another, each behind its length in two
/// bytes, the low one first. None if there is no such file; throws std::runtime_error if it is cut.
std::vector<std::vector<std::uint8_t>> keptInputs(const char* target);

/// Replaces the kept inputs of a target by the shortest files of FOLDER that together fit into
/// 24 KiB.
void keepInputs(const char* target, const std::string& folder);

} // namespace qlx::test
