// SPDX-License-Identifier: ISC
// The tools that the recordings are made with.

#include "resources/recordings/ExactMath.h"
#include "resources/recordings/Random.h"
#include "resources/recordings/Sources.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <gtest/gtest.h>
#include <numbers>

namespace qlx::test {
using namespace recordings;
namespace {

TEST(ExactMath, AgreesWithTheLibraryWithinItsStatedError) {
  for (int i = -4000; i <= 4000; ++i) {
    const double turns = i * 0.0037;
    const double angle = 2.0 * std::numbers::pi * turns;
    EXPECT_NEAR(sineOfTurns(turns), std::sin(angle), 1e-13) << turns; // std::sin's angle is rounded
    EXPECT_NEAR(cosineOfTurns(turns), std::cos(angle), 1e-13) << turns;
    const double x = i * 0.17;
    EXPECT_NEAR(exponential(x) / std::exp(x), 1.0, 1e-13) << x;
  }
  EXPECT_EQ(sineOfTurns(0.5), 0.0);
  EXPECT_NEAR(gainOfDb(-20.0), 0.1, 1e-15);
}

TEST(Random, NeighbouringSeedsAreStrangers) {
  constexpr std::size_t kCount = 20000;
  const Signal one = whiteNoise(kCount, 7);
  EXPECT_NEAR(meanOf(one), 0.0, 0.03);
  EXPECT_NEAR(rmsOf(one), 1.0, 0.03);
  for (std::uint64_t seed = 8; seed < 16; ++seed) {
    const Signal other = whiteNoise(kCount, seed);
    for (std::size_t shift = 0; shift < 12; ++shift) {
      double sum = 0.0;
      for (std::size_t i = 0; i < kCount; ++i) sum += one[i] * other[(i + shift) % kCount];
      EXPECT_LT(std::abs(sum / kCount), 0.04) << seed << " shifted by " << shift;
    }
  }
}

TEST(Filter, GainIsThatOfTheDesign) {
  struct Case {
    Response response;
    double hz;
    double q;
  };
  constexpr std::array<Case, 6> kCases = {{{Response::bandPass, 80.0, 12.0},
                                           {Response::bandPass, 5200.0, 0.7},
                                           {Response::lowPass, 441.0, 2.0},
                                           {Response::lowPass, 7500.0, 0.6},
                                           {Response::highPass, 441.0, 2.0},
                                           {Response::highPass, 30.0, 0.7}}};
  // The trapezoidal rule bends the frequency axis by this much and leaves the rest to the analogue
  // filter.
  const auto bent = [](double hz) { return std::tan(std::numbers::pi * hz / kSampleRate); };
  for (const Case& c : kCases) {
    for (const double toneHz : {20.0, 80.0, 441.0, 3000.0, 9000.0}) {
      Signal tone(44100);
      for (std::size_t i = 0; i < tone.size(); ++i) {
        tone[i] = sineOfTurns(toneHz * static_cast<double>(i) / kSampleRate);
      }
      const double w = bent(toneHz) / bent(c.hz);
      const double numerator = c.response == Response::lowPass    ? 1.0
                               : c.response == Response::bandPass ? w / c.q
                                                                  : w * w;
      const double design = numerator / std::hypot(1.0 - w * w, w / c.q);
      const double gain = rmsOf(filtered(tone, c.response, c.hz, c.q)) / rmsOf(tone);
      EXPECT_NEAR(20.0 * std::log10(gain / design), 0.0, 0.001) << c.hz << " Hz at " << toneHz;
    }
  }
}

TEST(Filter, LoopStaysSeamlessWhereverItIsCut) {
  // A loop has no beginning: cutting it elsewhere before the filter or after it must be the same.
  Signal loop = whiteNoise(40000, 3);
  Signal expected = filtered(loop, Response::bandPass, 82.0, 14.0);
  std::rotate(loop.begin(), loop.begin() + 12345, loop.end());
  std::rotate(expected.begin(), expected.begin() + 12345, expected.end());
  const Signal cutElsewhere = filtered(loop, Response::bandPass, 82.0, 14.0);
  double most = 0.0;
  for (std::size_t i = 0; i < loop.size(); ++i) {
    most = std::max(most, std::abs(cutElsewhere[i] - expected[i]));
  }
  EXPECT_LT(most, 1e-6 * rmsOf(expected));
}

TEST(Rotation, MainsTonesHaveTheirPitchAtTheUsualSpeedAndWholePeriods) {
  const Rotation rotation = {63884, 34, 6.77};
  const double periods = rotation.periodsOf(120.0);
  EXPECT_EQ(periods, std::floor(periods));
  EXPECT_NEAR(periods * rotation.turnsPerSecond / rotation.turns, 120.0, 0.1);
}

} // namespace
} // namespace qlx::test
