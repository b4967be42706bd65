// SPDX-License-Identifier: ISC
#pragma once

#include <cstddef>
#include <numbers>
#include <span>

namespace qlx::engine {

inline constexpr double kTwoPi = 2.0 * std::numbers::pi;

/// Phases (0 .. 1) of n samples, each before its step of scale x speed, and the phase behind them:
/// less than a turn away. The sum is wrapped behind the loop that takes it, which is the only one
/// in which a sample waits for the last one; a steady speed takes none.
inline void advanceTurns(double& phase, double scale, std::span<const double> speeds,
                         std::span<double> phases) noexcept {
  const std::size_t n = speeds.size();
  const auto wrapped = [](double x) {
    x -= x >= 1.0 ? 1.0 : 0.0;
    return x + (x < 0.0 ? 1.0 : 0.0);
  };
  if (n > 0 && speeds.front() == speeds.back()) {
    const double step = scale * speeds.front();
    for (std::size_t i = 0; i < n; ++i)
      phases[i] = wrapped(phase + static_cast<double>(static_cast<int>(i)) * step);
    phase = wrapped(phase + static_cast<double>(static_cast<int>(n)) * step);
    return;
  }
  double sum = 0.0;
  for (std::size_t i = 0; i < n; ++i) {
    phases[i] = sum;
    sum += speeds[i];
  }
  for (std::size_t i = 0; i < n; ++i) phases[i] = wrapped(phase + scale * phases[i]);
  phase = wrapped(phase + scale * sum);
}

} // namespace qlx::engine
