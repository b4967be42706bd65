// SPDX-License-Identifier: ISC
#pragma once

#include <array>
#include <cmath>
#include <cstddef>
#include <numbers>
#include <span>

namespace qlx::engine {

inline constexpr double kTwoPi = 2.0 * std::numbers::pi;
inline constexpr double kHalfPi = 0.5 * std::numbers::pi;

/// Metres a second, in air of about 15 degrees Celsius, and its reciprocal (delay in seconds of one
/// metre).
inline constexpr double kSpeedOfSound = 340.29;
inline constexpr double kInverseSpeedOfSound = 0.0029386699579770194;

/// Host samples between two updates of what follows the rotors' angle slowly (filters of the rays).
inline constexpr int kUpdateInterval = 16;

/// Longest stretch, in engine samples, that the stages work on at a time. The stages only feed
/// forward, so each runs over the whole stretch before the next begins.
inline constexpr int kRun = 64;

/// One value a sample of a stretch.
using RunBuffer = std::array<double, kRun>;

/// Takes a recursive state out of the range of subnormal numbers: what is far below the constant
/// becomes exactly zero.
inline double flushed(double state) noexcept { return (state + 1e-12) - 1e-12; }

/// One-pole low-pass y = (y - x) p + x; the pole p comes from one of the laws below.
struct OnePole {
  double state = 0.0;

  /// Runs over samples in place.
  void process(std::span<double> run, double pole) noexcept {
    const double rest = 1.0 - pole;
    double y = state;
    for (double& x : run) x = y = y * pole + x * rest;
    state = flushed(y);
  }
};

/// Runs two low-passes over a signal each, in place; together they take the time of one.
inline void processPair(OnePole& a, double* runA, double poleA, OnePole& b, double* runB,
                        double poleB, std::size_t n) noexcept {
  const double restA = 1.0 - poleA, restB = 1.0 - poleB;
  double yA = a.state, yB = b.state;
  for (std::size_t k = 0; k < n; ++k) {
    yA = yA * poleA + runA[k] * restA;
    yB = yB * poleB + runB[k] * restB;
    runA[k] = yA;
    runB[k] = yB;
  }
  a.state = flushed(yA);
  b.state = flushed(yB);
}

/// Pole of a one-pole low-pass at cut-off f (impulse invariance).
inline double lowPassPole(double hz, double sampleRate) noexcept {
  return std::exp(-kTwoPi * hz / sampleRate);
}

/// Pole of the cabinet's softer filters: the step response has settled to 0.5 % one period of f
/// later.
inline double settlingPole(double hz, double sampleRate) noexcept {
  return std::pow(0.005, hz / sampleRate);
}

/// Share of the remaining distance that an exponential approach of time constant t covers in one
/// sample.
inline double approachCoefficient(double seconds, double sampleRate) noexcept {
  return 1.0 - std::exp(-1.0 / (seconds * sampleRate));
}

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
