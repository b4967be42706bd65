// SPDX-License-Identifier: ISC
#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

namespace qlx::recordings {

/// Sampling rate of every recording, Hz.
inline constexpr double kSampleRate = 44100.0;

/// A stretch of sound at kSampleRate. A loop is a stretch whose last sample is followed by its
/// first.
using Signal = std::vector<double>;

/// How a filter meets the start of its input.
enum class Start {
  periodic, ///< as if the loop had been running for ever: the result is again a seamless loop
  atRest    ///< from silence
};

/// Output of a two-pole filter.
enum class Response {
  lowPass,
  bandPass, ///< 0 dB at the centre
  highPass
};

/// The input through a two-pole filter; frequency in Hz below 15000, Q above 0.
/// Start::periodic warms the filter up with one pass over the loop, enough for every decay
/// (Q / (pi hz) seconds) much shorter than the loop.
Signal filtered(const Signal& input, Response response, double hz, double q,
                Start start = Start::periodic);

/// White noise of unit level.
Signal whiteNoise(std::size_t length, std::uint64_t seed);

double meanOf(const Signal& signal);
double rmsOf(const Signal& signal);

/// target += source x gain; equal lengths.
void mix(Signal& target, const Signal& source, double gain);

/// target x= envelope; equal lengths.
void modulate(Signal& target, const Signal& envelope);

/// Removes the mean and scales to the level.
void setRms(Signal& signal, double rms);

/// A sound and its level in a mixture.
struct Share {
  Signal sound;
  double db;
};

/// The sum of sounds of equal lengths.
Signal mixture(const std::vector<Share>& shares);

} // namespace qlx::recordings
