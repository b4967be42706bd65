#include "engine/RotorNoisePlayer.h"

#include "engine/Interpolation.h"

#include <array>
#include <cmath>

namespace qlx::engine {

namespace {

constexpr double kSlowThresholdHz = 0.78;
constexpr double kFastThresholdHz = 7.5;
constexpr double kSwitchGain = 0.25118864315; // -12 dB
constexpr double kNearestDistance = 0.3;      // metres at which the distance gain is 1

/// Places of the fast recordings' loops against the rotor, in passes of the loop.
constexpr std::array<double, 2> kHornTurnOffset = {-0.003676470588235294, 0.23161764705882354};
constexpr double kHornBandHz = 1100.0;
constexpr double kDrumTurnOffset = -0.0014204545454545455;

void prepareFilter(Biquad& filter, double hz, double frequency, double q) {
  filter.setInstantUpdate(true);
  filter.setSampleRate(hz);
  filter.setFrequencyAndQ(frequency, q);
  filter.setInstantUpdate(false);
}

void advanceCyclic(double& phase, double step) {
  phase += step;
  if (phase >= 1.0) phase -= 1.0;
}

} // namespace

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
}

double NoiseSpeedRange::between(double speed) const noexcept {
  if (speed <= m_slow || speed >= m_fast) return -1.0;
  return (speed - m_slow) / (m_fast - m_slow);
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
  return {std::pow(1.0 - x, 0.25), x * x};
}

HornNoisePlayer::HornNoisePlayer(const Recordings& recordings, int microphone) noexcept
    : m_slowLoop(recordings.hornSlow[static_cast<std::size_t>(microphone)]),
      m_fastLoop(recordings.hornFast),
      m_turnOffset(kHornTurnOffset[static_cast<std::size_t>(microphone)]),
      m_switchSound(recordings.startStop),
      m_bandPass(44100.0, Response::BandPass, kHornBandHz, 0.3, 0) {
  m_bandPass.setEnabled(true);
}

void HornNoisePlayer::setSampleRate(double hz) noexcept {
  m_range.setSampleRate(hz);
  m_switchSound.setSampleRate(hz);
  m_slowStep = 44100.0 / hz;
  clear();
  prepareFilter(m_bandPass, hz, kHornBandHz, m_micDistance * 0.25 + 0.05);
  setMicDistance(m_micDistance);
}

void HornNoisePlayer::clear() noexcept {
  m_slowPosition = 0.0;
  m_fastPhase = 0.0;
  m_switchSound.clear();
  m_bandPass.clearState();
}

void HornNoisePlayer::setMicDistance(double metres) noexcept {
  m_micDistance = metres;
  m_distanceGain = std::pow(kNearestDistance / metres, 0.25);
  m_bandPass.setQ(metres * 0.25 + 0.05);
}

void HornNoisePlayer::process(std::span<const double> speeds, double micAngle, double level,
                              std::span<double> out) noexcept {
  constexpr int kSlow = kHornSlowLength, kFast = kHornFastLength;
  for (std::size_t i = 0; i < speeds.size(); ++i) {
    const NoiseBlend blend = m_range.hornBlend(speeds[i]);
    double sum = 0.0;
    if (blend.slow > 0.0)
      sum += cubicLoopRead(m_slowPosition, m_slowLoop.data(), kSlow) * m_slowVolume * blend.slow;
    if (blend.fast > 0.0) {
      const double position = (m_fastPhase + micAngle / kHornFastTurns + m_turnOffset) * kFast;
      sum += cubicLoopRead(position, m_fastLoop.data(), kFast) * m_fastVolume * blend.fast;
    }
    sum += m_switchSound.tick();
    m_slowPosition += m_slowStep;
    if (m_slowPosition >= kSlow) m_slowPosition -= kSlow;
    advanceCyclic(m_fastPhase, speeds[i] / kHornFastTurns);
    out[i] = m_bandPass.tickGlide(sum) * m_distanceGain * level;
  }
}

DrumNoisePlayer::DrumNoisePlayer(const Recordings& recordings) noexcept
    : m_slowLoop(recordings.drumSlow), m_fastLoop(recordings.drumFast),
      m_switchSound(recordings.startStop),
      m_slowLowPass(44100.0, Response::LowPass, 18000.0, 0.7, 0),
      m_fastShelf(44100.0, Response::HighShelf, 2000.0, 0.707, 0),
      m_bandPass(44100.0, Response::BandPass, 1000.0, 0.125, 0) {
  m_slowLowPass.setEnabled(true);
  m_fastShelf.setEnabled(true);
  m_bandPass.setEnabled(true);
}

void DrumNoisePlayer::setSampleRate(double hz) noexcept {
  m_range.setSampleRate(hz);
  m_switchSound.setSampleRate(hz);
  clear();
  prepareFilter(m_slowLowPass, hz, m_slowLowPassHz, 0.7);
  prepareFilter(m_fastShelf, hz, m_fastShelfHz, 0.707);
  prepareFilter(m_bandPass, hz, 1000.0, m_micDistance * 0.12 + 0.005);
  m_distanceGain = 1.0; // the drum's noise keeps its level until the microphone is moved
}

void DrumNoisePlayer::clear() noexcept {
  m_slowPhase = 0.0;
  m_fastPhase = 0.0;
  m_switchSound.clear();
  for (Biquad* filter : {&m_slowLowPass, &m_fastShelf, &m_bandPass}) filter->clearState();
}

void DrumNoisePlayer::setMicDistance(double metres) noexcept {
  m_micDistance = metres;
  m_distanceGain = std::pow(kNearestDistance / metres, 0.1);
  m_bandPass.setQ(metres * 0.12 + 0.005);
}

void DrumNoisePlayer::tuneTreble(double between) noexcept {
  const double square = between * between;
  m_slowLowPassHz = 18000.0 - 18000.0 * std::pow(between, 0.06);
  m_fastShelfHz = 3500.0 + 9500.0 * square;
  m_slowLowPass.setFrequency(m_slowLowPassHz);
  m_fastShelf.setFrequency(m_fastShelfHz);
  m_fastShelf.setGainDb(12.0 * square - 12.0);
}

void DrumNoisePlayer::process(std::span<const double> speeds, double micAngle, double level,
                              std::span<double> out) noexcept {
  constexpr int kSlow = kDrumSlowLength, kFast = kDrumFastLength;
  for (std::size_t i = 0; i < speeds.size(); ++i) {
    const NoiseBlend blend = m_range.drumBlend(speeds[i]);
    const double between = m_range.between(speeds[i]);
    if (between >= 0.0) tuneTreble(between);
    double slow = 0.0, fast = 0.0;
    if (blend.slow > 0.0)
      slow =
          cubicLoopRead(m_slowPhase * kSlow, m_slowLoop.data(), kSlow) * m_slowVolume * blend.slow;
    if (blend.fast > 0.0) {
      const double position = (micAngle / kDrumFastTurns + m_fastPhase + kDrumTurnOffset) * kFast;
      fast = cubicLoopRead(position, m_fastLoop.data(), kFast) * m_fastVolume * blend.fast;
    }
    const double sum =
        m_slowLowPass.tickGlide(slow) + m_fastShelf.tickGlide(fast) + m_switchSound.tick();
    advanceCyclic(m_fastPhase, speeds[i] / kDrumFastTurns);
    advanceCyclic(m_slowPhase, speeds[i] / kDrumSlowTurns);
    out[i] = m_bandPass.tickGlide(sum) * m_distanceGain * level;
  }
}

} // namespace qlx::engine
