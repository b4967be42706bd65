// SPDX-License-Identifier: ISC
#include "resources/recordings/Signal.h"

#include "resources/recordings/ExactMath.h"
#include "resources/recordings/Random.h"

#include <cmath>

namespace qlx::recordings {

namespace {

/// A state-variable filter by trapezoidal integration: two integrators in a loop, stable for every
/// setting and with the exact centre frequency.
class TwoPole {
 public:
  TwoPole(double hz, double q) : m_damping(1.0 / q) {
    const double halfTurn = 0.5 * hz / kSampleRate;
    const double g = sineOfTurns(halfTurn) / cosineOfTurns(halfTurn);
    m_a1 = 1.0 / (1.0 + g * (g + m_damping));
    m_a2 = g * m_a1;
    m_a3 = g * m_a2;
  }

  struct Outputs {
    double low;
    double band;
    double high;
  };

  Outputs tick(double x) {
    const double difference = x - m_second;
    const double band = m_a1 * m_first + m_a2 * difference;
    const double low = m_second + m_a2 * m_first + m_a3 * difference;
    m_first = 2.0 * band - m_first;
    m_second = 2.0 * low - m_second;
    return {low, m_damping * band, x - m_damping * band - low};
  }

 private:
  double m_damping;
  double m_a1;
  double m_a2;
  double m_a3;
  double m_first = 0.0;
  double m_second = 0.0;
};

} // namespace

Signal filtered(const Signal& input, Response response, double hz, double q, Start start) {
  TwoPole filter(hz, q);
  if (start == Start::periodic) {
    for (const double x : input) filter.tick(x);
  }
  Signal output(input.size());
  for (std::size_t i = 0; i < input.size(); ++i) {
    const TwoPole::Outputs out = filter.tick(input[i]);
    output[i] = response == Response::lowPass    ? out.low
                : response == Response::bandPass ? out.band
                                                 : out.high;
  }
  return output;
}

Signal whiteNoise(std::size_t length, std::uint64_t seed) {
  Random random(seed);
  Signal noise(length);
  for (double& x : noise) x = random.bell();
  return noise;
}

double meanOf(const Signal& signal) {
  double sum = 0.0;
  for (const double x : signal) sum += x;
  return sum / static_cast<double>(signal.size());
}

double rmsOf(const Signal& signal) {
  double sum = 0.0;
  for (const double x : signal) sum += x * x;
  return std::sqrt(sum / static_cast<double>(signal.size()));
}

void mix(Signal& target, const Signal& source, double gain) {
  for (std::size_t i = 0; i < target.size(); ++i) target[i] += source[i] * gain;
}

void modulate(Signal& target, const Signal& envelope) {
  for (std::size_t i = 0; i < target.size(); ++i) target[i] *= envelope[i];
}

void setRms(Signal& signal, double rms) {
  const double mean = meanOf(signal);
  for (double& x : signal) x -= mean;
  const double gain = rms / rmsOf(signal);
  for (double& x : signal) x *= gain;
}

Signal mixture(const std::vector<Share>& shares) {
  Signal sum(shares.front().sound.size());
  for (const Share& share : shares) mix(sum, share.sound, gainOfDb(share.db));
  return sum;
}

} // namespace qlx::recordings
