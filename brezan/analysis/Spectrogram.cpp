// SPDX-License-Identifier: ISC
#include "brezan/analysis/Spectrogram.h"

#include <algorithm>
#include <cmath>
#include <complex>
#include <kissfft/kissfft.hh>
#include <numbers>

namespace qlx::tools {

namespace {

// Long enough to part semitones from about 400 Hz, short enough to show each turn of a fast rotor.
constexpr double kWindowSeconds = 0.093;
constexpr double kFloorPower = 1e-20;

// Power spectrum of a Hann window of even size, scaled so that a full-scale sine on a bin reads 1.
class WindowedPower {
 public:
  explicit WindowedPower(int size)
      : m_size(size), m_window(static_cast<std::size_t>(size)),
        m_in(static_cast<std::size_t>(size)), m_out(static_cast<std::size_t>(size) / 2),
        m_transform(static_cast<std::size_t>(size) / 2, false),
        m_power(static_cast<std::size_t>(size) / 2 + 1) {
    for (int i = 0; i < size; ++i)
      m_window[static_cast<std::size_t>(i)] =
          (1.0 - std::cos(2.0 * std::numbers::pi * i / size)) * 2.0 / size;
  }

  const std::vector<double>& at(std::span<const double> sound, long long centre) {
    for (int i = 0; i < m_size; ++i) {
      const long long from = centre + i - m_size / 2;
      const bool inside = from >= 0 && from < static_cast<long long>(sound.size());
      m_in[static_cast<std::size_t>(i)] =
          inside ? sound[static_cast<std::size_t>(from)] * m_window[static_cast<std::size_t>(i)]
                 : 0.0;
    }
    m_transform.transform_real(m_in.data(), m_out.data());
    for (std::size_t k = 1; k < m_out.size(); ++k) m_power[k] = std::norm(m_out[k]);
    // The amplitudes at 0 Hz and at half the rate are real; they share the first place.
    m_power.front() = m_out.front().real() * m_out.front().real();
    m_power.back() = m_out.front().imag() * m_out.front().imag();
    return m_power;
  }

 private:
  int m_size;
  std::vector<double> m_window;
  std::vector<double> m_in;
  std::vector<std::complex<double>> m_out;
  kissfft<double> m_transform;
  std::vector<double> m_power;
};

// The strongest of the bins that a row covers; between bins, where rows are narrower than bins,
// a straight line.
double rowPower(const std::vector<double>& power, double from, double to) {
  const double last = static_cast<double>(power.size() - 1);
  const double middle = std::clamp(0.5 * (from + to), 0.0, last);
  const auto below = static_cast<std::size_t>(middle);
  const double part = middle - std::floor(middle);
  const double upper = power[std::min(below + 1, power.size() - 1)];
  double result = power[below] + part * (upper - power[below]);
  for (auto k = static_cast<std::size_t>(std::ceil(from));
       k < power.size() && static_cast<double>(k) < to; ++k)
    result = std::max(result, power[k]);
  return result;
}

} // namespace

Spectrogram spectrogram(std::span<const double> sound, double rate, const SpectrogramRange& range) {
  int size = 64;
  while (size < kWindowSeconds * rate * 0.75) size *= 2;
  WindowedPower analysis(size);
  Spectrogram result{range.columns, range.rows, {}};
  result.level.reserve(static_cast<std::size_t>(range.columns) *
                       static_cast<std::size_t>(range.rows));
  const double octaves = std::log2(range.highestHz / range.lowestHz);
  const auto bin = [&](double row) {
    return range.lowestHz * std::exp2(octaves * row / range.rows) * size / rate;
  };
  for (int column = 0; column < range.columns; ++column) {
    const double centre =
        (column + 0.5) * static_cast<double>(sound.size()) / static_cast<double>(range.columns);
    const std::vector<double>& power = analysis.at(sound, std::llround(centre));
    for (int row = 0; row < range.rows; ++row) {
      const double p = rowPower(power, bin(row), bin(row + 1));
      result.level.push_back(static_cast<float>(10.0 * std::log10(std::max(p, kFloorPower))));
    }
  }
  return result;
}

} // namespace qlx::tools
