// SPDX-License-Identifier: ISC
#include "engine/signal/Amplifier.h"

#include "engine/signal/BiquadLanes.h"

#include <algorithm>
#include <cmath>

namespace qlx::engine {

namespace {

struct ToneDesign {
  double hz;
  double q, boostQ; ///< at cut and flat, at boost
  double share;     ///< of the control's decibels
};
/// In the order of Tone, which is the order in the signal.
constexpr std::array<ToneDesign, 4> kTone = {{
    {2000, 1.0, 0.7, 1.0},
    {500, 1.0, 0.7, 1.0},
    {4500, 0.35, 0.35, 0.75},
    {80, 1.0, 1.0, 0.75},
}};

// The tracker of the drive's DC: 10.9 % of a step are left after half of this time.
constexpr double kTrackerSeconds = 0.1;
constexpr double kTrackerRest = 0.109;

} // namespace

Amplifier::Amplifier(const kernels::Kernels& kernels) : m_kernels(kernels) {
  for (std::size_t i = 0; i < kTone.size(); ++i) {
    m_tone[i].init(44100.0, Response::Peaking, kTone[i].hz, kTone[i].q, 0.0);
    m_tone[i].setEnabled(true);
  }
}

void Amplifier::setTrackerRate(double hz) noexcept {
  m_dcCoefficient = 1.0 - std::pow(kTrackerRest, 2.0 / (kTrackerSeconds * hz));
}

void Amplifier::setSampleRate(double hz) noexcept {
  for (Biquad& filter : m_tone) {
    filter.setSampleRate(hz);
    filter.setInstantUpdate(false);
  }
}

void Amplifier::clear() noexcept { m_dcTracker = 0.0; }

void Amplifier::setInstantUpdate() noexcept {
  for (Biquad& filter : m_tone) filter.setInstantUpdate(true);
}

void Amplifier::clearFilters() noexcept {
  for (Biquad& filter : m_tone) filter.clearState();
}

void Amplifier::setTone(Tone tone, double db) noexcept {
  const auto i = static_cast<std::size_t>(tone);
  const double q = db <= 0.0 ? kTone[i].q : kTone[i].boostQ, gain = db * kTone[i].share;
  if (!m_tone[i].standsAt(kTone[i].hz, q, gain)) m_tone[i].setFrequencyQGain(kTone[i].hz, q, gain);
}

void Amplifier::process(const SmoothedValues& settings, int n, SubBlock& samples) noexcept {
  const SubBlock& input = settings[Smoothed::InputGain];
  const SubBlock& drive = settings[Smoothed::DriveGain];
  const SubBlock& post = settings[Smoothed::PostDriveGain];
  const auto size = static_cast<std::size_t>(n);
  for (std::size_t k = 0; k < size; ++k) samples[k] *= input[k];
  if (m_type == Type::Tube)
    m_kernels.tube(drive.data(), m_dcCoefficient, m_dcTracker, samples.data(), n);
  if (m_type == Type::Solid) m_kernels.transistor(drive.data(), samples.data(), n);
  for (std::size_t k = 0; k < size; ++k) samples[k] *= post[k];
  if (allSettled(m_tone)) {
    ChainCopy<4> tone(m_tone);
    m_kernels.chainSeries(seriesOf(tone.lanes()), samples.data(), n);
  } else {
    for (Biquad& filter : m_tone) filter.processGlide({samples.data(), size});
  }
}

} // namespace qlx::engine
