// SPDX-License-Identifier: ISC
#pragma once

#include "engine/signal/Denormals.h"

#include <cmath>
#include <cstddef>
#include <numbers>
#include <span>

namespace qlx::engine {

/// One-pole low-pass y = (y - x) p + x; the pole p comes from one of the laws below.
struct OnePole {
  double state = 0.0;

  /// Runs over samples in place.
  void process(std::span<double> samples, double pole) noexcept {
    const double rest = 1.0 - pole;
    double y = state;
    for (double& x : samples) x = y = y * pole + x * rest;
    state = flushDenormals(y);
  }
};

/// Runs two low-passes over a signal each, in place; together they take the time of one.
inline void processPair(OnePole& a, double* samplesA, double poleA, OnePole& b, double* samplesB,
                        double poleB, std::size_t n) noexcept {
  const double restA = 1.0 - poleA, restB = 1.0 - poleB;
  double yA = a.state, yB = b.state;
  for (std::size_t k = 0; k < n; ++k) {
    yA = yA * poleA + samplesA[k] * restA;
    yB = yB * poleB + samplesB[k] * restB;
    samplesA[k] = yA;
    samplesB[k] = yB;
  }
  a.state = flushDenormals(yA);
  b.state = flushDenormals(yB);
}

/// Pole of a one-pole low-pass at cut-off f (impulse invariance).
inline double lowPassPole(double hz, double sampleRate) noexcept {
  return std::exp(-2.0 * std::numbers::pi * hz / sampleRate);
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

} // namespace qlx::engine
