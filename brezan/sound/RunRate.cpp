// SPDX-License-Identifier: ISC
#include "brezan/sound/RunRate.h"

#include <cmath>
#include <initializer_list>

namespace qlx::tools {

namespace {

constexpr double kLowest = 44100.0;
constexpr double kTooHigh = 50000.0;
constexpr double kHighest = 192000.0;

} // namespace

double runRateFor(double hz) {
  for (const double octave : {1.0, 2.0, 4.0})
    if (hz >= octave * kLowest && hz < octave * kTooHigh && hz <= kHighest) return hz;
  const double rate = hz < kLowest ? hz * std::ceil(kLowest / hz) : hz / std::floor(hz / kLowest);
  return rate < kTooHigh ? rate : 48000.0;
}

} // namespace qlx::tools
