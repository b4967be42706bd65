// SPDX-License-Identifier: ISC
#include "engine/rotor/RotorMotion.h"

#include "engine/signal/Denormals.h"
#include "engine/signal/Phase.h"

#include <algorithm>
#include <cmath>

namespace qlx::engine {

namespace {

/// Time constant of a first-order approach over its 10 % - 90 % time: 1 / ln 9.
constexpr double kTimeConstantShare = 0.45511961331;

/// Distance from the target, as a share of it, at which the speed has arrived: from there on the
/// phase would change by less than 1e-10 turns.
constexpr double kArrived = 1e-12;

} // namespace

RotorMotion::Event RotorMotion::setLever(double v) noexcept {
  m_leverValue = v;
  if (m_stopValue >= 0.5) return Event::None;
  const Event event = m_speedState == SpeedState::Stopped ? Event::Start : Event::None;
  if (v == 1.0) {
    m_speedState = SpeedState::Slow;
    setSpeed(m_slowSpeed);
  } else if (v == 0.0) {
    m_speedState = SpeedState::Fast;
    setSpeed(m_fastSpeed);
  } else {
    m_speedState = SpeedState::Between;
    m_blend = 1.0 - v;
    setSpeed(blendedSpeed());
  }
  return event;
}

RotorMotion::Event RotorMotion::setStop(double v) noexcept {
  m_stopValue = v;
  if (v < 0.5) return setLever(m_leverValue);
  const Event event = m_speedState == SpeedState::Stopped ? Event::None : Event::Stop;
  m_speedState = SpeedState::Stopped;
  setSpeed(0.0);
  return event;
}

void RotorMotion::setSlowSpeed(double hz) noexcept {
  m_slowSpeed = hz;
  if (m_speedState == SpeedState::Slow) setSpeed(hz);
  if (m_speedState == SpeedState::Between) setSpeed(blendedSpeed());
}

void RotorMotion::setFastSpeed(double hz) noexcept {
  m_fastSpeed = hz;
  if (m_speedState == SpeedState::Fast) setSpeed(hz);
  if (m_speedState == SpeedState::Between) setSpeed(blendedSpeed());
}

void RotorMotion::setSpeed(double hz) noexcept {
  m_targetSpeedHz = hz;
  m_targetSpeed = hz / m_sampleRate;
}

double RotorMotion::approachPole(double seconds) const noexcept {
  return std::exp(-1.0 / (seconds * m_sampleRate * kTimeConstantShare));
}

void RotorMotion::setAccelTime(double seconds) noexcept {
  m_accelTime = seconds;
  m_accelPole = approachPole(seconds);
}

void RotorMotion::setDecelTime(double seconds) noexcept {
  m_decelTime = seconds;
  m_decelPole = approachPole(seconds);
}

void RotorMotion::setSampleRate(double hz) noexcept {
  m_sampleRate = hz;
  setSpeed(m_targetSpeedHz);
  setAccelTime(m_accelTime);
  setDecelTime(m_decelTime);
  m_currentSpeed = m_targetSpeed;
}

void RotorMotion::advance(std::span<double> angles, std::span<double> speeds) noexcept {
  double distance = m_currentSpeed - m_targetSpeed;
  if (std::abs(distance) <= kArrived * m_targetSpeed) {
    m_currentSpeed = m_targetSpeed;
    std::fill(speeds.begin(), speeds.end(), m_targetSpeed);
  } else {
    // An exponential approach never passes its target.
    const double pole = distance > 0.0 ? m_decelPole : m_accelPole;
    for (double& speed : speeds) speed = m_targetSpeed + (distance *= pole);
    m_currentSpeed = flushDenormals(m_targetSpeed + distance);
  }
  advanceTurns(m_phase, static_cast<double>(m_direction), speeds, angles);
  if (m_phaseOffset == 0.0) return;
  for (double& angle : angles) angle += m_phaseOffset - (angle + m_phaseOffset >= 1.0 ? 1.0 : 0.0);
}

} // namespace qlx::engine
