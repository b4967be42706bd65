// SPDX-License-Identifier: ISC
#include "engine/rotor/RotorNoisePlayer.h"

#include "engine/signal/BiquadLanes.h"
#include "engine/signal/Interpolation.h"
#include "engine/signal/Phase.h"
#include "engine/signal/SubBlock.h"

#include <algorithm>
#include <array>
#include <cmath>

namespace qlx::engine {

namespace {

constexpr double kSlowThresholdHz = 0.78;
constexpr double kFastThresholdHz = 7.5;
constexpr double kSwitchGain = 0.25118864315; // -12 dB
constexpr double kNearestDistance = 0.3;      // metres at which the distance gain is 1

/// Where the fast recordings' loops begin against the rotor's angle, in passes of the loop.
constexpr std::array<double, 2> kHornTurnOffset = {-0.003676470588235294, 0.23161764705882354};
constexpr double kDrumTurnOffset = -0.0014204545454545455;

} // namespace

constexpr RotorNoisePlayer::Distance HornNoisePlayer::kHornDistance{1100.0, 0.3, 0.05, 0.25, 0.25};
constexpr RotorNoisePlayer::Distance DrumNoisePlayer::kDrumDistance{1000.0, 0.125, 0.005, 0.12,
                                                                    0.1};

void SwitchSound::trigger() noexcept {
  m_position = 0.0;
  m_gain = m_volume * kSwitchGain;
  m_playing = true;
}

void SwitchSound::clear() noexcept {
  m_position = 0.0;
  m_playing = false;
}

double SwitchSound::tick() noexcept {
  if (!m_playing) return 0.0;
  constexpr int kLast = kStartStopLength;
  const double value = cubicOneShotRead(m_position, m_recording.data(), kLast) * m_gain;
  if (m_position > kLast) m_playing = false;
  m_position += m_step;
  return value;
}

void NoiseSpeedRange::setSampleRate(double hz) noexcept {
  m_slow = kSlowThresholdHz / hz;
  m_fast = kFastThresholdHz / hz;
  m_inverseSpan = 1.0 / (m_fast - m_slow);
}

double NoiseSpeedRange::between(double speed) const noexcept {
  if (speed <= m_slow || speed >= m_fast) return -1.0;
  return (speed - m_slow) * m_inverseSpan;
}

NoiseBlend NoiseSpeedRange::hornBlend(double speed) const noexcept {
  if (speed <= m_slow) return {(speed / m_slow) * (speed / m_slow), 0.0};
  if (speed >= m_fast) return {0.0, 1.0};
  const double x = between(speed), rest = 1.0 - 2.5 * x;
  return {x < 0.4 ? rest * rest : 0.0, x * x * x * x};
}

NoiseBlend NoiseSpeedRange::drumBlend(double speed) const noexcept {
  if (speed <= m_slow) return {(speed / m_slow) * (speed / m_slow), 0.0};
  if (speed >= m_fast) return {0.0, 1.0};
  const double x = between(speed);
  return {std::sqrt(std::sqrt(1.0 - x)), x * x};
}

RotorNoisePlayer::RotorNoisePlayer(const Recordings& recordings, const kernels::Kernels& kernels,
                                   std::span<const float> slowLoop, std::span<const float> fastLoop,
                                   const Distance& distance) noexcept
    : m_kernels(kernels), m_distance(distance), m_filled(recordings.filled), m_slowLoop(slowLoop),
      m_fastLoop(fastLoop), m_switchSound(recordings.startStop),
      m_bandPass(44100.0, Response::BandPass, distance.bandHz, distance.firstQ, 0) {
  m_bandPass.setEnabled(true);
}

double RotorNoisePlayer::bandQ() const noexcept {
  return m_micDistance * m_distance.qPerMetre + m_distance.qAtRotor;
}

void RotorNoisePlayer::setRate(double hz) noexcept {
  m_range.setSampleRate(hz);
  m_blendedSpeed = -1.0;
  m_switchSound.setSampleRate(hz);
  m_bandPass.setInstantUpdate(true);
  m_bandPass.setSampleRate(hz);
  m_bandPass.setFrequencyAndQ(m_distance.bandHz, bandQ());
  m_bandPass.setInstantUpdate(false);
}

void RotorNoisePlayer::clearCommon() noexcept {
  m_fastPhase = 0.0;
  m_switchSound.clear();
  m_bandPass.clearState();
}

void RotorNoisePlayer::setMicDistance(double metres) noexcept {
  m_micDistance = metres;
  m_distanceGain = std::pow(kNearestDistance / metres, m_distance.exponent);
  m_bandPass.setQ(bandQ());
}

RotorNoisePlayer::Gains RotorNoisePlayer::gainsFor(std::span<const double> speeds,
                                                   NoiseBlend (NoiseSpeedRange::*law)(double)
                                                       const noexcept) noexcept {
  Gains gains;
  if (speeds.front() == speeds.back()) {
    if (speeds.front() != m_blendedSpeed) m_blend = (m_range.*law)(speeds.front());
    m_blendedSpeed = speeds.front();
    gains.slow.fill(m_slowVolume * m_blend.slow);
    gains.fast.fill(m_fastVolume * m_blend.fast);
  } else {
    for (std::size_t i = 0; i < speeds.size(); ++i) {
      const NoiseBlend blend = (m_range.*law)(speeds[i]);
      gains.slow[i] = m_slowVolume * blend.slow;
      gains.fast[i] = m_fastVolume * blend.fast;
    }
    m_blendedSpeed = -1.0;
  }
  const bool filled = areRecordingsFilled();
  const auto heard = [&](const SubBlock& samples) {
    return filled && std::any_of(samples.begin(),
                                 samples.begin() + static_cast<std::ptrdiff_t>(speeds.size()),
                                 [](double gain) { return gain != 0.0; });
  };
  gains.slowHeard = heard(gains.slow);
  gains.fastHeard = heard(gains.fast);
  return gains;
}

void RotorNoisePlayer::addSwitchSound(std::span<double> samples) noexcept {
  if (!m_switchSound.isPlaying()) return;
  for (double& x : samples) x += m_switchSound.tick();
}

HornNoisePlayer::HornNoisePlayer(const Recordings& recordings, const kernels::Kernels& kernels,
                                 int microphone) noexcept
    : RotorNoisePlayer(recordings, kernels,
                       recordings.hornSlow[static_cast<std::size_t>(microphone)],
                       recordings.hornFast, kHornDistance),
      m_turnOffset(kHornTurnOffset[static_cast<std::size_t>(microphone)]) {}

void HornNoisePlayer::setSampleRate(double hz) noexcept {
  m_slowStep = 44100.0 / hz;
  clear();
  setRate(hz);
  setMicDistance(m_micDistance);
}

void HornNoisePlayer::clear() noexcept {
  m_slowPosition = 0.0;
  clearCommon();
}

void HornNoisePlayer::process(const Hearing& first, const Hearing& second,
                              std::span<const double> speeds) noexcept {
  for (const Hearing& h : {first, second}) h.player.read(speeds, h.micAngle, h.out);
  PairRunner(first.player.m_kernels)
      .process({&first.player.m_bandPass, 1}, {&second.player.m_bandPass, 1},
               static_cast<int>(speeds.size()), first.out, second.out);
  for (const Hearing& h : {first, second}) {
    const double gain = h.player.gain(h.level);
    for (std::size_t k = 0; k < speeds.size(); ++k) h.out[k] *= gain;
  }
}

void HornNoisePlayer::read(std::span<const double> speeds, double micAngle,
                           SubBlock& out) noexcept {
  constexpr int kSlow = kHornSlowLength, kFast = kHornFastLength;
  const double loopOffset = micAngle / kHornFastTurns + m_turnOffset;
  const auto n = static_cast<int>(speeds.size());
  const Gains gains = gainsFor(speeds, &NoiseSpeedRange::hornBlend);
  SubBlock position{}, sum{}; // kernels read whole vectors
  if (gains.slowHeard) {
    for (std::size_t i = 0; i < speeds.size(); ++i)
      position[i] = m_slowPosition + static_cast<double>(static_cast<int>(i)) * m_slowStep;
    m_kernels.loopRead(m_slowLoop.data(), kSlow, position.data(), gains.slow.data(), sum.data(), n);
  }
  m_slowPosition += n * m_slowStep;
  if (m_slowPosition >= kSlow) m_slowPosition -= kSlow;
  advanceTurns(m_fastPhase, 1.0 / kHornFastTurns, speeds, {position.data(), speeds.size()});
  if (gains.fastHeard) {
    for (std::size_t i = 0; i < speeds.size(); ++i)
      position[i] = (position[i] + loopOffset) * kFast;
    m_kernels.loopRead(m_fastLoop.data(), kFast, position.data(), gains.fast.data(), sum.data(), n);
  }
  std::copy_n(sum.begin(), n, out.begin());
  addSwitchSound({out.data(), speeds.size()});
}

DrumNoisePlayer::DrumNoisePlayer(const Recordings& recordings,
                                 const kernels::Kernels& kernels) noexcept
    : RotorNoisePlayer(recordings, kernels, recordings.drumSlow, recordings.drumFast,
                       kDrumDistance) {}

void DrumNoisePlayer::setSampleRate(double hz) noexcept {
  clear();
  setRate(hz);
  const double rate = sectionRate(hz);
  m_treble.angularRate = kTwoPi / rate;
  m_treble.highestHz = kHighestShare * rate;
  m_treble.lowPassEdge = kLowPassWarpEdgeShare * rate;
  m_treble.shelfEdge = kWarpEdgeShare * rate;
  m_treble.steps = sectionGlideSteps(rate);
  m_treble.share = 1.0 / m_treble.steps;
  m_kernels.settleTreble(m_treble);
  m_distanceGain = 1.0; // the drum's noise keeps its level until the microphone is moved
}

void DrumNoisePlayer::clear() noexcept {
  m_slowPhase = 0.0;
  clearCommon();
  for (double* memory : {m_treble.x1, m_treble.x2, m_treble.y1, m_treble.y2})
    memory[0] = memory[1] = 0.0;
}

void DrumNoisePlayer::process(std::span<const double> speeds, double micAngle, double level,
                              std::span<double> out) noexcept {
  constexpr int kSlow = kDrumSlowLength, kFast = kDrumFastLength;
  const double loopOffset = micAngle / kDrumFastTurns + kDrumTurnOffset;
  const auto n = static_cast<int>(speeds.size());
  const Gains gains = gainsFor(speeds, &NoiseSpeedRange::drumBlend);
  SubBlock position{}, slow{}, fast{}, between{}; // kernels read whole vectors
  advanceTurns(m_slowPhase, 1.0 / kDrumSlowTurns, speeds, {position.data(), speeds.size()});
  if (gains.slowHeard) {
    for (std::size_t i = 0; i < speeds.size(); ++i) position[i] *= kSlow;
    m_kernels.loopRead(m_slowLoop.data(), kSlow, position.data(), gains.slow.data(), slow.data(),
                       n);
  }
  advanceTurns(m_fastPhase, 1.0 / kDrumFastTurns, speeds, {position.data(), speeds.size()});
  if (gains.fastHeard) {
    for (std::size_t i = 0; i < speeds.size(); ++i)
      position[i] = (position[i] + loopOffset) * kFast;
    m_kernels.loopRead(m_fastLoop.data(), kFast, position.data(), gains.fast.data(), fast.data(),
                       n);
  }
  for (std::size_t i = 0; i < speeds.size(); ++i) between[i] = m_range.between(speeds[i]);
  m_kernels.noiseTreble(m_treble, between.data(), slow.data(), fast.data(), out.data(), n);
  addSwitchSound(out);
  m_bandPass.processGlide(out);
  for (double& x : out) x *= gain(level);
}

} // namespace qlx::engine
