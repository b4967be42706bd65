// SPDX-License-Identifier: ISC
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

using TrebleRoots = double[NoiseTreble::kCells];

/// Target roots of both sections, lanes being tunings; target[k] receives those of lane k.
inline void designTreble(const NoiseTreble& t, Lanes lowPassHz, Lanes shelfHz, Lanes shelfDb,
                         TrebleRoots* target) {
  const auto inRange = [&](Lanes hz) { return smaller(larger(hz, all(0.001)), all(t.highestHz)); };
  Lanes lowPass[kRootCount], shelf[kRootCount];
  const Lanes low = inRange(lowPassHz), high = inRange(shelfHz);
  Laws::rootsOf(lowPassDesign({t.angularRate, low, all(kSlowLowPassQ),
                               lowPassWarp(low * (1.0 / t.lowPassEdge))}),
                lowPass);
  const Tuned shelfTuned(t.angularRate, high, all(kFastShelfQ),
                         highShelfWarp(high * (1.0 / t.shelfEdge)));
  Laws::rootsOf(highShelfDesign(shelfTuned.c, shelfTuned.s / shelfTuned.q, shelfDb), shelf);
  for (int i = 0; i < kRootCount; ++i) {
    for (int lane = 0; lane < kWidth; ++lane) {
      target[lane][2 * i] = lowPass[i][lane];
      target[lane][2 * i + 1] = shelf[i][lane];
    }
  }
}

void settleTreble(NoiseTreble& t) {
  const bool tunedBefore = t.between > 0.0;
  const Lanes between = all(tunedBefore ? t.between : 0.5), square = between * between;
  TrebleRoots target[kWidth];
  designTreble(t, tunedBefore ? slowLowPassHz(between) : all(18000.0),
               tunedBefore ? fastShelfHz(square) : all(2000.0),
               tunedBefore ? fastShelfDb(square) : Lanes{}, target);
  for (int i = 0; i < NoiseTreble::kCells; ++i) {
    t.root[i] = t.target[i] = target[0][i];
    t.increment[i] = 0.0;
  }
  t.remaining = 0;
}

/// Targets for the tunings of a sub-block, a vector of samples at a time, where the speed moves.
struct TrebleTargets {
  TrebleRoots roots[kLongestSubBlock + kWidth];
  int known = 0; ///< samples from the first on whose targets stand in `roots`

  /// Target for sample j, whose speed lies between and differs from the last one.
  const double* at(const NoiseTreble& t, const double* between, int j, int n) {
    if (j >= known) {
      Lanes speed{};
      for (int k = 0; k < kWidth; ++k) {
        const double here = between[j + k < n ? j + k : j];
        speed[k] = here > 0.0 ? here : between[j];
      }
      const Lanes square = speed * speed;
      designTreble(t, slowLowPassHz(speed), fastShelfHz(square), fastShelfDb(square), roots + j);
      known = j + kWidth;
    }
    return roots[j];
  }
};

struct TwoMath {
  using Number = Two;
};

/// Low-pass and shelf side by side.
struct TrebleSections {
  using TwoLaws = FilterLaws<TwoMath>;
  struct Memory {
    Two x1, x2, y1, y2;
  };
  TwoLaws::Section section;
  Memory memory;

  explicit TrebleSections(const NoiseTreble& t)
      : section(sectionOf(t.root)), memory{loadTwo(t.x1), loadTwo(t.x2), loadTwo(t.y1),
                                           loadTwo(t.y2)} {}

  static TwoLaws::Section sectionOf(const double* cells) {
    Two root[kRootCount];
    for (int i = 0; i < kRootCount; ++i) root[i] = loadTwo(cells + 2 * i);
    return TwoLaws::Section(root);
  }
  void retune(const double* cells) { section = sectionOf(cells); }

  double step(double slow, double fast) {
    const Two y = section.next(memory, Two{slow, fast}, [](Two limited) { return limited; });
    return y[0] + y[1];
  }

  void storeMemory(NoiseTreble& t) const {
    const auto keep = [](double* p, Two x) {
      for (int k = 0; k < 2; ++k) p[k] = flushDenormals(x[k], 1e-30);
    };
    keep(t.x1, memory.x1);
    keep(t.x2, memory.x2);
    keep(t.y1, memory.y1);
    keep(t.y2, memory.y2);
  }
};

/// True where a tuning that stays has been reached to the last bits that matter.
inline bool hasArrived(const NoiseTreble& t, const double* between, int n) {
  for (int j = 0; j < n; ++j)
    if (between[j] != t.between) return false;
  double farthest = 0.0;
  for (int i = 0; i < NoiseTreble::kCells; ++i) {
    const double apart = t.target[i] - t.root[i];
    farthest = apart > farthest ? apart : -apart > farthest ? -apart : farthest;
  }
  return farthest < 1e-13;
}

/// Change of the speed within a sub-block, as a share of it, up to which the targets lie on a cubic
/// through those of four samples, k (n - 1) / 3: within 1e-9 of the roots. A rotor of the usual
/// inertia comes to speed that slowly.
constexpr double kGentleChange = 0.02;
constexpr int kGentlePoints = 4, kGentleShortest = 16;

inline bool isGentle(const double* between, int n) {
  const double first = between[0], last = between[n - 1];
  const double change = first < last ? last - first : first - last;
  const double lower = first < last ? first : last;
  return n >= kGentleShortest && change != 0.0 && change <= kGentleChange * lower;
}

/// The roots of both sections on their way through a sub-block, cells side by side in whole
/// vectors.
struct GentleRoots {
  static constexpr int kCells = 16;
  static_assert(kCells >= NoiseTreble::kCells && kCells % 8 == 0);
  alignas(64) double root[kCells] = {}, increment[kCells] = {};
  // The targets' cubic in Newton's form, the first of its points at 0.
  double at[kGentlePoints];
  alignas(64) double c[kGentlePoints][kCells] = {};

  GentleRoots(const NoiseTreble& t, const double* between, int n) {
    const auto sampleOf = [n](int point) { return point * (n - 1) / (kGentlePoints - 1); };
    TrebleRoots target[kGentlePoints - 1 + kWidth];
    for (int point = 0; point < kGentlePoints; point += kWidth) {
      Lanes speed{};
      for (int k = 0; k < kWidth; ++k)
        speed[k] = between[sampleOf(point + k < kGentlePoints ? point + k : kGentlePoints - 1)];
      const Lanes square = speed * speed;
      designTreble(t, slowLowPassHz(speed), fastShelfHz(square), fastShelfDb(square),
                   target + point);
    }
    for (int point = 0; point < kGentlePoints; ++point) {
      at[point] = sampleOf(point);
      for (int i = 0; i < NoiseTreble::kCells; ++i) c[point][i] = target[point][i];
    }
    for (int i = 0; i < NoiseTreble::kCells; ++i) root[i] = t.root[i];
    for (int order = 1; order < kGentlePoints; ++order) {
      for (int point = kGentlePoints - 1; point >= order; --point) {
        const double scale = 1.0 / (at[point] - at[point - order]);
        for (int i = 0; i < kCells; ++i) c[point][i] = (c[point][i] - c[point - 1][i]) * scale;
      }
    }
  }

  Lanes target(int cell, double x) const {
    return ((load(c[3] + cell) * (x - at[2]) + load(c[2] + cell)) * (x - at[1]) +
            load(c[1] + cell)) *
               x +
           load(c[0] + cell);
  }

  /// To sample j.
  void step(double share, int j) {
    for (int cell = 0; cell < kCells; cell += kWidth) {
      const Lanes from = load(root + cell), way = (target(cell, j) - from) * share;
      store(increment + cell, way);
      store(root + cell, from + way);
    }
  }
};

void gentleTreble(NoiseTreble& t, const double* between, const double* slow, const double* fast,
                  double* out, int n) {
  TrebleSections sections(t);
  GentleRoots roots(t, between, n);
  for (int j = 0; j < n; ++j) {
    roots.step(t.share, j);
    sections.retune(roots.root);
    out[j] = sections.step(slow[j], fast[j]);
  }
  // Where the tuning stays from here on, the rest of the way is covered as it began.
  for (int i = 0; i < NoiseTreble::kCells; ++i) {
    t.root[i] = roots.root[i];
    t.increment[i] = roots.increment[i];
    t.target[i] = roots.root[i] + roots.increment[i] * (t.steps - 1);
  }
  t.remaining = t.steps - 1;
  t.between = between[n - 1];
  sections.storeMemory(t);
}

void noiseTreble(NoiseTreble& t, const double* between, const double* slow, const double* fast,
                 double* out, int n) {
  if (isGentle(between, n)) {
    gentleTreble(t, between, slow, fast, out, n);
    return;
  }
  TrebleSections sections(t);
  if (hasArrived(t, between, n)) {
    for (int j = 0; j < n; ++j) out[j] = sections.step(slow[j], fast[j]);
    sections.storeMemory(t);
    return;
  }
  TrebleTargets targets;
  for (int j = 0; j < n; ++j) {
    const double speed = between[j];
    if (speed > 0.0) {
      const double* target = t.target;
      if (speed != t.between) {
        t.between = speed;
        target = targets.at(t, between, j, n);
      }
      for (int i = 0; i < NoiseTreble::kCells; ++i) {
        t.target[i] = target[i];
        t.increment[i] = (target[i] - t.root[i]) * t.share;
      }
      t.remaining = t.steps;
    }
    if (t.remaining > 0) {
      --t.remaining;
      for (int i = 0; i < NoiseTreble::kCells; ++i) t.root[i] += t.increment[i];
      sections.retune(t.root);
    }
    out[j] = sections.step(slow[j], fast[j]);
  }
  sections.storeMemory(t);
}

/// Interpolates a recording behind the sample at `index` of each lane, as it is stored: in single
/// precision.
inline Lanes readSamples(const float* loop, WholeLanes index, Lanes fraction) {
  const SingleQuad p = loadQuad(loop, index);
  const Singles t = toSingles(fraction), t2 = t * t, t3 = t2 * t;
  return toLanes(0.5F * ((2.0F * t2 - t3 - t) * p.p0 + (3.0F * t3 - 5.0F * t2 + 2.0F) * p.p1 +
                         (4.0F * t2 - 3.0F * t3 + t) * p.p2 + (t3 - t2) * p.p3));
}

void loopRead(const float* loop, int length, const double* position, const double* gain,
              double* sum, int n) {
  const Lanes whole = all(static_cast<double>(length));
  for (int j = 0; j < n; j += kWidth) {
    Lanes at = load(position + j);
    at = select(at < 0.0, at + whole, at);
    at = select(at >= whole, at - whole, at);
    at = smaller(larger(at, Lanes{}), whole); // whatever stands behind the sub-block's end
    const WholeLanes here = truncated(at);
    const Lanes value = readSamples(loop, oneBefore(here, length), at - asLanes(here));
    store(sum + j, load(sum + j) + load(gain + j) * value);
  }
}

} // namespace
} // namespace qlx::engine::kernels
