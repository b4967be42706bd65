// SPDX-License-Identifier: ISC
#include "engine/SignalPath.h"

#include "engine/signal/Denormals.h"
#include "engine/signal/OnePole.h"

#include <algorithm>
#include <cmath>
#include <numbers>

namespace qlx::engine {

namespace {

constexpr double kFadeSeconds =
    0.020000000949949026;                   // the single-precision number nearest to 20 ms
constexpr double kFadedOut = 0.96837722339; // the cabinet is 30 dB down
constexpr double kFadedIn = 0.0316227766;   // the dry signal is 30 dB down
constexpr double kDryHz = 3000.0;           // the dry signal is no brighter than the cabinet

/// How far above the engine rate the image filters' corner lies; for a host rate of 44100 Hz.
constexpr double kImageFilterOffsetHz = 20.0;

/// Highest setting of the drum's low-pass, Hz; stands for "off" as well.
constexpr double kOpenLowPassHz = 100000.0;

bool allFinite(const SubBlock& samples, int n) {
  // Infinite and not a number times zero are not a number, and so is every sum with them.
  double sum = 0.0;
  for (int j = 0; j < n; ++j) sum += samples[static_cast<std::size_t>(j)] * 0.0;
  return sum == 0.0;
}

/// Host samples per engine sample, or 0 where the previous configuration is kept.
int factorFor(double hostRate, CpuMode mode) {
  const int coarse = hostRate < 50000.0 ? 2 : hostRate < 100000.0 ? 4 : hostRate < 200000.0 ? 8 : 0;
  return mode == CpuMode::Brilliant ? coarse / 2 : coarse;
}

double panGain(double share) { return std::sin(share * 0.5 * std::numbers::pi); }

RotorReadout::Rotor readoutOf(const RotorMotion& motion) {
  return {motion.phase(), motion.phaseSpeed()};
}

} // namespace

double SignalPath::Fade::step(double coefficient) noexcept {
  const double next = flushDenormals(level + (target - level) * coefficient);
  // What is nearer to the target than any sample can tell has arrived.
  level = std::abs(target - next) < 1e-12 ? target : next;
  return level;
}

SignalPath::SignalPath(const Recordings& recordings)
    : m_kernels(kernels::chooseKernels()), m_amplifier(m_kernels), m_converter(m_kernels),
      m_cabinet(recordings, m_kernels) {
  updateRateCoefficients();
  m_settings.setTarget(Smoothed::NoisePanB, 1.0);
}

void SignalPath::setTone(Amplifier::Tone tone, double db) noexcept {
  m_toneDb[static_cast<std::size_t>(tone)] = db;
  m_toneChanged = true;
}

void SignalPath::setColorMidDb(double db) noexcept {
  m_colorMidDb = db;
  m_toneChanged = true;
}

void SignalPath::setColorLowDb(double db) noexcept {
  m_colorLowDb = db;
  m_toneChanged = true;
}

void SignalPath::setHornHighPass(double hz) noexcept {
  m_cabinet.microphoneMix().setHornHighPass(hz);
  m_settings.setTarget(Smoothed::HornHighPassOn, hz > 0.0 ? 1.0 : 0.0);
}

void SignalPath::setDrumLowPass(double hz) noexcept {
  m_cabinet.microphoneMix().setDrumLowPass(hz > 0.0 ? hz : kOpenLowPassHz);
  m_settings.setTarget(Smoothed::DrumLowPassOn, hz > 0.0 ? 1.0 : 0.0);
}

void SignalPath::setPan(Smoothed left, Smoothed right, double position) noexcept {
  m_settings.setTarget(left, panGain(1.0 - position));
  m_settings.setTarget(right, panGain(position));
}

void SignalPath::updateTone() noexcept {
  if (!m_toneChanged) return;
  m_toneChanged = false;
  for (std::size_t i = 0; i < m_toneDb.size(); ++i)
    m_amplifier.setTone(static_cast<Amplifier::Tone>(i), m_toneDb[i]);
  m_cabinet.microphoneMix().setColor(m_colorMidDb, m_colorLowDb);
}

bool SignalPath::isFadedOut() const noexcept { return m_mute.level > kFadedOut; }

bool SignalPath::isFadedIn() const noexcept { return m_mute.level < kFadedIn; }

void SignalPath::setupEngineRate(CpuMode mode) noexcept {
  if (const int factor = factorFor(m_hostRate, mode)) {
    m_engineFactor = factor;
    m_engineRate = m_hostRate / factor;
    m_converter.setFactor(factor);
  }
  m_cabinet.setModelRates(m_engineRate, m_engineFactor);
  clearState();
  updateFilterRates();
}

void SignalPath::rebuildGeometry() noexcept {
  m_cabinet.rebuildHorn1();
  m_cabinet.rebuildHorn2();
  m_cabinet.rebuildReducedHorn();
  m_cabinet.rebuildDrum();
  m_cabinet.rebuildReducedDrum();
}

void SignalPath::resume(CpuMode mode) noexcept {
  setupEngineRate(mode);
  m_amplifier.setInstantUpdate();
  m_converter.setInstantUpdate();
  m_cabinet.setInstantUpdate();
  m_cabinet.clearCrossRings();
  m_converter.clear();
}

void SignalPath::reset(CpuMode mode) noexcept {
  m_converter.restartCounter();
  setupEngineRate(mode);
  m_settings.snap();
  updateRateCoefficients();
  m_cabinet.clearCrossRings();
  m_cabinet.computeRoomTaps();
  m_cabinet.clearRoom();
  m_converter.clear();
  m_cabinet.hornSettings.ampClip = m_cabinet.distanceAmpClip;
}

void SignalPath::updateRateCoefficients() noexcept {
  m_settings.setSampleRate(m_hostRate);
  m_amplifier.setTrackerRate(m_hostRate);
  m_fadeCoefficient = approachCoefficient(kFadeSeconds, m_hostRate);
}

void SignalPath::clearState() noexcept {
  m_amplifier.clear();
  m_amplifier.setInstantUpdate();
  m_dryLeft = {};
  m_dryRight = {};
  m_converter.setInstantUpdate();
  if (m_engineRate < m_hostRate)
    m_converter.setImageFrequency(m_engineRate + m_hostRate * kImageFilterOffsetHz / 44100.0);
  m_cabinet.clearState();
}

void SignalPath::updateFilterRates() noexcept {
  m_amplifier.setSampleRate(m_hostRate);
  m_converter.setHostRate(m_hostRate);
  m_dryPole = lowPassPole(kDryHz, m_engineRate);
  m_cabinet.updateFilterRates(m_engineRate);
}

void SignalPath::recover() noexcept {
  m_cabinet.clearEverything();
  m_converter.clear();
  m_converter.clearFilters();
  m_amplifier.clearFilters();
  clearState();
  m_settings.snap();
  m_mute.level = std::isfinite(m_mute.level) ? m_mute.level : 1.0;
  m_bypass.level = std::isfinite(m_bypass.level) ? m_bypass.level : m_bypass.target;
}

void SignalPath::blend(HostSubBlock& s, const SubBlock& inputGain, const SubBlock& wetLeft,
                       const SubBlock& wetRight) noexcept {
  const auto size = static_cast<std::size_t>(s.n);
  SubBlock dryLeft, dryRight;
  for (std::size_t k = 0; k < size; ++k) {
    dryLeft[k] = inputGain[k] * s.in0[k] * 0.5;
    dryRight[k] = inputGain[k] * s.in1[k] * 0.5;
  }
  processPair(m_dryLeft, dryLeft.data(), m_dryPole, m_dryRight, dryRight.data(), m_dryPole, size);
  if (m_mute.isOff() && m_bypass.isOff()) {
    std::copy_n(wetLeft.begin(), size, s.out0.begin());
    std::copy_n(wetRight.begin(), size, s.out1.begin());
    return;
  }
  for (std::size_t k = 0; k < size; ++k) {
    const double bypass = m_bypass.step(m_fadeCoefficient), mute = m_mute.step(m_fadeCoefficient);
    const double left = (1.0 - mute) * wetLeft[k] + mute * dryLeft[k];
    const double right = (1.0 - mute) * wetRight[k] + mute * dryRight[k];
    s.out0[k] = (1.0 - bypass) * left + bypass * s.in0[k];
    s.out1[k] = (1.0 - bypass) * right + bypass * s.in1[k];
  }
}

bool SignalPath::process(HostSubBlock& s) noexcept {
  const SmoothedValues& settings = m_settings.advance(s.n);
  const SubBlock& inputGain = settings[Smoothed::InputGain];
  SubBlock signal;
  for (std::size_t k = 0; k < static_cast<std::size_t>(s.n); ++k)
    signal[k] = (s.in0[k] + s.in1[k]) * 0.5;
  m_amplifier.process(settings, s.n, signal);

  if (m_speakersBypassed) {
    blend(s, inputGain, signal, signal);
  } else {
    SubBlock x, left, right;
    std::array<int, kSubBlock> engineSamples;
    const int count = m_converter.decimate(signal, s.n, x, engineSamples);
    if (count > 0) {
      const bool everySample = count == s.n;
      m_cabinet.process(
          x, everySample ? settings : m_settings.pick({engineSamples.data(), std::size_t(count)}),
          count, left, right);
    }
    m_converter.interpolate(s.n, left, right);
    blend(s, inputGain, left, right);
  }

  return allFinite(s.out0, s.n) && allFinite(s.out1, s.n);
}

RotorReadout::Rotor SignalPath::hornRotor() noexcept {
  return readoutOf(m_cabinet.hornHistory().motion);
}

RotorReadout::Rotor SignalPath::drumRotor() noexcept {
  return readoutOf(m_cabinet.drumHistory().motion);
}

} // namespace qlx::engine
