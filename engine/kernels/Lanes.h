// SPDX-License-Identifier: ISC
#pragma once

// For the per-instruction-set kernel files alone: everything here has internal linkage, so that no
// function compiled for a newer processor can stand in for its namesake elsewhere. This is the only
// file that knows which instructions there are.

#include <immintrin.h>

namespace qlx::engine::kernels {
namespace {

/// Doubles that one instruction works on: eight with AVX-512 (its sets F, VL and DQ), four with
/// AVX2, two on every x86-64.
#if defined(__AVX512F__) && defined(__AVX512VL__) && defined(__AVX512DQ__)
#define QLX_EIGHT_LANES
constexpr int kWidth = 8;
#elif defined(__AVX2__) && defined(__FMA__)
constexpr int kWidth = 4;
#else
constexpr int kWidth = 2;
#endif

using Lanes = double __attribute__((vector_size(kWidth * sizeof(double))));
using LaneBits = long long __attribute__((vector_size(kWidth * sizeof(double))));
/// Lanes at any address that a double may have. The attributes stand before the '=': there both
/// compilers lower the alignment, behind the type clang ignores it.
using LanesInMemory
    __attribute__((vector_size(kWidth * sizeof(double)), aligned(sizeof(double)), may_alias)) =
        double;
static_assert(alignof(LanesInMemory) == alignof(double));

inline Lanes load(const double* p) { return *reinterpret_cast<const LanesInMemory*>(p); }
inline void store(double* p, Lanes x) { *reinterpret_cast<LanesInMemory*>(p) = x; }
inline Lanes all(double x) { return x - Lanes{}; }

inline Lanes select(LaneBits mask, Lanes yes, Lanes no) {
#if defined(QLX_EIGHT_LANES)
  return _mm512_mask_blend_pd(_mm512_movepi64_mask(reinterpret_cast<__m512i>(mask)), no, yes);
#elif defined(__AVX2__) && defined(__FMA__)
  return _mm256_blendv_pd(no, yes, reinterpret_cast<Lanes>(mask));
#else
  return reinterpret_cast<Lanes>((mask & reinterpret_cast<LaneBits>(yes)) |
                                 (~mask & reinterpret_cast<LaneBits>(no)));
#endif
}
/// a b + c and c - a b, on processors with fused multiply-adds always rounded once: what is left to
/// the compiler may round differently in two copies of a loop.
inline Lanes multiplyAdd(Lanes a, Lanes b, Lanes c) {
#if defined(QLX_EIGHT_LANES)
  return _mm512_fmadd_pd(a, b, c);
#elif defined(__AVX2__) && defined(__FMA__)
  return _mm256_fmadd_pd(a, b, c);
#else
  return a * b + c;
#endif
}
inline Lanes subtractProduct(Lanes c, Lanes a, Lanes b) {
#if defined(QLX_EIGHT_LANES)
  return _mm512_fnmadd_pd(a, b, c);
#elif defined(__AVX2__) && defined(__FMA__)
  return _mm256_fnmadd_pd(a, b, c);
#else
  return c - a * b;
#endif
}
inline Lanes absolute(Lanes x) {
  return reinterpret_cast<Lanes>(reinterpret_cast<LaneBits>(x) & 0x7fffffffffffffffLL);
}

#if defined(QLX_EIGHT_LANES)
inline Lanes smaller(Lanes a, Lanes b) { return _mm512_min_pd(a, b); }
inline Lanes larger(Lanes a, Lanes b) { return _mm512_max_pd(a, b); }
inline Lanes root(Lanes x) { return _mm512_sqrt_pd(x); }
#elif defined(__AVX2__) && defined(__FMA__)
inline Lanes smaller(Lanes a, Lanes b) { return _mm256_min_pd(a, b); }
inline Lanes larger(Lanes a, Lanes b) { return _mm256_max_pd(a, b); }
inline Lanes root(Lanes x) { return _mm256_sqrt_pd(x); }
#else
inline Lanes smaller(Lanes a, Lanes b) { return _mm_min_pd(a, b); }
inline Lanes larger(Lanes a, Lanes b) { return _mm_max_pd(a, b); }
inline Lanes root(Lanes x) { return _mm_sqrt_pd(x); }
#endif

/// x brought into 0 .. 1 by whole turns, for x at most one turn outside.
inline Lanes wrapped(Lanes x) {
#if defined(QLX_EIGHT_LANES)
  return x - _mm512_roundscale_pd(x, _MM_FROUND_TO_NEG_INF | _MM_FROUND_NO_EXC);
#elif defined(__AVX2__) && defined(__FMA__)
  return x - _mm256_floor_pd(x);
#else
  const Lanes one = all(1.0);
  x += _mm_and_pd(_mm_cmplt_pd(x, Lanes{}), one);
  return x - _mm_and_pd(_mm_cmpgt_pd(x, one), one);
#endif
}

#if defined(QLX_EIGHT_LANES)
using WholeLanes = __m256i;
inline WholeLanes truncated(Lanes x) { return _mm512_cvttpd_epi32(x); }
inline Lanes asLanes(WholeLanes i) { return _mm512_cvtepi32_pd(i); }
inline WholeLanes loadWhole(const int* p) {
  return _mm256_loadu_si256(reinterpret_cast<const __m256i*>(p));
}
inline void storeWhole(int* p, WholeLanes i) {
  _mm256_storeu_si256(reinterpret_cast<__m256i*>(p), i);
}
#elif defined(__AVX2__) && defined(__FMA__)
using WholeLanes = __m128i; ///< kWidth integers
inline WholeLanes truncated(Lanes x) { return _mm256_cvttpd_epi32(x); }
inline Lanes asLanes(WholeLanes i) { return _mm256_cvtepi32_pd(i); }
inline WholeLanes loadWhole(const int* p) {
  return _mm_loadu_si128(reinterpret_cast<const __m128i*>(p));
}
inline void storeWhole(int* p, WholeLanes i) { _mm_storeu_si128(reinterpret_cast<__m128i*>(p), i); }
#else
using WholeLanes = __m128i;
inline WholeLanes truncated(Lanes x) { return _mm_cvttpd_epi32(x); }
inline Lanes asLanes(WholeLanes i) { return _mm_cvtepi32_pd(i); }
inline WholeLanes loadWhole(const int* p) {
  return _mm_loadl_epi64(reinterpret_cast<const __m128i*>(p));
}
inline void storeWhole(int* p, WholeLanes i) { _mm_storel_epi64(reinterpret_cast<__m128i*>(p), i); }
#endif

#if defined(QLX_EIGHT_LANES)
inline WholeLanes lowBits(WholeLanes i, int mask) {
  return _mm256_and_si256(i, _mm256_set1_epi32(mask));
}
inline WholeLanes timesFour(WholeLanes i) { return _mm256_slli_epi32(i, 2); }
/// i - 1, and below zero `length` more.
inline WholeLanes oneBefore(WholeLanes i, int length) {
  const WholeLanes before = _mm256_sub_epi32(i, _mm256_set1_epi32(1));
  return _mm256_add_epi32(
      before, _mm256_and_si256(_mm256_srai_epi32(before, 31), _mm256_set1_epi32(length)));
}
#else
inline WholeLanes lowBits(WholeLanes i, int mask) { return _mm_and_si128(i, _mm_set1_epi32(mask)); }
inline WholeLanes timesFour(WholeLanes i) { return _mm_slli_epi32(i, 2); }
/// i - 1, and below zero `length` more.
inline WholeLanes oneBefore(WholeLanes i, int length) {
  const WholeLanes before = _mm_sub_epi32(i, _mm_set1_epi32(1));
  return _mm_add_epi32(before, _mm_and_si128(_mm_srai_epi32(before, 31), _mm_set1_epi32(length)));
}
#endif

/// Whole part of lanes within the range of int, and the rest.
struct Split {
  int whole[kWidth];
  Lanes fraction;
};

inline Split split(Lanes x) {
  Split s;
  const WholeLanes whole = truncated(x);
  storeWhole(s.whole, whole);
  s.fraction = x - asLanes(whole);
  return s;
}

/// Four neighbouring numbers of each lane's own array.
struct Quad {
  Lanes p0, p1, p2, p3;
};

/// Reads row[k][0 .. 3] into lane k.
inline Quad loadQuad(const double* const (&row)[kWidth]) {
#if defined(QLX_EIGHT_LANES)
  // Rows 0 and 4, 1 and 5, 2 and 6, 3 and 7 side by side, transposed in halves of pairs.
  const auto two = [](const double* low, const double* high) {
    return _mm512_insertf64x4(_mm512_castpd256_pd512(_mm256_loadu_pd(low)), _mm256_loadu_pd(high),
                              1);
  };
  const __m512d a = two(row[0], row[4]), b = two(row[1], row[5]);
  const __m512d c = two(row[2], row[6]), d = two(row[3], row[7]);
  const __m512d ab02 = _mm512_unpacklo_pd(a, b), ab13 = _mm512_unpackhi_pd(a, b);
  const __m512d cd02 = _mm512_unpacklo_pd(c, d), cd13 = _mm512_unpackhi_pd(c, d);
  const __m512i first = _mm512_setr_epi64(0, 1, 8, 9, 4, 5, 12, 13);
  const __m512i second = _mm512_setr_epi64(2, 3, 10, 11, 6, 7, 14, 15);
  return {_mm512_permutex2var_pd(ab02, first, cd02), _mm512_permutex2var_pd(ab13, first, cd13),
          _mm512_permutex2var_pd(ab02, second, cd02), _mm512_permutex2var_pd(ab13, second, cd13)};
#elif defined(__AVX2__) && defined(__FMA__)
  const __m256d a = _mm256_loadu_pd(row[0]), b = _mm256_loadu_pd(row[1]);
  const __m256d c = _mm256_loadu_pd(row[2]), d = _mm256_loadu_pd(row[3]);
  const __m256d ab02 = _mm256_unpacklo_pd(a, b), ab13 = _mm256_unpackhi_pd(a, b);
  const __m256d cd02 = _mm256_unpacklo_pd(c, d), cd13 = _mm256_unpackhi_pd(c, d);
  return {_mm256_permute2f128_pd(ab02, cd02, 0x20), _mm256_permute2f128_pd(ab13, cd13, 0x20),
          _mm256_permute2f128_pd(ab02, cd02, 0x31), _mm256_permute2f128_pd(ab13, cd13, 0x31)};
#else
  const __m128d a01 = _mm_loadu_pd(row[0]), a23 = _mm_loadu_pd(row[0] + 2);
  const __m128d b01 = _mm_loadu_pd(row[1]), b23 = _mm_loadu_pd(row[1] + 2);
  return {_mm_unpacklo_pd(a01, b01), _mm_unpackhi_pd(a01, b01), _mm_unpacklo_pd(a23, b23),
          _mm_unpackhi_pd(a23, b23)};
#endif
}

/// The same, beginning at row[k][index[k]].
inline Quad loadQuad(const double* const (&row)[kWidth], WholeLanes index) {
  const double* at[kWidth];
#if defined(QLX_EIGHT_LANES)
  int whole[kWidth];
  storeWhole(whole, index);
  for (int k = 0; k < kWidth; ++k) at[k] = row[k] + whole[k];
#else
  const long long first = _mm_cvtsi128_si64(index);
  at[0] = row[0] + static_cast<int>(first);
  at[1] = row[1] + (first >> 32);
#if defined(__AVX2__) && defined(__FMA__)
  const long long second = _mm_extract_epi64(index, 1);
  at[2] = row[2] + static_cast<int>(second);
  at[3] = row[3] + (second >> 32);
#endif
#endif
  return loadQuad(at);
}

/// One number of each lane's own array.
inline Lanes loadOne(const double* const (&at)[kWidth]) {
#if defined(QLX_EIGHT_LANES)
  return Lanes{*at[0], *at[1], *at[2], *at[3], *at[4], *at[5], *at[6], *at[7]};
#elif defined(__AVX2__) && defined(__FMA__)
  return Lanes{*at[0], *at[1], *at[2], *at[3]};
#else
  return Lanes{*at[0], *at[1]};
#endif
}

/// Adds up lanes with the same parity: pairs from a vector.
inline void storePair(double* pair, Lanes sum) {
#if defined(QLX_EIGHT_LANES)
  const __m256d half = _mm256_add_pd(_mm512_castpd512_pd256(sum), _mm512_extractf64x4_pd(sum, 1));
  _mm_storeu_pd(pair, _mm_add_pd(_mm256_castpd256_pd128(half), _mm256_extractf128_pd(half, 1)));
#elif defined(__AVX2__) && defined(__FMA__)
  _mm_storeu_pd(pair, _mm_add_pd(_mm256_castpd256_pd128(sum), _mm256_extractf128_pd(sum, 1)));
#else
  _mm_storeu_pd(pair, sum);
#endif
}

// Pairs of channels in a vector: with AVX2 there are two pairs in one, otherwise one.

/// A pair in all pairs of lanes.
inline Lanes allPairs(const double* pair) {
#if defined(QLX_EIGHT_LANES)
  return _mm512_broadcast_f64x2(_mm_loadu_pd(pair));
#elif defined(__AVX2__) && defined(__FMA__)
  return _mm256_broadcast_pd(reinterpret_cast<const __m128d*>(pair));
#else
  return load(pair);
#endif
}
/// The lanes moved up by a pair, with a new pair in the first lanes; and the last pair.
inline Lanes shiftInPair(const double* pair, [[maybe_unused]] Lanes x) {
#if defined(QLX_EIGHT_LANES)
  const __m512i moved = _mm512_alignr_epi64(_mm512_castpd_si512(x), _mm512_castpd_si512(x), 6);
  return _mm512_insertf64x2(_mm512_castsi512_pd(moved), _mm_loadu_pd(pair), 0);
#elif defined(__AVX2__) && defined(__FMA__)
  return _mm256_insertf128_pd(_mm256_castpd128_pd256(_mm_loadu_pd(pair)), _mm256_castpd256_pd128(x),
                              1);
#else
  return load(pair);
#endif
}
inline void storeLastPair(double* pair, Lanes x) {
#if defined(QLX_EIGHT_LANES)
  _mm_storeu_pd(pair, _mm512_extractf64x2_pd(x, 3));
#elif defined(__AVX2__) && defined(__FMA__)
  _mm_storeu_pd(pair, _mm256_extractf128_pd(x, 1));
#else
  store(pair, x);
#endif
}
/// The lanes moved up by one, with a new number in the first.
inline Lanes shiftIn(double first, Lanes x) {
#if defined(QLX_EIGHT_LANES)
  const __m512i moved = _mm512_alignr_epi64(_mm512_castpd_si512(x), _mm512_castpd_si512(x), 7);
  return _mm512_mask_broadcastsd_pd(_mm512_castsi512_pd(moved), 1, _mm_set_sd(first));
#elif defined(__AVX2__) && defined(__FMA__)
  return _mm256_blend_pd(_mm256_permute4x64_pd(x, 0x90), _mm256_set1_pd(first), 1);
#else
  return _mm_unpacklo_pd(_mm_set1_pd(first), x);
#endif
}

/// Adds up all lanes.
inline double sumOfLanes(Lanes x) {
#if defined(QLX_EIGHT_LANES)
  double pair[2];
  storePair(pair, x);
  return pair[0] + pair[1];
#elif defined(__AVX2__) && defined(__FMA__)
  return (x[0] + x[1]) + (x[2] + x[3]);
#else
  return x[0] + x[1];
#endif
}

/// Two numbers, whatever the width of Lanes.
using Two = __m128d;
inline Two loadTwo(const double* p) { return _mm_loadu_pd(p); }
inline Two loadTwo(const double* first, const double* second) {
  return _mm_loadh_pd(_mm_load_sd(first), second);
}
inline void storeTwo(double* p, Two x) { _mm_storeu_pd(p, x); }

/// Single precision, kWidth numbers, or the first two of four.
#if defined(QLX_EIGHT_LANES)
using Singles = __m256;
#else
using Singles = __m128;
#endif
inline Singles toSingles(Lanes x) {
#if defined(QLX_EIGHT_LANES)
  return _mm512_cvtpd_ps(x);
#elif defined(__AVX2__) && defined(__FMA__)
  return _mm256_cvtpd_ps(x);
#else
  return _mm_cvtpd_ps(x);
#endif
}
inline Lanes toLanes(Singles x) {
#if defined(QLX_EIGHT_LANES)
  return _mm512_cvtps_pd(x);
#elif defined(__AVX2__) && defined(__FMA__)
  return _mm256_cvtps_pd(x);
#else
  return _mm_cvtps_pd(x);
#endif
}

/// Four neighbouring single-precision numbers for each lane.
struct SingleQuad {
  Singles p0, p1, p2, p3;
};
inline SingleQuad loadQuad(const float* base, WholeLanes index) {
  int at[kWidth];
  storeWhole(at, index);
#if defined(QLX_EIGHT_LANES)
  __m128 low[4], high[4];
  for (int k = 0; k < 4; ++k) {
    low[k] = _mm_loadu_ps(base + at[k]);
    high[k] = _mm_loadu_ps(base + at[k + 4]);
  }
  _MM_TRANSPOSE4_PS(low[0], low[1], low[2], low[3]);
  _MM_TRANSPOSE4_PS(high[0], high[1], high[2], high[3]);
  return {_mm256_set_m128(high[0], low[0]), _mm256_set_m128(high[1], low[1]),
          _mm256_set_m128(high[2], low[2]), _mm256_set_m128(high[3], low[3])};
#elif defined(__AVX2__) && defined(__FMA__)
  SingleQuad q{_mm_loadu_ps(base + at[0]), _mm_loadu_ps(base + at[1]), _mm_loadu_ps(base + at[2]),
               _mm_loadu_ps(base + at[3])};
  _MM_TRANSPOSE4_PS(q.p0, q.p1, q.p2, q.p3);
  return q;
#else
  const __m128 a = _mm_loadu_ps(base + at[0]), b = _mm_loadu_ps(base + at[1]);
  const __m128 low = _mm_unpacklo_ps(a, b), high = _mm_unpackhi_ps(a, b);
  return {low, _mm_movehl_ps(low, low), high, _mm_movehl_ps(high, high)};
#endif
}

/// Catmull-Rom interpolation between p1 and p2 at fraction t.
inline Lanes cubic(const Quad& p, Lanes t) {
  const Lanes slope = p.p2 - p.p0;
  const Lanes bend = 2.0 * p.p0 - 5.0 * p.p1 + 4.0 * p.p2 - p.p3;
  const Lanes twist = 3.0 * (p.p1 - p.p2) + p.p3 - p.p0;
  return p.p1 + 0.5 * t * (slope + t * (bend + t * twist));
}

} // namespace
} // namespace qlx::engine::kernels
