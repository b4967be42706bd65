// SPDX-License-Identifier: ISC
#pragma once

#include "engine/kernels/Kernels.h"
#include "engine/signal/Biquad.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <random>
#include <vector>

/// Every kernel of every instruction set against a plain loop. Each test runs its kernel over
/// sub-blocks of several lengths one after the other, so that states are carried on.
namespace qlx::test {
using namespace engine;
using namespace engine::kernels;

inline constexpr int kLengths[] = {64, 1, 3, 7, 63};
inline constexpr double kRate = 44100.0;
using Numbers = std::vector<double>;

struct KernelTwin : testing::TestWithParam<const Kernels*> {
  const Kernels& kernels = *GetParam();
  std::mt19937 random{7};

  void SetUp() override {
    if (!canRun(kernels)) GTEST_SKIP() << "not for this processor";
  }
  double between(double low, double high) {
    return std::uniform_real_distribution<double>(low, high)(random);
  }
  Numbers noise(std::size_t n = 160, double low = -1.0, double high = 1.0) {
    Numbers x(n);
    for (double& value : x) value = between(low, high);
    return x;
  }
  /// Stable second-order sections in lanes.
  template <int N>
  void fill(double (&field)[kSectionFields][N]) {
    for (int i = 0; i < N; ++i) {
      const double radius = between(0.3, 0.95), cosine = between(-0.9, 0.9);
      field[kA1][i] = -2 * radius * cosine;
      field[kA2][i] = radius * radius;
      for (int f = kB0; f < kSectionFields; ++f) field[f][i] = between(-1, 1);
    }
  }
};

/// The first n numbers alike, to 1e-12 of the largest.
inline void expectSame(const Numbers& actual, const Numbers& expected, std::size_t n,
                       double tolerance = 1e-12) {
  double scale = 1e-3;
  for (std::size_t i = 0; i < n; ++i) scale = std::max(scale, std::abs(expected[i]));
  for (std::size_t i = 0; i < n; ++i)
    ASSERT_NEAR(actual[i], expected[i], tolerance * scale) << "number " << i << " of " << n;
}

inline double onePole(double& state, double x, double pole) {
  return state = state * pole + x * (1 - pole);
}

inline Biquad filter(Response response, double hz, double q, double db) {
  Biquad f(kRate, response, hz, q, db);
  f.setEnabled(true);
  f.setInstantUpdate(false);
  return f;
}

/// A section that stands, by its roots, against a design.
template <class RootOf>
void expectDesign(RootOf root, const Biquad& f) {
  const auto product = [&](int i) {
    return root(i) * root(i) - root(i + 1) * root(i + 1) + root(i + 2) * root(i + 2);
  };
  const double gain = root(kGain);
  const Biquad::Coefficients& k = f.target();
  expectSame({-2 * root(kPoleCentre), product(kPoleCentre), gain, -2 * gain * root(kZeroCentre),
              gain * product(kZeroCentre)},
             {k.a1, k.a2, k.b0, k.b1, k.b2}, 5);
}
template <int N>
void expectDesign(const GlideLanes<N>& g, int lane, const Biquad& f) {
  expectDesign([&](int i) { return g.root[i][lane]; }, f);
  for (const auto& increment : g.increment) EXPECT_EQ(increment[lane], 0.0);
}

} // namespace qlx::test
