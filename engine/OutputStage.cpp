#include "engine/OutputStage.h"

#include <algorithm>

namespace qlx::engine {

namespace {

constexpr double kHighPassQ = 0.5;
constexpr double kMixGain = 0.50118723362; // -6 dB

} // namespace

OutputStage::OutputStage(const kernels::Kernels& kernels) : m_pairs(kernels) {
  for (Biquad& filter : m_highPass) {
    filter.init(m_sampleRate, Response::HighPass, m_hornHighPassHz, kHighPassQ, 0);
    filter.setEnabled(true);
  }
}

double OutputStage::inRange(double hz) const noexcept {
  return std::clamp(hz, 20.0, m_sampleRate * 0.5);
}

void OutputStage::setSampleRate(double hz) noexcept {
  m_sampleRate = hz;
  for (Biquad& filter : m_highPass) filter.setSampleRate(hz);
  setHornHighPass(m_hornHighPassHz);
  for (Biquad& filter : m_highPass) filter.setInstantUpdate(false);
  setDrumLowPass(m_drumLowPassHz);
}

void OutputStage::setHornHighPass(double hz) noexcept {
  m_hornHighPassHz = hz;
  for (Biquad& filter : m_highPass) filter.setFrequency(inRange(hz));
}

void OutputStage::setDrumLowPass(double hz) noexcept {
  m_drumLowPassHz = hz;
  m_drumPole = settlingPole(inRange(hz), m_sampleRate);
}

void OutputStage::clear() noexcept { m_drumLowPass = {}; }

void OutputStage::clearFilters() noexcept {
  for (Biquad& filter : m_highPass) filter.clearState();
}

void OutputStage::setInstantUpdate() noexcept {
  for (Biquad& filter : m_highPass) filter.setInstantUpdate(true);
}

void OutputStage::process(RunBuffer& horn1, RunBuffer& horn2, const RunBuffer& drum,
                          const SmoothedRun& s, int n, RunBuffer& left, RunBuffer& right) noexcept {
  RunBuffer filtered1 = horn1, filtered2 = horn2;
  m_pairs.process({&m_highPass[0], 1}, {&m_highPass[1], 1}, n, filtered1, filtered2);
  const RunBuffer& highPassShare = s[Smoothed::HornHighPassOn];
  const RunBuffer& lowPassShare = s[Smoothed::DrumLowPassOn];
  for (std::size_t k = 0; k < static_cast<std::size_t>(n); ++k) {
    horn1[k] += highPassShare[k] * (filtered1[k] - horn1[k]);
    horn2[k] += highPassShare[k] * (filtered2[k] - horn2[k]);
  }
  for (std::size_t k = 0; k < static_cast<std::size_t>(n); ++k) {
    const double filtered = m_drumLowPass.next(drum[k], m_drumPole);
    const double out = (1.0 - lowPassShare[k]) * drum[k] + lowPassShare[k] * filtered;
    left[k] = (horn2[k] * s[Smoothed::Mic2PanLeft][k] + horn1[k] * s[Smoothed::Mic1PanLeft][k] +
               out * s[Smoothed::DrumPanLeft][k]) *
              kMixGain;
    right[k] = (horn2[k] * s[Smoothed::Mic2PanRight][k] + horn1[k] * s[Smoothed::Mic1PanRight][k] +
                out * s[Smoothed::DrumPanRight][k]) *
               kMixGain;
  }
}

} // namespace qlx::engine
