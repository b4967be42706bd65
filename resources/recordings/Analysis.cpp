// SPDX-License-Identifier: ISC
#include "resources/recordings/Analysis.h"

#include <algorithm>
#include <cmath>
#include <fftw3.h>
#include <memory>
#include <type_traits>

namespace qlx::recordings {

namespace {

struct PlanDeleter {
  void operator()(fftw_plan plan) const { fftw_destroy_plan(plan); }
};
using Plan = std::unique_ptr<std::remove_pointer_t<fftw_plan>, PlanDeleter>;

using Spectrum = std::vector<std::complex<double>>;

fftw_complex* raw(Spectrum& spectrum) { return reinterpret_cast<fftw_complex*>(spectrum.data()); }

Spectrum transform(Signal signal) {
  Spectrum spectrum(signal.size() / 2 + 1);
  const Plan plan(fftw_plan_dft_r2c_1d(static_cast<int>(signal.size()), signal.data(),
                                       raw(spectrum), FFTW_ESTIMATE));
  fftw_execute(plan.get());
  return spectrum;
}

Signal inverse(Spectrum spectrum, std::size_t length) {
  Signal signal(length);
  const Plan plan(
      fftw_plan_dft_c2r_1d(static_cast<int>(length), raw(spectrum), signal.data(), FFTW_ESTIMATE));
  fftw_execute(plan.get());
  for (double& x : signal) x /= static_cast<double>(length);
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
