// SPDX-License-Identifier: ISC
#include "resources/recordings/Analysis.h"

#include <algorithm>
#include <bit>
#include <cmath>
#include <kissfft/kissfft.hh>
#include <numbers>

namespace qlx::recordings {

namespace {

using Spectrum = std::vector<std::complex<double>>;

// The discrete Fourier transform of any length, by a convolution with a chirp (Bluestein 1970): the
// loops' lengths are primes or have large factors. The inverse is not divided by the length.
Spectrum transformed(const Spectrum& in, bool inverse) {
  const std::size_t length = in.size();
  const std::size_t period = 2 * length; // of the chirp
  if (period == 0) return {};
  const std::size_t padded = std::bit_ceil(period);
  const double step = (inverse ? 1.0 : -1.0) * std::numbers::pi / static_cast<double>(length);
  Spectrum chirp(length), product(padded), mirrored(padded), out(padded);
  for (std::size_t n = 0; n < length; ++n) {
    chirp[n] = std::polar(1.0, step * static_cast<double>(n * n % period));
    product[n] = in[n] * chirp[n];
    mirrored[n] = std::conj(chirp[n]);
    if (n > 0) mirrored[padded - n] = mirrored[n];
  }
  const kissfft<double> forward(padded, false);
  forward.transform(product.data(), out.data());
  forward.transform(mirrored.data(), product.data());
  for (std::size_t k = 0; k < padded; ++k) product[k] *= out[k] / static_cast<double>(padded);
  kissfft<double>(padded, true).transform(product.data(), out.data());
  out.resize(length);
  for (std::size_t k = 0; k < length; ++k) out[k] *= chirp[k];
  return out;
}

Spectrum transform(const Signal& signal) {
  Spectrum spectrum = transformed({signal.begin(), signal.end()}, false);
  spectrum.resize(signal.size() / 2 + 1);
  return spectrum;
}

Signal inverse(Spectrum spectrum, std::size_t length) {
  const std::size_t half = spectrum.size();
  spectrum.resize(length);
  for (std::size_t k = half; k < length; ++k) spectrum[k] = std::conj(spectrum[length - k]);
  Signal signal;
  for (const auto& x : transformed(spectrum, true))
    signal.push_back(x.real() / static_cast<double>(length));
  return signal;
}

} // namespace

std::vector<std::complex<double>> periodsOfLoop(const Signal& loop) {
  Spectrum spectrum = transform(loop);
  for (auto& amplitude : spectrum) amplitude *= 2.0 / static_cast<double>(loop.size());
  spectrum.front() *= 0.5;
  return spectrum;
}

Signal envelopeOf(const Signal& loop, double fromHz, double smoothHz) {
  Signal level = filtered(loop, Response::highPass, fromHz, 0.7);
  level = filtered(level, Response::highPass, fromHz, 0.7);
  for (double& x : level) x = std::abs(x);
  Spectrum spectrum = transform(level);
  const auto last =
      static_cast<std::size_t>(smoothHz * static_cast<double>(loop.size()) / kSampleRate);
  for (std::size_t k = last + 1; k < spectrum.size(); ++k) spectrum[k] = 0.0;
  return inverse(std::move(spectrum), loop.size());
}

std::vector<double> autocorrelation(const Signal& loop) {
  Spectrum spectrum = transform(loop);
  for (auto& amplitude : spectrum) amplitude = std::norm(amplitude);
  spectrum.front() = 0.0;
  Signal likeness = inverse(std::move(spectrum), loop.size());
  const double whole = likeness.front();
  for (double& x : likeness) x /= whole;
  return likeness;
}

std::vector<BandLevel> thirdOctaves(const Signal& loop) {
  const Spectrum periods = periodsOfLoop(loop);
  std::vector<BandLevel> bands;
  for (int n = -16; n <= 12; ++n) {
    const double hz = 1000.0 * std::exp2(n / 3.0);
    const double periodsPerHz = static_cast<double>(loop.size()) / kSampleRate;
    const auto from =
        static_cast<std::size_t>(std::ceil(hz * std::exp2(-1.0 / 6.0) * periodsPerHz));
    const auto to = static_cast<std::size_t>(std::ceil(hz * std::exp2(1.0 / 6.0) * periodsPerHz));
    double power = 0.0;
    for (std::size_t k = from; k < std::min(to, periods.size()); ++k)
      power += std::norm(periods[k]);
    bands.push_back({hz, 10.0 * std::log10(power + 1e-15)});
  }
  return bands;
}

} // namespace qlx::recordings
