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
struct MouthPhase {
  Lanes angle, halfWidth, nearRate, farRate;

  template <int N>
  MouthPhase(const RayLanes<N>& rays, int lane)
      : angle(load(rays.angle + lane)), halfWidth(load(rays.halfWidth + lane)),
        nearRate(load(rays.nearRate + lane)), farRate(load(rays.farRate + lane)) {}

  /// Sine of the movement's phase, -1 where the mouth is nearest.
  Lanes sine(Lanes rotor) const {
    const Lanes x = wrapped(rotor - angle); // turns from the ray's direction
    // Both flanks of either arc have the same sine; the distance to the nearer border tells it.
    const Lanes inside = smaller(x - halfWidth, (1.0 - halfWidth) - x);
    return sineOfQuarter(inside * select(inside > 0.0, farRate, nearRate));
  }

  /// The phase as a position in tables over the mouth's angle, 0 .. 1.
  Lanes tablePosition(Lanes rotor) const {
    const Lanes x = wrapped(rotor - angle); // turns from the ray's direction
    const Lanes fromNear = x - halfWidth;
    const Lanes arriving = (fromNear - (1.0 - 2.0 * halfWidth)) * nearRate - kPi;
    Lanes phase = select(x >= 1.0 - halfWidth, arriving, fromNear * farRate);
    phase = select(x <= halfWidth, fromNear * nearRate, phase);
    const Lanes turns = phase * (0.5 / kPi) + 0.25;
    return select(turns < 0.0, turns + 1.0, turns);
  }
};

/// Where the first sample of a sub-block stands in the lines of each lane of a vector.
struct RayStart {
  int index[kWidth];

  explicit RayStart(int writeIndex) {
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
  ArrivingAngles(const RayLanes<N>& rays, int lane, const RayStart& start) {
    for (int k = 0; k < kWidth; ++k)
      first[k] =
          rays.angles[lane + k] + ((start.index[k] + rays.angleLag[lane + k]) & (kLineSize - 1));
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
struct RayTap {
  Lanes delayDepth, levelPosition, levelDepth, levelScale, lowestLevel, gain;
  const double *line[kWidth], *levels[kWidth];

  template <int N>
  RayTap(const RayLanes<N>& r, int l)
      : delayDepth(load(r.delayDepth + l)), levelPosition(load(r.levelPosition + l)),
        levelDepth(load(r.levelDepth + l)), levelScale(load(r.levelScale + l)),
        lowestLevel(load(r.lowestLevel + l)), gain(load(r.gain + l)) {
    for (int k = 0; k < kWidth; ++k) {
      line[k] = r.line[l + k];
      levels[k] = r.levels[l + k];
    }
  }

  /// `direct`: where the sound would come from without the movement, one to two lengths beyond the
  /// beginning of the lines.
  Lanes sound(Lanes sine, Lanes direct) const {
    const Lanes back = direct - delayDepth * sine;
    const WholeLanes whole = truncated(back);
    return cubic(loadQuad(line, lowBits(whole, kLineSize - 1)), back - asLanes(whole));
  }

  Lanes level(Lanes sine) const {
    constexpr double kLast = kLevelPieces - 1e-10;
    const Lanes position = smaller(larger(levelPosition + levelDepth * sine, Lanes{}), all(kLast));
    const WholeLanes whole = truncated(position);
    const Quad c = loadQuad(levels, timesFour(whole));
    const Lanes t = position - asLanes(whole);
    const Lanes value = c.p0 + t * (c.p1 + t * (c.p2 + t * c.p3));
    return larger(value * levelScale, lowestLevel) * gain;
  }
};

/// Traces one vector of rays through a sub-block: `x` what arrives, `level` how loud.
template <int N>
inline void trace(const RayLanes<N>& rays, int lane, const RayStart& start, int n,
                  double lowestSine, Lanes* x, Lanes* level) {
  const MouthPhase phase(rays, lane);
  const RayTap tap(rays, lane);
  const ArrivingAngles angles(rays, lane, start);
  // The four points begin one before the position; two lengths more keep it positive.
  Lanes direct = start.position() + (2.0 * kLineSize - 1.0) - load(rays.delay + lane);
  // One step for the whole sub-block at a time: short chains of dependent operations keep the
  // processor busy.
  Lanes sine[kBuffer];
  for (int j = 0; j < n; j += 4) {
    const Quad angle = angles.four(j);
    sine[j] = larger(phase.sine(angle.p0), all(lowestSine));
    sine[j + 1] = larger(phase.sine(angle.p1), all(lowestSine));
    sine[j + 2] = larger(phase.sine(angle.p2), all(lowestSine));
    sine[j + 3] = larger(phase.sine(angle.p3), all(lowestSine));
  }
  for (int j = 0; j < n; ++j) {
    x[j] = tap.sound(sine[j], direct);
    direct += 1.0;
  }
  for (int j = 0; j < n; ++j) level[j] = tap.level(sine[j]);
}

/// Applies the level and the treble that reflections lose; adds to `sum`.
template <int N>
inline void applyReflection(RayLanes<N>& rays, int lane, int n, const Lanes* x, const Lanes* level,
                            Lanes* sum) {
  const Lanes pole = load(rays.reflectionPole + lane), rest = 1.0 - pole;
  Lanes state = load(rays.reflection + lane);
  for (int j = 0; j < n; ++j) {
    state = state * pole + x[j] * level[j] * rest;
    sum[j] += state;
  }
  store(rays.reflection + lane, flushDenormals(state, kLeastState));
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

/// Tunes peak and shelf of one vector for the mouth's position in the table.
inline void tuneHorn(HornBank& bank, int lane, Lanes position) {
  const Quad mouth = readDirectivity(bank.table, position);
  approach(
      bank.peak, lane,
      peakDesign({bank.peak.angularRate, mouth.p0, mouth.p1, peakWarp(mouth.p0, bank.warpAtCentre)},
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

/// What the horn's lanes from `first` to before `end` add up to; whole vectors.
inline void hornLanes(HornBank& bank, int first, int end, const RayPass& pass, double* pairs) {
  Lanes sum[kBuffer] = {};
  for (int lane = first; lane < end; lane += kWidth) {
    Lanes x[kBuffer], level[kBuffer];
    const RayStart start(pass.writeIndex);
    trace(bank.rays, lane, start, pass.n, -1.0, x, level);
    const MouthPhase phase(bank.rays, lane);
    const ArrivingAngles angles(bank.rays, lane, start);
    betweenUpdates(
        pass, [&](int j) { tuneHorn(bank, lane, 1.0 - phase.tablePosition(angles.at(j))); },
        [&](int from, int to) {
          runGlide(bank.peak, lane, x + from, to - from);
          runGlide(bank.shelf, lane, x + from, to - from);
        });
    applyReflection(bank.rays, lane, pass.n, x, level, sum);
  }
  for (int j = 0; j < pass.n; ++j) storePair(pairs + 2 * j, sum[j]);
}

void hornRays(HornBank& bank, int lanes, const RayPass& pass, double* pairs) {
  hornLanes(bank, 0, lanes, pass, pairs);
}

/// Ends all glides of one vector at once.
template <int N>
inline void arrive(GlideLanes<N>& g, int lane) {
  for (int i = 0; i < kRootCount; ++i) {
    store(g.root[i] + lane, load(g.root[i] + lane) + load(g.increment[i] + lane) / g.share);
    store(g.increment[i] + lane, Lanes{});
  }
}

void settleHorn(HornBank& bank) {
  const Lanes shelfHz = all(bank.shelfHz);
  const Tuned shelf(bank.shelf.angularRate, shelfHz, all(bank.shelfQ),
                    highShelfWarp(shelfHz * (1.0 / bank.shelf.edgeHz)));
  bank.shelfCosine = shelf.c[0];
  bank.shelfSlope = shelf.s[0] / shelf.q[0];
  bank.warpAtCentre = power(all(kPeakWarpCentreHz / bank.peak.edgeHz), kPeakWarp)[0];
  for (int lane = 0; lane < kHornLanes; lane += kWidth) {
    tuneHorn(bank, lane, Lanes{});
    arrive(bank.peak, lane);
    arrive(bank.shelf, lane);
  }
}

void settleDrum(DrumBank& bank) {
  for (int lane = 0; lane < kDrumLanes; lane += kWidth) {
    tuneDrum(bank, lane);
    arrive(bank.lowPass, lane);
  }
}

void drumRays(DrumBank& bank, int lanes, const RayPass& pass, double* out) {
  Lanes sum[kBuffer] = {};
  for (int lane = 0; lane < lanes; lane += kWidth) {
    Lanes x[kBuffer], level[kBuffer];
    const RayStart start(pass.writeIndex);
    trace(bank.rays, lane, start, pass.n, bank.lowestSine, x, level);
    Lanes low = load(bank.lowBand + lane);
    for (int j = 0; j < pass.n; ++j) {
      low = low * bank.splitterPole + x[j] * (1.0 - bank.splitterPole);
      x[j] -= low;
    }
    store(bank.lowBand + lane, flushDenormals(low, kLeastState));
    const MouthPhase phase(bank.rays, lane);
    const ArrivingAngles angles(bank.rays, lane, start);
    betweenUpdates(
        pass,
        [&](int j) {
          const Quad mouth = readDirectivity(bank.table, phase.tablePosition(angles.at(j)));
          store(bank.hz + lane, mouth.p0);
          store(bank.q + lane, mouth.p1);
          tuneDrum(bank, lane);
        },
        [&](int from, int to) { runGlide(bank.lowPass, lane, x + from, to - from); });
    applyReflection(bank.rays, lane, pass.n, x, level, sum);
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
    RayStart start(horn.writeIndex);
    LaneBits ofDrum{};
    for (int k = 0; k < kWidth; ++k) {
      if ((lane + k) % 4 < 2) continue;
      start.index[k] = drum.writeIndex;
      ofDrum[k] = -1;
    }
    Lanes x[kBuffer], level[kBuffer], sum[kBuffer] = {};
    trace(bank.rays, lane, start, n, -1.0, x, level);
    const MouthPhase phase(bank.rays, lane);
    const ArrivingAngles angles(bank.rays, lane, start);
    Lanes pole = load(bank.pole + lane), wanted = load(bank.wantedPole + lane);
    Lanes state = load(bank.lowPass + lane);
    const auto tune = [&](int j, LaneBits which) {
      const Split at = split(load(bank.cutoffStart + lane) +
                             load(bank.cutoffStep + lane) * phase.tablePosition(angles.at(j)));
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
    store(bank.lowPass + lane, flushDenormals(state, kLeastState));
    applyReflection(bank.rays, lane, n, x, level, sum);
    for (int j = 0; j < n; ++j) {
      for (int k = 0; k < kWidth; k += 2)
        pairs[2 * j + (lane + k) % 4 / 2] += sum[j][k] + sum[j][k + 1];
    }
  }
}

void fixedPair(FixedPair& fixed, double* pairs, int n) {
  const auto both = [&](int j) { return loadTwo(fixed.first[0] + j, fixed.first[1] + j); };
  const Two w0 = loadTwo(fixed.weight[0]), w1 = loadTwo(fixed.weight[1]);
  const Two w2 = loadTwo(fixed.weight[2]), w3 = loadTwo(fixed.weight[3]);
  const Two pole = loadTwo(fixed.pole), rest = 1.0 - pole, gain = loadTwo(fixed.gain);
  Two state = loadTwo(fixed.state);
  for (int j = 0; j < n; ++j) {
    const Two x = (w0 * both(j) + w1 * both(j + 1)) + (w2 * both(j + 2) + w3 * both(j + 3));
    state = state * pole + x * rest;
    storeTwo(pairs + 2 * j, loadTwo(pairs + 2 * j) + state * gain);
  }
  for (int k = 0; k < 2; ++k) fixed.state[k] = flushDenormals(state[k], kLeastState);
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
