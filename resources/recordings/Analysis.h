// SPDX-License-Identifier: ISC
#pragma once

#include "resources/recordings/Signal.h"

#include <complex>
#include <span>
#include <vector>

namespace qlx::recordings {

// Measurements on recordings, for the tests and the picture. They need not be exact to the bit.

/// One pass of a loop as sines of 0, 1, 2 ... periods, up to half its length: their complex
/// amplitudes (peak; the angle is that of a cosine at the first sample).
std::vector<std::complex<double>> periodsOfLoop(const Signal& loop);

/// The level of a sound over time: magnitude of what lies above fromHz, smoothed below smoothHz.
Signal envelopeOf(const Signal& loop, double fromHz, double smoothHz);

/// Likeness of a loop to itself at every shift, 1 at shift 0.
std::vector<double> autocorrelation(const Signal& loop);

/// Level of a third of an octave, dB below a sine of full scale.
struct BandLevel {
  double hz;
  double db;
};
/// 25 Hz to 16 kHz.
std::vector<BandLevel> thirdOctaves(const Signal& loop);

} // namespace qlx::recordings
