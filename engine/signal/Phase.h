// SPDX-License-Identifier: ISC
#pragma once

#include <cstddef>
#include <numbers>
#include <span>

namespace qlx::engine {

inline constexpr double kTwoPi = 2.0 * std::numbers::pi;

/// Phases (0 .. 1) of n samples, each before its step of scale x speed, and the phase behind them.
/// A steady speed takes no sample-by-sample sum.
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
  double at = phase;
  for (std::size_t i = 0; i < n; ++i) {
    phases[i] = at;
    at = wrapped(at + scale * speeds[i]);
  }
  phase = at;
}

} // namespace qlx::engine
