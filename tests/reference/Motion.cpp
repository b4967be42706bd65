// SPDX-License-Identifier: ISC
#include "tests/reference/Motion.h"

#include "tests/reference/Primitives.h"

#include <cmath>

namespace qlx::reference {

void Motion::setSampleRate(double rate) {
  engineRate = rate;
  setSpeed(targetSpeedHz);
  setAccelTime(accelTime);
  setDecelTime(decelTime);
  currentSpeed = targetSpeed;
}

void Motion::setSpeed(double hz) {
  targetSpeedHz = hz;
  targetSpeed = hz / engineRate;
}

void Motion::setLever(double v) {
  leverValue = v;
  if (stopValue >= 0.5) return;
  if (speedState == 0 && noise) noise->trigger(NoisePlayer::kStart);
  if (v == 1.0) {
    speedState = 1;
    setSpeed(slowSpeed);
  } else if (v == 0.0) {
    speedState = 2;
    setSpeed(fastSpeed);
  } else {
    speedState = 3;
    blend = 1.0 - v;
    setSpeed(slowSpeed + (fastSpeed - slowSpeed) * blend);
  }
}

void Motion::setStop(double v) {
  stopValue = v;
  if (v >= 0.5) {
    if (speedState != 0 && noise) noise->trigger(NoisePlayer::kStop);
    speedState = 0;
    setSpeed(0.0);
  } else {
    setLever(leverValue);
  }
}

void Motion::setSlowSpeed(double hz) {
  slowSpeed = hz;
  if (speedState == 1) setSpeed(hz);
  if (speedState == 3) setSpeed(hz + (fastSpeed - hz) * blend);
}

void Motion::setFastSpeed(double hz) {
  fastSpeed = hz;
  if (speedState == 2) setSpeed(hz);
  if (speedState == 3) setSpeed(slowSpeed + (hz - slowSpeed) * blend);
}

void Motion::setAccelTime(double seconds) {
  accelTime = seconds;
  accelPole = std::exp(-1.0 / (seconds * engineRate * 0.45511961331));
}

void Motion::setDecelTime(double seconds) {
  decelTime = seconds;
  decelPole = std::exp(-1.0 / (seconds * engineRate * 0.45511961331));
}

double Motion::advance() {
  const double pole = currentSpeed - targetSpeed > 0.0 ? decelPole : accelPole;
  currentSpeed = flush(currentSpeed * pole + targetSpeed * (1.0 - pole));
  double angle = phase + phaseOffset;
  while (angle >= 1.0) angle -= 1.0;
  while (angle < 0.0) angle += 1.0;
  if (direction > 0) {
    phase += currentSpeed;
    if (phase >= 1.0) phase -= 1.0;
  } else {
    phase -= currentSpeed;
    if (phase < 0.0) phase += 1.0;
  }
  return angle;
}

} // namespace qlx::reference
