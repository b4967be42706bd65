// SPDX-License-Identifier: ISC
#pragma once

#include "tests/reference/Cabinet.h"
#include "tests/reference/Motion.h"
#include "tests/reference/Primitives.h"

#include <array>
#include <memory>
#include <vector>

namespace qlx::reference {

// What one microphone hears of the rotating horn. The full form has a noise player (index 0 or 1);
// the reduced form feeds the cross-talk.
struct Horn {
  Horn(bool fullForm, int index, const Recordings& recordings);

  void setSampleRate(double rate, int factor);
  void clear();
  void resetFilters();
  void rebuildGeometry();
  void setFlip(double sign);
  void setMicDistance(double metres);
  void setReflectionLpf(double octaves);
  void setStaticCutoff(double hz);
  double process(double x);
  double processReduced(double x);

  struct RayState {
    Ray ray;
    Biquad peak, shelf;
    double reducedPole = 0, reducedTarget = 0, reducedState = 0, bounceState = 0;
  };
  double fullRay(RayState& r);
  double reducedRay(RayState& r);
  double bounce(RayState& r, double x, int bounces);
  void takeStep(double x);
  double throughBody(double x);
  bool updating() const { return (counter & updateMask) == 0; }
  int sideRay() const { return region == 0 ? 7 : 8; } // heard outside region 1

  bool full;
  std::unique_ptr<NoisePlayer> noise;
  Motion motion;
  Cabinet cabinet;
  double engineRate = 44100, samplesPerMetre = 1, flipSign = 100;
  double reflectionCoeff = 0, reflectionLpf = 0.3333, staticCutoffHz = 10000, ampClip = 0;
  double mechGain = 1, staticGain = 0, gZ = 0;
  std::array<double, 8> g{}; // g[1] direct .. g[7] misc
  int openBackMode = 0, region = 1;
  unsigned counter = 0, updateMask = 15;
  double reflectionScale = 1, outputGain = 1;
  std::array<double, 5> bouncePole{};
  double staticPole = 0, staticState = 0, poleSmoother = 0, zDelay1 = 0, zDelay2 = 0;
  double staticAmplitude = 0;
  std::array<RayState, 13> rays; // 1..12
  std::vector<Biquad> body;
  Ring audioRing{4096}, angleRing{4096};
  std::vector<Ring> outputRings; // 1..12 rays, 0 the static ray
};

} // namespace qlx::reference
