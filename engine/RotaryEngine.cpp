// SPDX-License-Identifier: ISC
#include "engine/RotaryEngine.h"

#include "engine/SignalPath.h"
#include "engine/settings/SettingTable.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <limits>

namespace qlx::engine {

namespace {

constexpr double kLowestHostRate = 22050.0;

/// Longest block for which the mute takes one step; longer host blocks count as several.
constexpr int kLongestBlock = 512;

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

} // namespace

RotaryEngine::RotaryEngine(const Recordings& recordings, MicrophonePlacement& placement)
    : m_placement(placement), m_path(std::make_unique<SignalPath>(recordings)) {}

RotaryEngine::~RotaryEngine() = default;

void RotaryEngine::set(Setting setting, double value) noexcept {
  if (!std::isfinite(value)) return;
  const SettingRow& row = settingRow(setting);
  // A press that is released before the next block still brakes and starts the motors: it is
  // counted here, because the mailbox keeps the last value only.
  if (setting == Setting::Stop)
    (value >= 0.5 ? m_stopPresses : m_stopReleases).fetch_add(1, std::memory_order_relaxed);
  const double limited = std::clamp(value, row.lowest, row.highest);
  if (setting == Setting::Bypass) m_wantedBypass.store(limited, std::memory_order_relaxed);
  m_mailbox.write(setting, limited);
  if (row.stale != 0) request(row.stale);
}

void RotaryEngine::request(std::uint32_t work) noexcept { m_mailbox.request(work); }

void RotaryEngine::setCpuMode(CpuMode mode) noexcept {
  m_cpuMode.store(mode, std::memory_order_relaxed);
}

double RotaryEngine::hornPhase(std::chrono::steady_clock::time_point now) const noexcept {
  return m_rotors.hornPhase(now);
}

double RotaryEngine::drumPhase(std::chrono::steady_clock::time_point now) const noexcept {
  return m_rotors.drumPhase(now);
}

double RotaryEngine::hostRate() const noexcept {
  return m_publishedHostRate.load(std::memory_order_relaxed);
}

void RotaryEngine::setHostRate(double hz) noexcept {
  if (!std::isfinite(hz) || hz <= 0.0) return;
  const double wanted = std::max(hz, kLowestHostRate);
  const double before = m_wantedHostRate.exchange(wanted, std::memory_order_relaxed);
  // Some hosts change the rate without switching off and on; all that depends on it is made anew.
  if (wanted != before && m_switchedOn.load(std::memory_order_relaxed))
    request(kPendingResume | kPendingFullReset);
}

void RotaryEngine::switchOff() noexcept {
  m_switchedOn.store(false, std::memory_order_relaxed);
  request(kPendingResume);
}

void RotaryEngine::switchOn() noexcept {
  m_switchedOn.store(true, std::memory_order_relaxed);
  request(kPendingFullReset | kPendingHornMic1 | kPendingHornMic2 | kPendingReducedHorn |
          kPendingDrum | kPendingReducedDrum | kPendingCrossDelays);
  m_bypassJump.store(m_wantedBypass.load(std::memory_order_relaxed), std::memory_order_relaxed);
}

void RotaryEngine::apply(Setting setting, double value) noexcept {
  if (setting == Setting::Stop) applyStop(value);
  settingRow(setting).apply(*m_path, value);
}

void RotaryEngine::applyStop(double v) noexcept {
  const std::uint32_t presses = m_stopPresses.load(std::memory_order_relaxed);
  const std::uint32_t releases = m_stopReleases.load(std::memory_order_relaxed);
  const bool stops = v >= 0.5;
  // The opposite of `v` came and went since the last block.
  if (stops ? releases != m_seenStopReleases : presses != m_seenStopPresses)
    m_path->cabinet().setStop(stops ? 0.0 : 1.0);
  m_seenStopPresses = presses;
  m_seenStopReleases = releases;
}

void RotaryEngine::takeSettings() noexcept {
  m_mailbox.collect([this](Setting setting, double v) { apply(setting, v); });
}

std::uint32_t RotaryEngine::take(std::uint32_t work) noexcept {
  return m_mailbox.takeWork(work, [this](Setting setting, double v) { apply(setting, v); });
}

void RotaryEngine::performAllPendingWork() noexcept {
  take(kAllPendingWork);
  applyPlacement();
  take(kRaisedByPlacement);
  m_path->rebuildGeometry();
  m_path->setupEngineRate(cpuMode());
  m_path->computeCrossDelays();
  reset();
}

void RotaryEngine::beginBlock() noexcept {
  takeSettings();
  const double jump = m_bypassJump.exchange(kNoJump, std::memory_order_relaxed);
  if (jump != kNoJump) m_path->jumpToBypass(jump);
  m_path->updateTone();
  stepState();
}

void RotaryEngine::stepState() noexcept {
  switch (m_state) {
  case State::Running:
  case State::FadingIn:
    if (m_mailbox.isRequested(kAllPendingWork)) {
      m_state = State::FadingOut;
      m_path->setMuted(true);
    } else if (m_state == State::FadingIn && m_path->isFadedIn()) {
      m_state = State::Running;
      m_path->finishFadeIn();
    }
    break;
  case State::FadingOut:
    if (m_path->isFadedOut()) {
      m_state = State::Reinitialising;
      m_path->finishFadeOut();
    }
    break;
  case State::Reinitialising: doPendingGroup(); break;
  }
}

void RotaryEngine::fadeIn() noexcept {
  m_state = State::FadingIn;
  m_path->setMuted(false);
}

void RotaryEngine::doPendingGroup() noexcept {
  Cabinet& cabinet = m_path->cabinet();
  if (take(kPendingResume) != 0) {
    refreshHostRate();
    m_path->resume(cpuMode());
  } else if (m_mailbox.isRequested(kPendingFullReset)) {
    doFullReset();
  } else if (take(kPendingSetup | kPendingRoomTaps) != 0) {
    applyPlacement();
    cabinet.computeRoomTaps();
  } else if (const auto microphones = take(kPendingHornMic1 | kPendingHornMic2)) {
    if ((microphones & kPendingHornMic1) != 0) cabinet.rebuildHorn1();
    if ((microphones & kPendingHornMic2) != 0) cabinet.rebuildHorn2();
  } else if (const auto models = take(kPendingReducedHorn | kPendingDrum | kPendingReducedDrum)) {
    if ((models & kPendingReducedHorn) != 0) cabinet.rebuildReducedHorn();
    if ((models & kPendingDrum) != 0) cabinet.rebuildDrum();
    if ((models & kPendingReducedDrum) != 0) cabinet.rebuildReducedDrum();
  } else if (take(kPendingRateSetup) != 0) {
    m_path->setupEngineRate(cpuMode());
  } else if (take(kPendingCrossDelays) != 0) {
    m_path->computeCrossDelays();
  } else {
    fadeIn();
  }
}

void RotaryEngine::applyPlacement() noexcept {
  m_placement.applyPlacement();
  takeSettings();
}

void RotaryEngine::doFullReset() noexcept {
  // What is asked for while this works must not be lost: all marks are taken before the work, the
  // placement's own before the settings that they stand for are read.
  take(kAllPendingWork);
  reset();
  applyPlacement();
  take(kRaisedByPlacement);
  m_path->cabinet().computeRoomTaps();
  m_path->rebuildGeometry();
  m_path->computeCrossDelays();
  fadeIn();
}

void RotaryEngine::refreshHostRate() noexcept {
  m_path->setHostRate(m_wantedHostRate.load(std::memory_order_relaxed));
  m_publishedHostRate.store(m_path->hostRate(), std::memory_order_relaxed);
}

void RotaryEngine::reset() noexcept {
  refreshHostRate();
  m_placement.forgetLever();
  m_path->reset(cpuMode());
}

template <class Sample>
void RotaryEngine::processBlock(const Sample* in0, const Sample* in1, Sample* out0, Sample* out1,
                                int frames) noexcept {
  // Outputs may be the inputs' memory: all of the block is read before anything is written.
  std::array<double, kLongestBlock> input0, input1;
  for (int j = 0; j < frames; ++j) {
    input0[static_cast<std::size_t>(j)] = sane(static_cast<double>(in0[j]));
    input1[static_cast<std::size_t>(j)] = sane(static_cast<double>(in1[j]));
  }
  const auto write = [&](int from, const double* left, const double* right, int n) {
    for (int j = 0; j < n; ++j) {
      if (out1 != nullptr) out1[from + j] = static_cast<Sample>(right[j]);
      out0[from + j] = static_cast<Sample>(left[j]);
    }
  };
  beginBlock();
  SignalPath::HostSubBlock s;
  for (int done = 0; done < frames; done += s.n) {
    s.n = std::min(kSubBlock, frames - done);
    std::copy_n(input0.begin() + done, s.n, s.in0.begin());
    std::copy_n(input1.begin() + done, s.n, s.in1.begin());
    if (!m_path->process(s)) {
      m_path->recover();
      request(kPendingFullReset);
      write(0, input0.data(), input1.data(), frames);
      return;
    }
    write(done, s.out0.data(), s.out1.data(), s.n);
  }
}

template <class Sample>
void RotaryEngine::processBlocks(const Sample* in0, const Sample* in1, Sample* out0, Sample* out1,
                                 int frames) noexcept {
  for (int done = 0; done < frames; done += kLongestBlock)
    processBlock(in0 + done, in1 + done, out0 + done, out1 == nullptr ? nullptr : out1 + done,
                 std::min(kLongestBlock, frames - done));
  m_rotors.store(m_path->hornRotor(), m_path->drumRotor(), RotorReadout::Clock::now(),
                 frames / m_path->hostRate());
}

void RotaryEngine::process(const float* in0, const float* in1, float* out0, float* out1,
                           int frames) noexcept {
  processBlocks(in0, in1, out0, out1, frames);
}

void RotaryEngine::process(const double* in0, const double* in1, double* out0, double* out1,
                           int frames) noexcept {
  processBlocks(in0, in1, out0, out1, frames);
}

} // namespace qlx::engine
