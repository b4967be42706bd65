// SPDX-License-Identifier: ISC
#pragma once

// For the files that are compiled for one instruction set each.
#include "engine/kernels/LaneMath.h"
#include "tests/engine/KernelTest.h"

#include <algorithm>
#include <cmath>

namespace qlx::engine::kernels {
namespace {

double firstLane(Lanes x) { return x[0]; }

test::KernelErrors measure() {
  test::KernelErrors e{};
  const auto note = [](double& worst, double error) { worst = std::max(worst, std::abs(error)); };
  constexpr int kSteps = 200000;
  for (int i = 0; i <= kSteps; ++i) {
    const double share = static_cast<double>(i) / kSteps;
    const double angle = share * kPi;
    note(e.sine, firstLane(sineOfHalf(all(angle))) - std::sin(angle));
    note(e.cosine, firstLane(cosineOfHalf(all(angle))) - std::cos(angle));
    const double exponent = -60.0 + 120.0 * share;
    note(e.powerOfTwo, firstLane(powerOfTwo(all(exponent))) / std::exp2(exponent) - 1.0);
    const double x = std::exp2(exponent * 0.5);
    const double x28 = -1.0 + 2.0 * share;
    note(e.peakWarp,
         firstLane(peakWarpAroundCentre(all(x28))) / std::pow(1.0 + x28 * 450.0 / 1750.0, 2.8) -
             1.0);
    note(e.logarithm, firstLane(logarithmOfTwo(all(x))) - std::log2(x));
  }
  return e;
}

} // namespace
} // namespace qlx::engine::kernels
