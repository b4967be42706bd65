// SPDX-License-Identifier: ISC
#pragma once

#include "engine/kernels/Kernels.h"
#include "engine/kernels/LaneMath.h"

namespace qlx::engine::kernels {
namespace {

/// Lanes of a recursive state whose magnitude is below `least` become zero, so that no memory
/// decays into subnormal numbers.
inline Lanes withoutTraces(Lanes state, double least) {
  return select(absolute(state) < least, Lanes{}, state);
}

/// Reads a table over the mouth's angle at `place`, 0 .. 1, along straight lines.
inline Quad readMouth(const MouthTable& table, Lanes place) {
  const Split at = split(place * static_cast<double>(table.intervals));
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

/// A frequency on the unit circle, and the Q less the counter-warp by which it falls to nothing at
/// half the sample rate.
struct Tuned {
  Lanes c, s, q;
  Tuned(double angularRate, Lanes hz, Lanes plainQ, Lanes warp)
      : c(cosineOfHalf(hz * angularRate)), s(sineOfHalf(hz * angularRate)),
        q(plainQ - plainQ * warp) {}
};

// The counter-warp is a power of the frequency's share of half the sample rate, by response.
inline Lanes highShelfWarp(Lanes share) { return fourth(share); }
inline Lanes lowPassWarp(Lanes share) { return eighth(share); }
inline Lanes peakWarp(Lanes hz, double warpAt1750) {
  return warpAt1750 * peakWarpAround1750((hz - 1750.0) * (1.0 / 450.0));
}

/// Roots of k0 z^2 + k1 z + k2: middle +- apart, or middle +- i imag.
struct RootLanes {
  Lanes middle, apart, imag;
};

inline RootLanes rootsOf(Lanes k0, Lanes k1, Lanes k2) {
  const Lanes scale = 0.5 / k0;
  const Lanes discriminant = k1 * k1 - 4.0 * k0 * k2;
  const Lanes half = root(absolute(discriminant)) * scale;
  const LaneBits isReal = discriminant >= 0.0;
  return {-k1 * scale, select(isReal, half, Lanes{}), select(isReal, Lanes{}, half)};
}

/// Numerator and denominator of a section, normalised or not.
struct Design {
  Lanes a[3], b[3];

  /// What glides, in the order of GlideLanes::Root.
  void roots(Lanes (&target)[7]) const {
    const RootLanes zeros = rootsOf(b[0], b[1], b[2]), poles = rootsOf(a[0], a[1], a[2]);
    target[0] = zeros.middle;
    target[1] = zeros.apart;
    target[2] = zeros.imag;
    target[3] = poles.middle;
    target[4] = poles.apart;
    target[5] = poles.imag;
    target[6] = b[0] / a[0];
  }
};

inline Design peakDesign(const Tuned& t, Lanes db) {
  const Lanes gain = halfGain(db), alpha = t.s / (2.0 * t.q);
  const Lanes up = alpha * gain, down = alpha / gain;
  return {{1.0 + down, -2.0 * t.c, 1.0 - down}, {1.0 + up, -2.0 * t.c, 1.0 - up}};
}

/// `slope` is the sine of the frequency over the Q.
inline Design highShelfDesign(Lanes cosine, Lanes slope, Lanes db) {
  const Lanes A = halfGain(db), c = -cosine, width = slope * root(A);
  const Lanes more = A + 1.0, less = A - 1.0;
  return {
      {more + less * c + width, 2.0 * (less + more * c), more + less * c - width},
      {A * (more - less * c + width), -2.0 * A * (less - more * c), A * (more - less * c - width)}};
}

inline Design lowPassDesign(const Tuned& t) {
  const Lanes alpha = t.s / (2.0 * t.q), b = 0.5 * (1.0 - t.c);
  return {{1.0 + alpha, -2.0 * t.c, 1.0 - alpha}, {b, 1.0 - t.c, b}};
}

/// Sends the roots of one vector of sections on their way to a design.
template <int N>
inline void approach(GlideLanes<N>& g, int lane, const Design& design) {
  Lanes target[GlideLanes<N>::kRootCount];
  design.roots(target);
  for (int i = 0; i < GlideLanes<N>::kRootCount; ++i)
    store(g.increment[i] + lane, (target[i] - load(g.root[i] + lane)) * g.share);
}

/// Numbers that follow a polynomial of the second degree from sample to sample.
struct Parabola {
  Lanes value, step, bend;
  Parabola(Lanes start, Lanes linear, Lanes square)
      : value(start), step(linear + square), bend(2.0 * square) {}
  Lanes next() {
    value += step;
    step += bend;
    return value;
  }
};

/// Sum and product of a pair of roots that moves in straight lines.
struct MovingPair {
  Lanes sum, sumStep;
  Parabola product;

  template <int N>
  MovingPair(const double (&root)[7][N], const double (&step)[7][N], int first, int lane)
      : MovingPair(load(root[first] + lane), load(root[first + 1] + lane),
                   load(root[first + 2] + lane), load(step[first] + lane),
                   load(step[first + 1] + lane), load(step[first + 2] + lane)) {}

  MovingPair(Lanes middle, Lanes apart, Lanes imag, Lanes dMiddle, Lanes dApart, Lanes dImag)
      : sum(2.0 * middle), sumStep(2.0 * dMiddle),
        product(middle * middle - apart * apart + imag * imag,
                2.0 * (middle * dMiddle - apart * dApart + imag * dImag),
                dMiddle * dMiddle - dApart * dApart + dImag * dImag) {}
};

/// One vector of sections over n samples in place; the roots move before every sample.
template <int N>
inline void runGlide(GlideLanes<N>& g, int lane, Lanes* run, int n) {
  using G = GlideLanes<N>;
  MovingPair zeros(g.root, g.increment, G::kZeroMiddle, lane);
  MovingPair poles(g.root, g.increment, G::kPoleMiddle, lane);
  Lanes gain = load(g.root[G::kGain] + lane);
  const Lanes gainStep = load(g.increment[G::kGain] + lane);
  Lanes x1 = load(g.x1 + lane), x2 = load(g.x2 + lane);
  Lanes y1 = load(g.y1 + lane), y2 = load(g.y2 + lane);
  for (int j = 0; j < n; ++j) {
    gain += gainStep;
    zeros.sum += zeros.sumStep;
    poles.sum += poles.sumStep;
    const Lanes x = run[j];
    const Lanes fed = gain * (x - zeros.sum * x1 + zeros.product.next() * x2);
    const Lanes y = (fed - poles.product.next() * y2) + poles.sum * y1;
    x2 = x1;
    x1 = x;
    y2 = y1;
    y1 = y;
    run[j] = y;
  }
  constexpr double kLeast = 1e-30;
  // Where a pair lies apart no more, its distance shrinks from update to update.
  for (int i = 0; i < G::kRootCount; ++i)
    store(g.root[i] + lane, withoutTraces(load(g.root[i] + lane) +
                                              load(g.increment[i] + lane) * static_cast<double>(n),
                                          kLeast));
  store(g.x1 + lane, withoutTraces(x1, kLeast));
  store(g.x2 + lane, withoutTraces(x2, kLeast));
  store(g.y1 + lane, withoutTraces(y1, kLeast));
  store(g.y2 + lane, withoutTraces(y2, kLeast));
}

} // namespace
} // namespace qlx::engine::kernels
