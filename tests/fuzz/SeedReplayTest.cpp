// SPDX-License-Identifier: ISC
#include <random>

#include <gtest/gtest.h>

#include "tests/fuzz/FuzzTargets.h"

namespace qlx::test {
namespace {

/// Every seed as it is, cut at many places and with single bytes turned, in blocks of exactly the
/// input's size so that a sanitizer sees the first byte too far. The targets abort when something
/// is wrong.
TEST(Fuzz, SeedsCutAndTurnedDoNoHarm) {
  constexpr int kCuts = 60;
  constexpr int kTurns = 60;
  std::mt19937 random(4);
  testing::internal::CaptureStderr(); // repaired values are reported line by line
  for (const FuzzTarget& target : allFuzzTargets()) {
    for (const auto& seed : target.seeds()) {
      target.run(seed);
      std::uniform_int_distribution<std::size_t> place(0, seed.size() - 1);
      for (int i = 0; i < kCuts; ++i) {
        target.run(std::vector<std::uint8_t>(
            seed.begin(), seed.begin() + static_cast<std::ptrdiff_t>(place(random))));
      }
      for (int i = 0; i < kTurns; ++i) {
        auto turned = seed;
        // Half of them in the heads, where the counts and lengths are.
        const std::size_t at = i % 2 == 0 ? place(random) % 64 % seed.size() : place(random);
        turned[at] = static_cast<std::uint8_t>(random());
        target.run(turned);
      }
    }
  }
  testing::internal::GetCapturedStderr();
}

/// What fuzzing found to reach the most code, as it is.
TEST(Fuzz, KeptInputsDoNoHarm) {
  testing::internal::CaptureStderr();
  for (const FuzzTarget& target : allFuzzTargets()) {
    const auto inputs = keptInputs(target.name);
    EXPECT_FALSE(inputs.empty()) << target.name;
    for (const auto& input : inputs) target.run(input);
  }
  testing::internal::GetCapturedStderr();
}

} // namespace
} // namespace qlx::test
