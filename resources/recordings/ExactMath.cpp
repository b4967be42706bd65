// SPDX-License-Identifier: ISC
#include "resources/recordings/ExactMath.h"

#include <cmath>
#include <numbers>

namespace qlx::recordings {

double sineOfTurns(double turns) {
  double t = turns - std::floor(turns); // 0 .. 1
  if (t > 0.75) {
    t -= 1.0;
  } else if (t > 0.25) {
    t = 0.5 - t;
  }
  const double x = 2.0 * std::numbers::pi * t; // within a quarter turn of 0
  const double square = x * x;
  // Power series, innermost term first: 1 - x^2/(2 3) (1 - x^2/(4 5) ( ... )).
  double series = 1.0;
  for (int n = 20; n >= 2; n -= 2) series = 1.0 - series * square / (n * (n + 1.0));
  return x * series;
}

double cosineOfTurns(double turns) { return sineOfTurns(turns + 0.25); }

double exponential(double x) {
  const double octaves = std::floor(x / std::numbers::ln2 + 0.5);
  const double rest = x - octaves * std::numbers::ln2; // within half an octave of 0
  double series = 1.0;
  for (int n = 16; n >= 1; --n) series = 1.0 + series * rest / n;
  return std::ldexp(series, static_cast<int>(octaves));
}

double gainOfDb(double db) { return exponential(db * (std::numbers::ln10 / 20.0)); }

} // namespace qlx::recordings
