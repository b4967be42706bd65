// SPDX-License-Identifier: ISC
#pragma once

#include "engine/kernels/GlideKernels.h"
#include "engine/kernels/Kernels.h"

namespace qlx::engine::kernels {
namespace {

/// Samples of a sub-block rounded up to the groups of four that are read together.
constexpr int kBuffer = kLongestSubBlock + 4;

/// The movement of the mouth along the rays of one vector: the short arc in which it passes a ray's
/// direction takes half a period, the long way round the other half.
struct Warp {
  Lanes place, halfWidth, nearRate, farRate;

  template <int N>
  Warp(const RayLanes<N>& rays, int lane)
      : place(load(rays.place + lane)), halfWidth(load(rays.halfWidth + lane)),
        nearRate(load(rays.nearRate + lane)), farRate(load(rays.farRate + lane)) {}

  /// Sine of the movement's phase, -1 where the mouth is nearest.
  Lanes sine(Lanes angle) const {
    const Lanes x = wrapped(angle - place); // turns from the ray's direction
    // Both flanks of either arc have the same sine; the distance to the nearer border tells it.
    const Lanes inside = smaller(x - halfWidth, (1.0 - halfWidth) - x);
    return sineOfQuarter(inside * select(inside > 0.0, farRate, nearRate));
  }

  /// The phase's place in tables over the mouth's angle, 0 .. 1.
  Lanes tablePlace(Lanes angle) const {
    const Lanes x = wrapped(angle - place); // turns from the ray's direction
    const Lanes fromNear = x - halfWidth;
    const Lanes arriving = (fromNear - (1.0 - 2.0 * halfWidth)) * nearRate - kPi;
    Lanes phase = select(x >= 1.0 - halfWidth, arriving, fromNear * farRate);
    phase = select(x <= halfWidth, fromNear * nearRate, phase);
    const Lanes turns = phase * (0.5 / kPi) + 0.25;
    return select(turns < 0.0, turns + 1.0, turns);
  }
};

/// Where the first sample of a sub-block stands in the lines of each lane of a vector.
struct Beginning {
  int index[kWidth];

  explicit Beginning(int writeIndex) {
    for (int& i : index) i = writeIndex;
  }
  Lanes position() const {
    Lanes p{};
    for (int k = 0; k < kWidth; ++k) p[k] = index[k];
    return p;
  }
};

/// The rotor's angles as they arrive along the rays of one vector.
struct ArrivingAngles {
  const double* first[kWidth];

  template <int N>
  ArrivingAngles(const RayLanes<N>& rays, int lane, const Beginning& begin) {
    for (int k = 0; k < kWidth; ++k)
      first[k] =
          rays.angles[lane + k] + ((begin.index[k] + rays.angleLag[lane + k]) & (kLineSize - 1));
  }
  Lanes at(int j) const {
    const double* here[kWidth];
    for (int k = 0; k < kWidth; ++k) here[k] = first[k] + j;
    return loadOne(here);
  }
  /// Those of samples j to j + 3.
  Quad four(int j) const {
    const double* here[kWidth];
    for (int k = 0; k < kWidth; ++k) here[k] = first[k] + j;
    return loadQuad(here);
  }
};

/// The sound that arrives along the rays of one vector, and its level, at one sample.
template <int N>
struct Arrival {
  const RayLanes<N>& rays;
  Lanes delay, swing, levelPlace, levelSwing, levelScale, lowestLevel, gain;
  WholeLanes line, levels;

  Arrival(const RayLanes<N>& r, int l)
      : rays(r), delay(load(r.delay + l)), swing(load(r.swing + l)),
        levelPlace(load(r.levelPlace + l)), levelSwing(load(r.levelSwing + l)),
        levelScale(load(r.levelScale + l)), lowestLevel(load(r.lowestLevel + l)),
        gain(load(r.gain + l)), line(loadWhole(r.line + l)), levels(loadWhole(r.levels + l)) {}

  /// `direct`: where the sound would come from without the movement, one to two lengths beyond the
  /// beginning of the lines.
  Lanes sound(Lanes sine, Lanes direct) const {
    const Lanes back = direct - swing * sine;
    const WholeLanes whole = truncated(back);
    const WholeLanes index =
        _mm_add_epi32(_mm_and_si128(whole, _mm_set1_epi32(kLineSize - 1)), line);
    return cubic(loadQuad(rays.base, index), back - asLanes(whole));
  }

  Lanes level(Lanes sine) const {
    constexpr double kLast = kLevelPieces - 1e-10;
    const Lanes place = smaller(larger(levelPlace + levelSwing * sine, Lanes{}), all(kLast));
    const WholeLanes whole = truncated(place);
    const Quad c = loadQuad(rays.base, _mm_add_epi32(_mm_slli_epi32(whole, 2), levels));
    const Lanes t = place - asLanes(whole);
    const Lanes value = c.p0 + t * (c.p1 + t * (c.p2 + t * c.p3));
    return larger(value * levelScale, lowestLevel) * gain;
  }
};

/// Traces one vector of rays through a sub-block: `x` what arrives, `level` how loud.
template <int N>
inline void trace(const RayLanes<N>& rays, int lane, const Beginning& begin, int n,
                  double lowestSine, Lanes* x, Lanes* level) {
  const Warp warp(rays, lane);
  const Arrival<N> arrival(rays, lane);
  const ArrivingAngles angles(rays, lane, begin);
  // The four points begin one before the place; two lengths more keep it positive.
  Lanes direct = begin.position() + (2.0 * kLineSize - 1.0) - arrival.delay;
  // One step for the whole sub-block at a time: short chains of dependent operations keep the
  // processor busy.
  Lanes sine[kBuffer];
  for (int j = 0; j < n; j += 4) {
    const Quad angle = angles.four(j);
    sine[j] = larger(warp.sine(angle.p0), all(lowestSine));
    sine[j + 1] = larger(warp.sine(angle.p1), all(lowestSine));
    sine[j + 2] = larger(warp.sine(angle.p2), all(lowestSine));
    sine[j + 3] = larger(warp.sine(angle.p3), all(lowestSine));
  }
  for (int j = 0; j < n; ++j) {
    x[j] = arrival.sound(sine[j], direct);
    direct += 1.0;
  }
  for (int j = 0; j < n; ++j) level[j] = arrival.level(sine[j]);
}

/// Applies level and the treble that bounces lose; returns the sum to `sum`.
template <int N>
inline void bounce(RayLanes<N>& rays, int lane, int n, const Lanes* x, const Lanes* level,
                   Lanes* sum) {
  const Lanes pole = load(rays.bouncePole + lane), rest = 1.0 - pole;
  Lanes state = load(rays.bounce + lane);
  for (int j = 0; j < n; ++j) {
    state = state * pole + x[j] * level[j] * rest;
    sum[j] += state;
  }
  store(rays.bounce + lane, withoutTraces(state, 1e-24));
}

/// Calls tune(j) where the filters are re-tuned and run(from, to) for the samples between.
template <class Tune, class Run>
inline void betweenUpdates(const RayPass& pass, Tune tune, Run run) {
  int next = pass.firstUpdate;
  for (int j = 0; j < pass.n;) {
    if (j == next) {
      tune(j);
      next += pass.updateInterval;
    }
    const int end = next < pass.n ? next : pass.n;
    run(j, end);
    j = end;
  }
}

/// Tunes peak and shelf of one vector for the mouth's place in the table.
inline void tuneHorn(HornBank& bank, int lane, Lanes place) {
  const Quad mouth = readMouth(bank.table, place);
  approach(
      bank.peak, lane,
      peakDesign({bank.peak.angularRate, mouth.p0, mouth.p1, peakWarp(mouth.p0, bank.warpAt1750)},
                 mouth.p2));
  approach(bank.shelf, lane,
           highShelfDesign(all(bank.shelfCosine), all(bank.shelfSlope), mouth.p3));
}

/// The drum's low-pass of one vector.
inline void tuneDrum(DrumBank& bank, int lane) {
  const Lanes hz = load(bank.hz + lane);
  approach(bank.lowPass, lane,
           lowPassDesign({bank.lowPass.angularRate, hz, load(bank.q + lane),
                          lowPassWarp(hz * (1.0 / bank.lowPass.edgeHz))}));
}

void hornRays(HornBank& bank, int lanes, const RayPass& pass, double* pairs) {
  Lanes sum[kBuffer] = {};
  for (int lane = 0; lane < lanes; lane += kWidth) {
    Lanes x[kBuffer], level[kBuffer];
    const Beginning begin(pass.writeIndex);
    trace(bank.rays, lane, begin, pass.n, -1.0, x, level);
    const Warp warp(bank.rays, lane);
    const ArrivingAngles angles(bank.rays, lane, begin);
    betweenUpdates(
        pass, [&](int j) { tuneHorn(bank, lane, 1.0 - warp.tablePlace(angles.at(j))); },
        [&](int from, int to) {
          runGlide(bank.peak, lane, x + from, to - from);
          runGlide(bank.shelf, lane, x + from, to - from);
        });
    bounce(bank.rays, lane, pass.n, x, level, sum);
  }
  for (int j = 0; j < pass.n; ++j) storePair(pairs + 2 * j, sum[j]);
}

/// Ends all glides of one vector at once.
template <int N>
inline void arrive(GlideLanes<N>& g, int lane) {
  for (int i = 0; i < GlideLanes<N>::kRootCount; ++i) {
    store(g.root[i] + lane, load(g.root[i] + lane) + load(g.increment[i] + lane) / g.share);
    store(g.increment[i] + lane, Lanes{});
  }
}

void restHorn(HornBank& bank) {
  const Lanes shelfHz = all(bank.shelfHz);
  const Tuned shelf(bank.shelf.angularRate, shelfHz, all(bank.shelfQ),
                    highShelfWarp(shelfHz * (1.0 / bank.shelf.edgeHz)));
  bank.shelfCosine = shelf.c[0];
  bank.shelfSlope = shelf.s[0] / shelf.q[0];
  bank.warpAt1750 = power(all(1750.0 / bank.peak.edgeHz), 2.8)[0];
  for (int lane = 0; lane < kHornLanes; lane += kWidth) {
    tuneHorn(bank, lane, Lanes{});
    arrive(bank.peak, lane);
    arrive(bank.shelf, lane);
  }
}

void restDrum(DrumBank& bank) {
  for (int lane = 0; lane < kDrumLanes; lane += kWidth) {
    tuneDrum(bank, lane);
    arrive(bank.lowPass, lane);
  }
}

void drumRays(DrumBank& bank, int lanes, const RayPass& pass, double* out) {
  Lanes sum[kBuffer] = {};
  for (int lane = 0; lane < lanes; lane += kWidth) {
    Lanes x[kBuffer], level[kBuffer];
    const Beginning begin(pass.writeIndex);
    trace(bank.rays, lane, begin, pass.n, bank.lowestSine, x, level);
    Lanes low = load(bank.lowBand + lane);
    for (int j = 0; j < pass.n; ++j) {
      low = low * bank.splitterPole + x[j] * (1.0 - bank.splitterPole);
      x[j] -= low;
    }
    store(bank.lowBand + lane, withoutTraces(low, 1e-24));
    const Warp warp(bank.rays, lane);
    const ArrivingAngles angles(bank.rays, lane, begin);
    betweenUpdates(
        pass,
        [&](int j) {
          const Quad mouth = readMouth(bank.table, warp.tablePlace(angles.at(j)));
          store(bank.hz + lane, mouth.p0);
          store(bank.q + lane, mouth.p1);
          tuneDrum(bank, lane);
        },
        [&](int from, int to) { runGlide(bank.lowPass, lane, x + from, to - from); });
    bounce(bank.rays, lane, pass.n, x, level, sum);
  }
  for (int j = 0; j < pass.n; ++j) {
    double pair[2];
    storePair(pair, sum[j]);
    out[j] = pair[0] + pair[1];
  }
}

void reducedRays(ReducedBank& bank, int lanes, const RayPass& horn, const RayPass& drum,
                 double* pairs) {
  const int n = horn.n;
  for (int i = 0; i < 2 * n; ++i) pairs[i] = 0.0;
  for (int lane = 0; lane < lanes; lane += kWidth) {
    // Of each four lanes the first two belong to the horn, the others to the drum.
    Beginning begin(horn.writeIndex);
    LaneBits ofDrum{};
    for (int k = 0; k < kWidth; ++k) {
      if ((lane + k) % 4 < 2) continue;
      begin.index[k] = drum.writeIndex;
      ofDrum[k] = -1;
    }
    Lanes x[kBuffer], level[kBuffer], sum[kBuffer] = {};
    trace(bank.rays, lane, begin, n, -1.0, x, level);
    const Warp warp(bank.rays, lane);
    const ArrivingAngles angles(bank.rays, lane, begin);
    Lanes pole = load(bank.pole + lane), wanted = load(bank.wantedPole + lane);
    Lanes state = load(bank.lowPass + lane);
    const auto tune = [&](int j, LaneBits which) {
      const Split at = split(load(bank.cutoffPlace + lane) +
                             load(bank.cutoffStep + lane) * warp.tablePlace(angles.at(j)));
      const double *here[kWidth], *next[kWidth];
      for (int k = 0; k < kWidth; ++k) {
        here[k] = bank.cutoff[lane + k] + at.whole[k];
        next[k] = here[k] + 1;
      }
      const Lanes low = loadOne(here);
      const Lanes hz = low + (loadOne(next) - low) * at.fraction;
      wanted = select(which, powerOfTwo(hz * bank.settling), wanted);
    };
    int nextHorn = horn.firstUpdate, nextDrum = drum.firstUpdate;
    for (int j = 0; j < n; ++j) {
      if (j == nextHorn) {
        tune(j, ~ofDrum);
        nextHorn += horn.updateInterval;
      }
      if (j == nextDrum) {
        tune(j, ofDrum);
        nextDrum += drum.updateInterval;
      }
      pole = pole * bank.smoothing + wanted * (1.0 - bank.smoothing);
      state = state * pole + (x[j] - x[j] * pole);
      x[j] = state;
    }
    store(bank.pole + lane, pole);
    store(bank.wantedPole + lane, wanted);
    store(bank.lowPass + lane, withoutTraces(state, 1e-24));
    bounce(bank.rays, lane, n, x, level, sum);
    for (int j = 0; j < n; ++j) {
      for (int k = 0; k < kWidth; k += 2)
        pairs[2 * j + (lane + k) % 4 / 2] += sum[j][k] + sum[j][k + 1];
    }
  }
}

void fixedPair(FixedPair& fixed, double* pairs, int n) {
  const auto both = [](const double* const(&at)[2], int j) {
    return _mm_loadh_pd(_mm_load_sd(at[0] + j), at[1] + j);
  };
  const __m128d w0 = _mm_loadu_pd(fixed.weight[0]), w1 = _mm_loadu_pd(fixed.weight[1]);
  const __m128d w2 = _mm_loadu_pd(fixed.weight[2]), w3 = _mm_loadu_pd(fixed.weight[3]);
  const __m128d pole = _mm_loadu_pd(fixed.pole), rest = 1.0 - pole;
  const __m128d gain = _mm_loadu_pd(fixed.gain);
  __m128d state = _mm_loadu_pd(fixed.state);
  for (int j = 0; j < n; ++j) {
    const __m128d x = (w0 * both(fixed.first, j) + w1 * both(fixed.first, j + 1)) +
                      (w2 * both(fixed.first, j + 2) + w3 * both(fixed.first, j + 3));
    state = state * pole + x * rest;
    _mm_storeu_pd(pairs + 2 * j, _mm_loadu_pd(pairs + 2 * j) + state * gain);
  }
  for (int k = 0; k < 2; ++k)
    fixed.state[k] = state[k] < 1e-24 && state[k] > -1e-24 ? 0.0 : state[k];
}

void pairTaps(const PairTaps& taps, const double* past, double* pairs, int n) {
  for (int i = 0; i < 2 * n; i += kWidth) {
    Lanes sum = load(pairs + i);
    for (int t = 0; t < PairTaps::kCount; ++t)
      sum += taps.weight[t] * load(past + i - 2 * taps.back[t]);
    store(pairs + i, sum);
  }
}

} // namespace
} // namespace qlx::engine::kernels
