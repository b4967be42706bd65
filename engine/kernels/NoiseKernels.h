#pragma once

#include "engine/kernels/GlideKernels.h"

namespace qlx::engine::kernels {
namespace {

// Treble of the drum's noise between slow and fast: the slow recording loses it, the fast one gains
// it.
inline Lanes slowLowPassHz(Lanes between) { return 18000.0 - 18000.0 * power(between, 0.06); }
inline Lanes fastShelfHz(Lanes square) { return 3500.0 + 9500.0 * square; }
inline Lanes fastShelfDb(Lanes square) { return 12.0 * square - 12.0; }
constexpr double kSlowLowPassQ = 0.7, kFastShelfQ = 0.707;

/// Target roots of both sections, lanes being tunings; target[t] receives those of tuning t.
inline void designTreble(const NoiseTreble& t, Lanes lowPassHz, Lanes shelfHz, Lanes shelfDb,
                         double (*target)[2 * NoiseTreble::kPlaces]) {
  const auto inRange = [&](Lanes hz) { return smaller(larger(hz, all(0.001)), all(t.highestHz)); };
  Lanes roots[2][7];
  lowPassDesign(
      tuned(t.angularRate, t.lowPassEdge, inRange(lowPassHz), all(kSlowLowPassQ), kLowPassWarp))
      .roots(roots[0]);
  highShelfDesign(
      tuned(t.angularRate, t.shelfEdge, inRange(shelfHz), all(kFastShelfQ), kHighShelfWarp),
      shelfDb)
      .roots(roots[1]);
  for (int section = 0; section < 2; ++section)
    for (int i = 0; i < 7; ++i)
      for (int lane = 0; lane < kWidth; ++lane)
        target[lane][NoiseTreble::kPlaces * section + i] = roots[section][i][lane];
}

void restTreble(NoiseTreble& t) {
  const bool tunedBefore = t.between > 0.0;
  const Lanes place = all(tunedBefore ? t.between : 0.5), square = place * place;
  double target[kWidth][2 * NoiseTreble::kPlaces] = {};
  designTreble(t, tunedBefore ? slowLowPassHz(place) : all(18000.0),
               tunedBefore ? fastShelfHz(square) : all(2000.0),
               tunedBefore ? fastShelfDb(square) : Lanes{}, target);
  for (int i = 0; i < 2 * NoiseTreble::kPlaces; ++i) {
    t.root[i] = t.target[i] = target[0][i];
    t.increment[i] = 0.0;
  }
  t.remaining = 0;
}

inline void dropTrace(double& state) {
  if (state < 1e-30 && state > -1e-30) state = 0.0;
}

/// Starts the glides towards the target anew.
inline void retune(NoiseTreble& t, const double* target) {
  for (int i = 0; i < 2 * NoiseTreble::kPlaces; ++i) {
    t.target[i] = target[i];
    t.increment[i] = (target[i] - t.root[i]) * t.share;
  }
  t.remaining = t.steps;
}

/// One sample of a section with the roots of this moment.
inline void stepSection(NoiseTreble& t, int section, double& run) {
  const double* r = t.root + NoiseTreble::kPlaces * section;
  const double zeros = r[0] + r[1], zeroProduct = r[0] * r[1] + r[2] * r[2];
  const double poles = r[3] + r[4], poleProduct = r[3] * r[4] + r[5] * r[5];
  const double x = run;
  const double fed = r[6] * (x - zeros * t.x1[section] + zeroProduct * t.x2[section]);
  const double y = (fed - poleProduct * t.y2[section]) + poles * t.y1[section];
  t.x2[section] = t.x1[section];
  t.x1[section] = x;
  t.y2[section] = t.y1[section];
  t.y1[section] = y;
  run = y;
}

/// Targets for the tunings of a stretch, a vector of samples at a time, where the speed moves.
struct TrebleTargets {
  alignas(32) double roots[kLongestRun + kWidth][2 * NoiseTreble::kPlaces];
  int known = 0; ///< samples from the first on whose targets stand in `roots`

  /// Target for sample j, whose place lies between the speeds and differs from the last one.
  const double* at(NoiseTreble& t, const double* between, int j, int n) {
    if (j >= known) {
      Lanes place{};
      for (int k = 0; k < kWidth; ++k) {
        const double here = between[j + k < n ? j + k : j];
        place[k] = here > 0.0 ? here : between[j];
      }
      const Lanes square = place * place;
      designTreble(t, slowLowPassHz(place), fastShelfHz(square), fastShelfDb(square), roots + j);
      known = j + kWidth;
    }
    return roots[j];
  }
};

void noiseTreble(NoiseTreble& t, const double* between, double* slow, double* fast, int n) {
  TrebleTargets targets;
  for (int j = 0; j < n; ++j) {
    const double place = between[j];
    if (place > 0.0) {
      const bool moved = place != t.between;
      if (moved) t.between = place;
      retune(t, moved ? targets.at(t, between, j, n) : t.target);
    }
    if (t.remaining > 0) {
      --t.remaining;
      for (int i = 0; i < 2 * NoiseTreble::kPlaces; ++i) t.root[i] += t.increment[i];
    }
    stepSection(t, 0, slow[j]);
    stepSection(t, 1, fast[j]);
  }
  for (int section = 0; section < 2; ++section) {
    dropTrace(t.x1[section]);
    dropTrace(t.x2[section]);
    dropTrace(t.y1[section]);
    dropTrace(t.y2[section]);
  }
}

} // namespace
} // namespace qlx::engine::kernels
