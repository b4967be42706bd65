// SPDX-License-Identifier: ISC
#pragma once

#include "engine/kernels/Kernels.h"
#include "engine/kernels/LaneMath.h"

namespace qlx::engine::kernels {
namespace {

struct VectorMath {
  using Number = Lanes;
  static Lanes root(Lanes x) { return kernels::root(x); }
  static Lanes absolute(Lanes x) { return kernels::absolute(x); }
  static LaneBits atLeastZero(Lanes x) { return x >= 0.0; }
  static Lanes choose(LaneBits first, Lanes a, Lanes b) { return select(first, a, b); }
};
using Laws = FilterLaws<VectorMath>;

/// States whose magnitude is below `least` become zero, so that no memory decays into subnormal
/// numbers.
inline Lanes flushDenormals(Lanes state, double least) {
  return select(absolute(state) < least, Lanes{}, state);
}
inline double flushDenormals(double state, double least) {
  return state < least && state > -least ? 0.0 : state;
}

/// The least magnitude of what one-pole low-passes remember.
constexpr double kLeastState = 1e-24;

/// Reads a table over the mouth's angle at `position`, 0 .. 1, along straight lines.
inline Quad readDirectivity(const DirectivityTable& table, Lanes position) {
  const Split at = split(position * static_cast<double>(table.intervals));
  const double *here[kWidth], *next[kWidth];
  for (int k = 0; k < kWidth; ++k) {
    here[k] = table.row[at.whole[k]];
    next[k] = table.row[at.whole[k] + 1];
  }
  const Quad a = loadQuad(here), b = loadQuad(next);
  return {a.p0 + (b.p0 - a.p0) * at.fraction, a.p1 + (b.p1 - a.p1) * at.fraction,
          a.p2 + (b.p2 - a.p2) * at.fraction, a.p3 + (b.p3 - a.p3) * at.fraction};
}

/// Amplitude of half the decibels.
inline Lanes halfGain(Lanes db) { return powerOfTwo(db * (0.025 * 3.32192809488736235)); }

/// A frequency on the unit circle and the Q less its counter-warp.
struct Tuned {
  Lanes c, s, q;
  Tuned(double angularRate, Lanes hz, Lanes plainQ, Lanes warp)
      : c(cosineOfHalf(hz * angularRate)), s(sineOfHalf(hz * angularRate)),
        q(Laws::warpedQ(plainQ, warp)) {}
  Lanes alpha() const { return s / (2.0 * q); }
};

// The counter-warp from the frequency as a share of its edge.
static_assert(kHighShelfWarp == 4.0 && kLowPassWarp == 8.0);
inline Lanes highShelfWarp(Lanes share) { return fourth(share); }
inline Lanes lowPassWarp(Lanes share) { return eighth(share); }
inline Lanes peakWarp(Lanes hz, double warpAtCentre) {
  return warpAtCentre * peakWarpAroundCentre((hz - kPeakWarpCentreHz) * (1.0 / kPeakWarpReachHz));
}

inline Laws::Design peakDesign(const Tuned& t, Lanes db) {
  return Laws::peak(t.c, t.alpha(), halfGain(db));
}
inline Laws::Design lowPassDesign(const Tuned& t) { return Laws::lowPass(t.c, t.alpha()); }
inline Laws::Design highShelfDesign(Lanes cosine, Lanes slope, Lanes db) {
  return Laws::shelf(-1.0, cosine, slope, halfGain(db));
}

/// Sends the roots of one vector of sections on their way to a design.
template <int N>
inline void approach(GlideLanes<N>& g, int lane, const Laws::Design& design) {
  Lanes target[kRootCount];
  Laws::rootsOf(design, target);
  for (int i = 0; i < kRootCount; ++i)
    store(g.increment[i] + lane, (target[i] - load(g.root[i] + lane)) * g.share);
}

/// Last two inputs and outputs of a vector of sections.
struct SectionMemory {
  Lanes x1, x2, y1, y2;
};

/// One vector of sections over n samples in place; the roots move before every sample.
template <int N>
inline void runGlide(GlideLanes<N>& g, int lane, Lanes* samples, int n) {
  Lanes root[kRootCount], increment[kRootCount];
  for (int i = 0; i < kRootCount; ++i) {
    root[i] = load(g.root[i] + lane);
    increment[i] = load(g.increment[i] + lane);
  }
  Laws::Glide glide(root, increment);
  SectionMemory m{load(g.x1 + lane), load(g.x2 + lane), load(g.y1 + lane), load(g.y2 + lane)};
  for (int j = 0; j < n; ++j) samples[j] = glide.next(m, samples[j], [](Lanes y) { return y; });
  constexpr double kLeast = 1e-30;
  // A half-difference that has come to zero shrinks from update to update.
  for (int i = 0; i < kRootCount; ++i)
    store(g.root[i] + lane,
          flushDenormals(root[i] + increment[i] * static_cast<double>(n), kLeast));
  store(g.x1 + lane, flushDenormals(m.x1, kLeast));
  store(g.x2 + lane, flushDenormals(m.x2, kLeast));
  store(g.y1 + lane, flushDenormals(m.y1, kLeast));
  store(g.y2 + lane, flushDenormals(m.y2, kLeast));
}

} // namespace
} // namespace qlx::engine::kernels
