// SPDX-License-Identifier: ISC
#include "engine/EngineFrame.h"

#include "engine/signal/Denormals.h"

#include <algorithm>
#include <cmath>

namespace qlx::engine {

namespace {

constexpr double kLowestHostRate = 22050.0;
constexpr double kFadeSeconds =
    0.020000000949949026; // the single-precision number nearest to 20 ms
constexpr double kFadedOut = 0.96837722339;
constexpr double kFadedIn = 0.0316227766; // -30 dB
constexpr double kDryHz = 3000.0;

/// Work that the settings of a microphone placement ask for.
constexpr std::uint32_t kRaisedByPlacement = kPendingHornMic1 | kPendingHornMic2 |
                                             kPendingReducedHorn | kPendingReducedDrum |
                                             kPendingCrossDelays;

/// Largest input magnitude, +60 dBFS.
constexpr double kInputLimit = 1000.0;

double sane(double x) {
  const double limited = x < -kInputLimit ? -kInputLimit : x > kInputLimit ? kInputLimit : x;
  return std::abs(x) <= std::numeric_limits<double>::max() ? limited : 0.0;
}

/// One step of a fade; what is nearer to the target than any sample can tell has arrived.
double faded(double level, double target, double coefficient) {
  const double next = flushDenormals(level + (target - level) * coefficient);
  return std::abs(target - next) < 1e-12 ? target : next;
}

bool allFinite(const SubBlock& run, int n) {
  // Infinite and not a number times zero are not a number, and so is every sum with them.
  double sum = 0.0;
  for (int j = 0; j < n; ++j) sum += run[static_cast<std::size_t>(j)] * 0.0;
  return sum == 0.0;
}

/// Host samples per engine sample, or 0 where the previous configuration is kept.
int factorFor(double hostRate, CpuMode mode) {
  const int coarse = hostRate < 50000.0 ? 2 : hostRate < 100000.0 ? 4 : hostRate < 200000.0 ? 8 : 0;
  return mode == CpuMode::Brilliant ? coarse / 2 : coarse;
}

} // namespace

RotaryEngine::Frame::Frame(const Recordings& recordings, MicrophonePlacement& placement)
    : m_placement(placement), m_kernels(kernels::chooseKernels()), m_amplifier(m_kernels),
      m_converter(m_kernels), m_cabinet(recordings, m_kernels) {
  updateRateCoefficients();
  m_settings.setTarget(Smoothed::NoisePanB, 1.0);
}

void RotaryEngine::Frame::setHostRate(double hz) noexcept {
  if (!std::isfinite(hz) || hz <= 0.0) return;
  const double wanted = std::max(hz, kLowestHostRate);
  const double before = m_wantedHostRate.exchange(wanted, std::memory_order_relaxed);
  // Some hosts change the rate without switching off and on; all that depends on it is made anew.
  if (wanted != before && m_switchedOn.load(std::memory_order_relaxed))
    request(kPendingResume | kPendingFullReset);
}

void RotaryEngine::Frame::switchOff() noexcept {
  m_switchedOn.store(false, std::memory_order_relaxed);
  request(kPendingResume);
}

void RotaryEngine::Frame::switchOn() noexcept {
  m_switchedOn.store(true, std::memory_order_relaxed);
  request(kPendingFullReset | kPendingHornMic1 | kPendingHornMic2 | kPendingReducedHorn |
          kPendingDrum | kPendingReducedDrum | kPendingCrossDelays);
  m_bypassJump.store(m_wantedBypass.load(std::memory_order_relaxed), std::memory_order_relaxed);
}

std::uint32_t RotaryEngine::Frame::take(std::uint32_t bits) noexcept {
  return m_mailbox.takeWork(bits, [this](Setting setting, double v) { apply(setting, v); });
}

void RotaryEngine::Frame::performAllPendingWork() noexcept {
  take(kAllPendingWork);
  applyPlacement();
  take(kRaisedByPlacement);
  rebuildAll();
  setupEngineRate();
  m_cabinet.computeCrossDelays(m_settings);
  resetEngine();
}

void RotaryEngine::Frame::beginBlock() noexcept {
  takeSettings();
  const double jump = m_bypassJump.exchange(kNoJump, std::memory_order_relaxed);
  if (jump != kNoJump) m_bypassLevel = jump;
  if (m_toneChanged) updateTone();
  stepState();
}

void RotaryEngine::Frame::updateTone() noexcept {
  m_toneChanged = false;
  for (std::size_t i = 0; i < m_toneDb.size(); ++i)
    m_amplifier.setTone(static_cast<Amplifier::Tone>(i), m_toneDb[i]);
  m_cabinet.setColor(m_colorMidDb, m_colorLowDb);
}

void RotaryEngine::Frame::stepState() noexcept {
  const bool pending = m_mailbox.isRequested(kAllPendingWork);
  switch (m_state) {
  case State::Running:
  case State::FadingIn:
    if (pending) {
      m_state = State::FadingOut;
      m_muteTarget = 1.0;
    } else if (m_state == State::FadingIn && m_muteLevel < kFadedIn) {
      m_state = State::Running;
      m_muteLevel = 0.0;
    }
    break;
  case State::FadingOut:
    if (m_muteLevel > kFadedOut) {
      m_state = State::Reinitialising;
      m_muteLevel = 1.0;
    }
    break;
  case State::Reinitialising: doPendingGroup(); break;
  }
}

void RotaryEngine::Frame::doPendingGroup() noexcept {
  if (take(kPendingResume) != 0) {
    doResume();
  } else if (m_mailbox.isRequested(kPendingFullReset)) {
    doFullReset();
  } else if (take(kPendingSetup | kPendingRoomTaps) != 0) {
    applyPlacement();
    m_cabinet.computeRoomTaps();
  } else if (const auto microphones = take(kPendingHornMic1 | kPendingHornMic2)) {
    if ((microphones & kPendingHornMic1) != 0) m_cabinet.rebuildHorn1();
    if ((microphones & kPendingHornMic2) != 0) m_cabinet.rebuildHorn2();
  } else if (const auto models = take(kPendingReducedHorn | kPendingDrum | kPendingReducedDrum)) {
    if ((models & kPendingReducedHorn) != 0) m_cabinet.rebuildReducedHorn();
    if ((models & kPendingDrum) != 0) m_cabinet.rebuildDrum();
    if ((models & kPendingReducedDrum) != 0) m_cabinet.rebuildReducedDrum();
  } else if (take(kPendingRateSetup) != 0) {
    setupEngineRate();
  } else if (take(kPendingCrossDelays) != 0) {
    m_cabinet.computeCrossDelays(m_settings);
  } else {
    m_state = State::FadingIn;
    m_muteTarget = 0.0;
  }
}

void RotaryEngine::Frame::applyPlacement() noexcept {
  m_placement.applyPlacement();
  takeSettings();
}

void RotaryEngine::Frame::doResume() noexcept {
  refreshHostRate();
  setupEngineRate();
  m_amplifier.setInstantUpdate();
  m_converter.setInstantUpdate();
  m_cabinet.setInstantUpdate();
  m_cabinet.clearCrossRings();
  m_converter.clear();
}

void RotaryEngine::Frame::doFullReset() noexcept {
  // What is asked for while this works must not be lost: all marks are taken before the work, the
  // placement's own before the settings that they stand for are read.
  take(kAllPendingWork);
  resetEngine();
  applyPlacement();
  take(kRaisedByPlacement);
  m_cabinet.computeRoomTaps();
  rebuildAll();
  m_cabinet.computeCrossDelays(m_settings);
  m_state = State::FadingIn;
  m_muteTarget = 0.0;
}

void RotaryEngine::Frame::rebuildAll() noexcept {
  m_cabinet.rebuildHorn1();
  m_cabinet.rebuildHorn2();
  m_cabinet.rebuildReducedHorn();
  m_cabinet.rebuildDrum();
  m_cabinet.rebuildReducedDrum();
}

void RotaryEngine::Frame::refreshHostRate() noexcept {
  m_hostRate = m_wantedHostRate.load(std::memory_order_relaxed);
  m_publishedHostRate.store(m_hostRate, std::memory_order_relaxed);
}

void RotaryEngine::Frame::updateRateCoefficients() noexcept {
  m_settings.setSampleRate(m_hostRate);
  m_amplifier.setTrackerRate(m_hostRate);
  m_fadeCoefficient = approachCoefficient(kFadeSeconds, m_hostRate);
}

void RotaryEngine::Frame::setupEngineRate() noexcept {
  if (const int factor = factorFor(m_hostRate, m_cpuMode.load(std::memory_order_relaxed))) {
    m_engineFactor = factor;
    m_engineRate = m_hostRate / factor;
    m_converter.setFactor(factor);
  }
  m_cabinet.setModelRates(m_engineRate, m_engineFactor);
  clearState();
  updateFilterRates();
}

void RotaryEngine::Frame::clearState() noexcept {
  m_amplifier.clear();
  m_amplifier.setInstantUpdate();
  m_dryLeft = {};
  m_dryRight = {};
  m_converter.setInstantUpdate();
  if (m_engineRate < m_hostRate)
    m_converter.setImageFrequency(m_engineRate + m_hostRate * 20.0 / 44100.0);
  m_cabinet.clearState();
}

void RotaryEngine::Frame::updateFilterRates() noexcept {
  m_amplifier.setSampleRate(m_hostRate);
  m_converter.setHostRate(m_hostRate);
  m_dryPole = lowPassPole(kDryHz, m_engineRate);
  m_cabinet.updateFilterRates(m_engineRate);
}

void RotaryEngine::Frame::resetEngine() noexcept {
  refreshHostRate();
  m_placement.forgetLever();
  m_converter.restartCounter();
  setupEngineRate();
  m_settings.snap();
  updateRateCoefficients();
  m_cabinet.clearCrossRings();
  m_cabinet.computeRoomTaps();
  m_cabinet.clearRoom();
  m_converter.clear();
  m_cabinet.hornSettings.ampClip = m_cabinet.distanceAmpClip;
}

void RotaryEngine::Frame::recover() noexcept {
  m_cabinet.clearEverything();
  m_converter.clear();
  m_converter.clearFilters();
  m_amplifier.clearFilters();
  clearState();
  m_settings.snap();
  m_muteLevel = std::isfinite(m_muteLevel) ? m_muteLevel : 1.0;
  m_bypassLevel = std::isfinite(m_bypassLevel) ? m_bypassLevel : m_bypassTarget;
  request(kPendingFullReset);
}

void RotaryEngine::Frame::blend(HostSubBlock& s, const SubBlock& inputGain, const SubBlock& wetLeft,
                                const SubBlock& wetRight) noexcept {
  const auto size = static_cast<std::size_t>(s.n);
  SubBlock dryLeft, dryRight;
  for (std::size_t k = 0; k < size; ++k) {
    dryLeft[k] = inputGain[k] * s.in0[k] * 0.5;
    dryRight[k] = inputGain[k] * s.in1[k] * 0.5;
  }
  processPair(m_dryLeft, dryLeft.data(), m_dryPole, m_dryRight, dryRight.data(), m_dryPole, size);
  if (m_state == State::Running && m_muteLevel == 0.0 && m_bypassLevel == 0.0 &&
      m_bypassTarget == 0.0) {
    std::copy_n(wetLeft.begin(), size, s.out0.begin());
    std::copy_n(wetRight.begin(), size, s.out1.begin());
    return;
  }
  for (std::size_t k = 0; k < size; ++k) {
    m_bypassLevel = faded(m_bypassLevel, m_bypassTarget, m_fadeCoefficient);
    if (m_state != State::Running)
      m_muteLevel = faded(m_muteLevel, m_muteTarget, m_fadeCoefficient);
    const double left = (1.0 - m_muteLevel) * wetLeft[k] + m_muteLevel * dryLeft[k];
    const double right = (1.0 - m_muteLevel) * wetRight[k] + m_muteLevel * dryRight[k];
    s.out0[k] = (1.0 - m_bypassLevel) * left + m_bypassLevel * s.in0[k];
    s.out1[k] = (1.0 - m_bypassLevel) * right + m_bypassLevel * s.in1[k];
  }
}

bool RotaryEngine::Frame::run(HostSubBlock& s) noexcept {
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

template <class Sample>
void RotaryEngine::Frame::processBlock(const Sample* in0, const Sample* in1, Sample* out0,
                                       Sample* out1, int frames) noexcept {
  // Outputs may be the inputs' memory: all of the block is read before anything is written.
  for (int j = 0; j < frames; ++j) {
    m_input0[static_cast<std::size_t>(j)] = sane(static_cast<double>(in0[j]));
    m_input1[static_cast<std::size_t>(j)] = sane(static_cast<double>(in1[j]));
  }
  const auto write = [&](int from, const double* left, const double* right, int n) {
    for (int j = 0; j < n; ++j) {
      if (out1 != nullptr) out1[from + j] = static_cast<Sample>(right[j]);
      out0[from + j] = static_cast<Sample>(left[j]);
    }
  };
  beginBlock();
  HostSubBlock s;
  for (int done = 0; done < frames; done += s.n) {
    s.n = std::min(kSubBlock, frames - done);
    std::copy_n(m_input0.begin() + done, s.n, s.in0.begin());
    std::copy_n(m_input1.begin() + done, s.n, s.in1.begin());
    if (!run(s)) {
      recover();
      write(0, m_input0.data(), m_input1.data(), frames);
      return;
    }
    write(done, s.out0.data(), s.out1.data(), s.n);
  }
}

template <class Sample>
void RotaryEngine::Frame::process(const Sample* in0, const Sample* in1, Sample* out0, Sample* out1,
                                  int frames) noexcept {
  for (int done = 0; done < frames; done += kLongestBlock)
    processBlock(in0 + done, in1 + done, out0 + done, out1 == nullptr ? nullptr : out1 + done,
                 std::min(kLongestBlock, frames - done));
  const RotorMotion& horn = m_cabinet.hornHistory().motion;
  const RotorMotion& drum = m_cabinet.drumHistory().motion;
  m_rotors.store({horn.phase(), horn.phaseSpeed()}, {drum.phase(), drum.phaseSpeed()},
                 RotorReadout::Clock::now(), frames / m_hostRate);
}

template void RotaryEngine::Frame::process(const float*, const float*, float*, float*,
                                           int) noexcept;
template void RotaryEngine::Frame::process(const double*, const double*, double*, double*,
                                           int) noexcept;

} // namespace qlx::engine
