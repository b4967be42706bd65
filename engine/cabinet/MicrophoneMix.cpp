// SPDX-License-Identifier: ISC
#include "engine/cabinet/MicrophoneMix.h"

#include <algorithm>

namespace qlx::engine {

namespace {

constexpr double kHighPassQ = 0.5;

} // namespace

MicrophoneMix::MicrophoneMix(const kernels::Kernels& kernels)
    : m_kernels(kernels), m_pairs(kernels) {
  for (Biquad& filter : m_highPass) {
    filter.init(m_sampleRate, Response::HighPass, m_hornHighPassHz, kHighPassQ, 0);
    filter.setEnabled(true);
  }
}

double MicrophoneMix::inRange(double hz) const noexcept {
  return std::clamp(hz, 20.0, m_sampleRate * 0.5);
}

void MicrophoneMix::setSampleRate(double hz) noexcept {
  m_sampleRate = hz;
  for (Biquad& filter : m_highPass) filter.setSampleRate(hz);
  setHornHighPass(m_hornHighPassHz);
  for (Biquad& filter : m_highPass) filter.setInstantUpdate(false);
  setDrumLowPass(m_drumLowPassHz);
}

void MicrophoneMix::setHornHighPass(double hz) noexcept {
  m_hornHighPassHz = hz;
  for (Biquad& filter : m_highPass) filter.setFrequency(inRange(hz));
}

void MicrophoneMix::setDrumLowPass(double hz) noexcept {
  m_drumLowPassHz = hz;
  m_drumPole = settlingPole(inRange(hz), m_sampleRate);
}

void MicrophoneMix::clear() noexcept { m_drumLowPass = {}; }

void MicrophoneMix::clearFilters() noexcept {
  for (Biquad& filter : m_highPass) filter.clearState();
}

void MicrophoneMix::setInstantUpdate() noexcept {
  for (Biquad& filter : m_highPass) filter.setInstantUpdate(true);
}

void MicrophoneMix::process(const kernels::MixSignals& signals, const kernels::MixGains& gains,
                            const SmoothedValues& s, int n, SubBlock& left,
                            SubBlock& right) noexcept {
  SubBlock horn1, horn2, drum;
  std::copy_n(signals.horn1, kSubBlock, horn1.begin());
  std::copy_n(signals.horn2, kSubBlock, horn2.begin());
  std::copy_n(signals.drum, kSubBlock, drum.begin());
  m_pairs.process({&m_highPass[0], 1}, {&m_highPass[1], 1}, n, horn1, horn2);
  m_drumLowPass.process({drum.data(), static_cast<std::size_t>(n)}, m_drumPole);
  const kernels::MixFilters filters{horn1.data(), horn2.data(), drum.data(),
                                    s[Smoothed::HornHighPassOn].data(),
                                    s[Smoothed::DrumLowPassOn].data()};
  m_kernels.mixOutput(signals, gains, filters, left.data(), right.data(), n);
}

} // namespace qlx::engine
