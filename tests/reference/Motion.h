// SPDX-License-Identifier: ISC
#pragma once

#include "tests/reference/NoisePlayer.h"

namespace qlx::reference {

// Speed selector, approach to the wanted speed and phase of one rotor.
struct Motion {
  // direction: +1 turns with increasing phase (drum), -1 the other way (horn).
  // noise: told of starts and stops, or none.
  Motion(int turnDirection, NoisePlayer* noisePlayer)
      : direction(turnDirection), noise(noisePlayer) {}

  void setSampleRate(double rate);
  void setLever(double v); // 1 slow, 0 fast
  void setStop(double v);
  void setSlowSpeed(double hz);
  void setFastSpeed(double hz);
  void setAccelTime(double seconds);
  void setDecelTime(double seconds);
  void setSpeed(double hz);
  double advance(); // the angle of this sample, in turns

  int direction;
  NoisePlayer* noise;
  double engineRate = 44100;
  int speedState = -1; // 0 stopped, 1 slow, 2 fast, 3 in between
  double leverValue = 1, stopValue = 0, slowSpeed = 0, fastSpeed = 0, blend = 0;
  double targetSpeedHz = 0, targetSpeed = 0, currentSpeed = 0;
  double accelTime = 1, decelTime = 1, accelPole = 0, decelPole = 0;
  double phase = 0, phaseOffset = 0;
};

} // namespace qlx::reference
