#include "engine/OutputStage.h"

#include <algorithm>

namespace qlx::engine {

namespace {

constexpr double kHighPassQ = 0.5;
constexpr double kMixGain = 0.50118723362; // -6 dB

} // namespace

OutputStage::OutputStage() {
  for (Biquad* filter : {&m_highPass1, &m_highPass2}) {
    filter->init(m_sampleRate, Response::HighPass, m_hornHighPassHz, kHighPassQ, 0);
    filter->setEnabled(true);
  }
}

double OutputStage::inRange(double hz) const noexcept {
  return std::clamp(hz, 20.0, m_sampleRate * 0.5);
}

void OutputStage::setSampleRate(double hz) noexcept {
  m_sampleRate = hz;
  for (Biquad* filter : {&m_highPass1, &m_highPass2}) filter->setSampleRate(hz);
  setHornHighPass(m_hornHighPassHz);
  for (Biquad* filter : {&m_highPass1, &m_highPass2}) filter->setInstantUpdate(false);
  setDrumLowPass(m_drumLowPassHz);
}

void OutputStage::setHornHighPass(double hz) noexcept {
  m_hornHighPassHz = hz;
  m_highPass1.setFrequency(inRange(hz));
  m_highPass2.setFrequency(inRange(hz));
}

void OutputStage::setDrumLowPass(double hz) noexcept {
  m_drumLowPassHz = hz;
  m_drumPole = settlingPole(inRange(hz), m_sampleRate);
}

void OutputStage::clear() noexcept { m_drumLowPass = {}; }

void OutputStage::clearFilters() noexcept {
  m_highPass1.clearState();
  m_highPass2.clearState();
}

void OutputStage::setInstantUpdate() noexcept {
  m_highPass1.setInstantUpdate(true);
  m_highPass2.setInstantUpdate(true);
}

void OutputStage::filterHorn(Biquad& highPass, const RunBuffer& share, int n,
                             RunBuffer& horn) const noexcept {
  RunBuffer filtered = horn;
  highPass.processGlide({filtered.data(), static_cast<std::size_t>(n)});
  for (std::size_t k = 0; k < static_cast<std::size_t>(n); ++k)
    horn[k] = (1.0 - share[k]) * horn[k] + share[k] * filtered[k];
}

void OutputStage::process(RunBuffer& horn1, RunBuffer& horn2, const RunBuffer& drum,
                          const SmoothedRun& s, int n, RunBuffer& left, RunBuffer& right) noexcept {
  filterHorn(m_highPass1, s[Smoothed::HornHighPassOn], n, horn1);
  filterHorn(m_highPass2, s[Smoothed::HornHighPassOn], n, horn2);
  const RunBuffer& lowPassShare = s[Smoothed::DrumLowPassOn];
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
