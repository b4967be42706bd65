// SPDX-License-Identifier: ISC
#pragma once

#include <span>

namespace qlx::engine {

/// One rotor's motor: a speed selector moved by lever and stop, and a speed that approaches the
/// selected one with a time constant of its own for speeding up and for slowing down (a motor
/// against the rotor's inertia). Audio thread only.
class RotorMotion {
 public:
  /// The horn turns against the drum.
  enum class Direction : signed char { Horn = -1, Drum = 1 };
  enum class SpeedState : signed char { Unset = -1, Stopped = 0, Slow = 1, Fast = 2, Between = 3 };
  /// What the switching sounds of the motor follow.
  enum class Event : unsigned char { None, Start, Stop };

  explicit RotorMotion(Direction direction) noexcept : m_direction(direction) {}

  /// v: 1 slow, 0 fast, between them a blend of both speeds.
  Event setLever(double v) noexcept;
  /// 0.5 and above brakes; below releases to the lever's speed.
  Event setStop(double v) noexcept;

  void setSlowSpeed(double hz) noexcept; ///< revolutions a second
  void setFastSpeed(double hz) noexcept;

  /// Seconds in which a step of speed goes from 10 % to 90 %.
  void setAccelTime(double seconds) noexcept;
  void setDecelTime(double seconds) noexcept;

  /// A negative sign mounts the rotor turned by half a turn.
  void setFlip(double sign) noexcept { m_phaseOffset = sign >= 0.0 ? 0.0 : 0.5; }

  /// Engine rate in Hz; the speed jumps to its target.
  void setSampleRate(double hz) noexcept;

  /// Restarts the turn; the speed stays.
  void clear() noexcept { m_phase = 0.0; }

  /// Moves on by one sample per entry: writes each sample's angle (turns, 0 .. 1, before the step)
  /// and speed (revolutions a sample, after the approach).
  void advance(std::span<double> angles, std::span<double> speeds) noexcept;

  double phase() const noexcept { return m_phase; } ///< turns, 0 <= phase < 1
  /// Change of the phase in turns a second: negative for a rotor that turns backwards.
  double phaseSpeed() const noexcept { return static_cast<double>(m_direction) * currentSpeedHz(); }
  double currentSpeedHz() const noexcept { return m_currentSpeed * m_sampleRate; }
  double targetSpeedHz() const noexcept { return m_targetSpeedHz; }
  SpeedState speedState() const noexcept { return m_speedState; }

 private:
  void setSpeed(double hz) noexcept;
  double approachPole(double seconds) const noexcept;
  double blendedSpeed() const noexcept {
    return m_slowSpeed + (m_fastSpeed - m_slowSpeed) * m_blend;
  }

  Direction m_direction;
  SpeedState m_speedState = SpeedState::Unset;
  double m_leverValue = 1.0;
  double m_stopValue = 0.0;
  double m_slowSpeed = 0.0;
  double m_fastSpeed = 0.0;
  double m_blend = 0.0;
  double m_targetSpeedHz = 0.0;
  double m_targetSpeed = 0.0; // revolutions a sample
  double m_currentSpeed = 0.0;
  double m_accelTime = 1.0;
  double m_decelTime = 1.0;
  double m_accelPole = 0.0;
  double m_decelPole = 0.0;
  double m_phase = 0.0;
  double m_phaseOffset = 0.0;
  double m_sampleRate = 44100.0;
};

} // namespace qlx::engine
