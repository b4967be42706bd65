// SPDX-License-Identifier: ISC
#pragma once

#include "tests/reference/Cabinet.h"
#include "tests/reference/Motion.h"
#include "tests/reference/Primitives.h"

#include <array>
#include <memory>
#include <vector>

namespace qlx::reference {

// What the microphone hears of the rotating bass drum; the reduced form feeds the cross-talk.
struct Drum {
  Drum(bool fullForm, const Recordings& recordings);

  void setSampleRate(double rate, int factor);
  void clear();
  void resetFilters();
  void rebuildGeometry();
  void setFlip(double sign);
  void setMicDistance(double metres);
  void setReflectionLpf(double octaves);
  void setSplitter(double hz);
  void setFilterSaturation(double drive);
  double process(double x);
  double processReduced(double x);

  struct RayState {
    Ray ray;
    Biquad lowPass;
    double splitter = 0, reducedPole = 0, reducedTarget = 0, reducedState = 0, output = 0;
  };
  double fullRay(RayState& r);
  double reducedRay(RayState& r);
  void takeStep(double x);
  void finishStep();
  bool updating() const { return (counter & updateMask) == 0; }

  bool full;
  std::unique_ptr<NoisePlayer> noise;
  Motion motion;
  Cabinet cabinet;
  double engineRate = 44100, samplesPerMetre = 1, flipSign = 1;
  double reflectionCoeff = 0, reflectionLpf = 0, staticCutoffHz = 10000, splitterHz = 200;
  double lpStaticGain = 0, mechGain = 1, staticGain = 0;
  std::array<double, 5> d{}; // d[1] front, d[2] back and sides, d[3], d[4] corners
  int region = 1;
  unsigned counter = 0, updateMask = 15;
  double p1 = 0, p2 = 0, splitterPole = 0, staticPole = 0, poleSmoother = 0;
  double staticState = 0, staticLow = 0, staticAmplitude = 0, lowStaticPart = 0;
  std::vector<Biquad> preFilters;
  std::array<RayState, 7> rays; // 1..6
  Ring audioRing{4096}, angleRing{4096};
};

} // namespace qlx::reference
