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

using TrebleRoots = double[NoiseTreble::kPlaces];

/// Target roots of both sections, lanes being tunings; target[k] receives those of lane k.
inline void designTreble(const NoiseTreble& t, Lanes lowPassHz, Lanes shelfHz, Lanes shelfDb,
                         TrebleRoots* target) {
  const auto inRange = [&](Lanes hz) { return smaller(larger(hz, all(0.001)), all(t.highestHz)); };
  Lanes lowPass[7], shelf[7];
  const Lanes low = inRange(lowPassHz), high = inRange(shelfHz);
  lowPassDesign({t.angularRate, low, all(kSlowLowPassQ), lowPassWarp(low * (1.0 / t.lowPassEdge))})
      .roots(lowPass);
  const Tuned shelfTuned(t.angularRate, high, all(kFastShelfQ),
                         highShelfWarp(high * (1.0 / t.shelfEdge)));
  highShelfDesign(shelfTuned.c, shelfTuned.s / shelfTuned.q, shelfDb).roots(shelf);
  for (int i = 0; i < 7; ++i) {
    for (int lane = 0; lane < kWidth; ++lane) {
      target[lane][2 * i] = lowPass[i][lane];
      target[lane][2 * i + 1] = shelf[i][lane];
    }
  }
}

void restTreble(NoiseTreble& t) {
  const bool tunedBefore = t.between > 0.0;
  const Lanes place = all(tunedBefore ? t.between : 0.5), square = place * place;
  TrebleRoots target[kWidth];
  designTreble(t, tunedBefore ? slowLowPassHz(place) : all(18000.0),
               tunedBefore ? fastShelfHz(square) : all(2000.0),
               tunedBefore ? fastShelfDb(square) : Lanes{}, target);
  for (int i = 0; i < NoiseTreble::kPlaces; ++i) {
    t.root[i] = t.target[i] = target[0][i];
    t.increment[i] = 0.0;
  }
  t.remaining = 0;
}

/// Targets for the tunings of a sub-block, a vector of samples at a time, where the speed moves.
struct TrebleTargets {
  TrebleRoots roots[kLongestSubBlock + kWidth];
  int known = 0; ///< samples from the first on whose targets stand in `roots`

  /// Target for sample j, whose place lies between the speeds and differs from the last one.
  const double* at(const NoiseTreble& t, const double* between, int j, int n) {
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

/// Low-pass and shelf side by side.
struct TrebleSections {
  __m128d zeros, zeroProduct, poles, poleProduct, gain;
  __m128d x1, x2, y1, y2;

  explicit TrebleSections(const NoiseTreble& t)
      : x1(_mm_loadu_pd(t.x1)), x2(_mm_loadu_pd(t.x2)), y1(_mm_loadu_pd(t.y1)),
        y2(_mm_loadu_pd(t.y2)) {
    place(t);
  }

  void place(const NoiseTreble& t) {
    const auto root = [&](int i) { return _mm_loadu_pd(t.root + 2 * i); };
    zeros = 2.0 * root(0);
    zeroProduct = root(0) * root(0) - root(1) * root(1) + root(2) * root(2);
    poles = 2.0 * root(3);
    poleProduct = root(3) * root(3) - root(4) * root(4) + root(5) * root(5);
    gain = root(6);
  }

  double step(double slow, double fast) {
    const __m128d x = _mm_set_pd(fast, slow);
    const __m128d fed = gain * (x - zeros * x1 + zeroProduct * x2);
    const __m128d y = (fed - poleProduct * y2) + poles * y1;
    x2 = x1;
    x1 = x;
    y2 = y1;
    y1 = y;
    return y[0] + y[1];
  }

  void storeMemory(NoiseTreble& t) const {
    const auto keep = [](double* p, __m128d x) {
      for (int k = 0; k < 2; ++k) p[k] = x[k] < 1e-30 && x[k] > -1e-30 ? 0.0 : x[k];
    };
    keep(t.x1, x1);
    keep(t.x2, x2);
    keep(t.y1, y1);
    keep(t.y2, y2);
  }
};

/// True where a tuning that stays has been reached to the last bits that matter.
inline bool hasArrived(const NoiseTreble& t, const double* between, int n) {
  for (int j = 0; j < n; ++j)
    if (between[j] != t.between) return false;
  double farthest = 0.0;
  for (int i = 0; i < NoiseTreble::kPlaces; ++i) {
    const double apart = t.target[i] - t.root[i];
    farthest = apart > farthest ? apart : -apart > farthest ? -apart : farthest;
  }
  return farthest < 1e-13;
}

void noiseTreble(NoiseTreble& t, const double* between, const double* slow, const double* fast,
                 double* out, int n) {
  TrebleSections sections(t);
  if (hasArrived(t, between, n)) {
    for (int j = 0; j < n; ++j) out[j] = sections.step(slow[j], fast[j]);
    sections.storeMemory(t);
    return;
  }
  TrebleTargets targets;
  for (int j = 0; j < n; ++j) {
    const double place = between[j];
    if (place > 0.0) {
      const double* target = t.target;
      if (place != t.between) {
        t.between = place;
        target = targets.at(t, between, j, n);
      }
      for (int i = 0; i < NoiseTreble::kPlaces; ++i) {
        t.target[i] = target[i];
        t.increment[i] = (target[i] - t.root[i]) * t.share;
      }
      t.remaining = t.steps;
    }
    if (t.remaining > 0) {
      --t.remaining;
      for (int i = 0; i < NoiseTreble::kPlaces; ++i) t.root[i] += t.increment[i];
      sections.place(t);
    }
    out[j] = sections.step(slow[j], fast[j]);
  }
  sections.storeMemory(t);
}

/// Interpolates a recording behind the sample at `index` of each lane, as it is stored: in single
/// precision.
inline Lanes readSamples(const float* loop, WholeLanes index, Lanes fraction) {
  int at[kWidth];
  storeWhole(at, index);
#if defined(__AVX2__) && defined(__FMA__)
  const __m128 t = _mm256_cvtpd_ps(fraction);
  __m128 p0 = _mm_loadu_ps(loop + at[0]), p1 = _mm_loadu_ps(loop + at[1]);
  __m128 p2 = _mm_loadu_ps(loop + at[2]), p3 = _mm_loadu_ps(loop + at[3]);
  _MM_TRANSPOSE4_PS(p0, p1, p2, p3);
#else
  // The upper two numbers of each are not used.
  const __m128 t = _mm_cvtpd_ps(fraction);
  const __m128 a = _mm_loadu_ps(loop + at[0]), b = _mm_loadu_ps(loop + at[1]);
  const __m128 p0 = _mm_unpacklo_ps(a, b), p1 = _mm_movehl_ps(p0, p0);
  const __m128 p2 = _mm_unpackhi_ps(a, b), p3 = _mm_movehl_ps(p2, p2);
#endif
  const __m128 t2 = t * t, t3 = t2 * t;
  const __m128 value = 0.5F * ((2.0F * t2 - t3 - t) * p0 + (3.0F * t3 - 5.0F * t2 + 2.0F) * p1 +
                               (4.0F * t2 - 3.0F * t3 + t) * p2 + (t3 - t2) * p3);
#if defined(__AVX2__) && defined(__FMA__)
  return _mm256_cvtps_pd(value);
#else
  return _mm_cvtps_pd(value);
#endif
}

void loopRead(const float* loop, int length, const double* position, const double* gain,
              double* sum, int n) {
  const Lanes whole = all(static_cast<double>(length));
  const __m128i wrap = _mm_set1_epi32(length);
  for (int j = 0; j < n; j += kWidth) {
    Lanes at = load(position + j);
    at = select(at < 0.0, at + whole, at);
    at = select(at >= whole, at - whole, at);
    at = smaller(larger(at, Lanes{}), whole); // whatever stands behind the sub-block's end
    const WholeLanes here = truncated(at);
    const WholeLanes before = _mm_sub_epi32(here, _mm_set1_epi32(1));
    const WholeLanes index = _mm_add_epi32(before, _mm_and_si128(_mm_srai_epi32(before, 31), wrap));
    const Lanes value = readSamples(loop, index, at - asLanes(here));
    store(sum + j, load(sum + j) + load(gain + j) * value);
  }
}

} // namespace
} // namespace qlx::engine::kernels
