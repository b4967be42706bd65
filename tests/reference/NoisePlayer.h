// SPDX-License-Identifier: ISC
#pragma once

#include "tests/reference/Biquad.h"

#include <span>

namespace qlx::reference {

// Motor noise at 44.1 kHz. A loop of N samples carries N + 3 (its first three again), the one-shot
// one zero more than its length. An empty span is silence.
struct Recordings {
  std::span<const float> hornSlow1, hornSlow2, hornFast, drumSlow, drumFast, startStop;
};

// Loops and one-shots of one rotor's motor and bearings.
struct NoisePlayer {
  enum Variant { kHorn, kDrum };
  enum Event { kNone = 0, kStart = 3, kStop = 4 };

  NoisePlayer(Variant v, int index, const Recordings& recordings);

  void setSampleRate(double rate);
  void setMicDistance(double metres);
  void setInputs(double newLevel, double newMicAngle, double newSpeed);
  void trigger(Event e);
  void reset();
  double tick();

  double hornLoops();
  double drumLoops();
  double oneShot();

  Variant variant;
  std::span<const float> slow, fast, shot;
  double offset;
  double engineRate = 44100, sampleStep = 1, slowThreshold = 1, fastThreshold = 1;
  double level = 0, micAngle = 0, speed = 0, micDistance = 1, distanceGain = 1;
  double slowPhase = 0, fastPhase = 0;
  double slowVolume = 0, fastVolume = 0, decelVolume = 0;
  Event event = kNone;
  double oneShotPos = 0, oneShotGain = 0;
  Biquad bandPass, slowLowPass, fastShelf;
  double slowLowPassHz = 18000, fastShelfHz = 2000; // wanted, whatever the rate allows
};

} // namespace qlx::reference
