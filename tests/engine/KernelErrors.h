// SPDX-License-Identifier: ISC
#pragma once

// For the files that are compiled for one instruction set each.
#include "engine/kernels/RayKernels.h"
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
         firstLane(peakWarpAround1750(all(x28))) / std::pow(1.0 + x28 * 450.0 / 1750.0, 2.8) - 1.0);
    note(e.logarithm, firstLane(logarithmOfTwo(all(x))) - std::log2(x));
  }
  RayLanes<4> rays{};
  for (int k = 0; k < 4; ++k) {
    rays.place[k] = 0.1;
    rays.halfWidth[k] = test::kTestHalfWidth;
    rays.nearRate[k] = kPi / (2.0 * test::kTestHalfWidth);
    rays.farRate[k] = kPi / (1.0 - 2.0 * test::kTestHalfWidth);
  }
  const Warp warp(rays, 0);
  double previous = firstLane(warp.sine(all(0.0)));
  int below = 0;
  for (int i = 1; i <= kSteps; ++i) {
    const double sine = firstLane(warp.sine(all(static_cast<double>(i) / kSteps)));
    note(e.steepest, (sine - previous) * kSteps);
    below += sine < 0 ? 1 : 0;
    previous = sine;
  }
  e.shareBelow = static_cast<double>(below) / kSteps;
  return e;
}

} // namespace
} // namespace qlx::engine::kernels
