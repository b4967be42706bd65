#pragma once

// For the per-instruction-set kernel files alone: everything here has internal linkage, so that no
// function compiled for a newer processor can stand in for its namesake elsewhere.

#include <immintrin.h>

namespace qlx::engine::kernels {
namespace {

/// Doubles that one instruction works on: four with AVX2, two on every x86-64.
#if defined(__AVX2__) && defined(__FMA__)
constexpr int kWidth = 4;
#else
constexpr int kWidth = 2;
#endif

using Lanes = double __attribute__((vector_size(kWidth * sizeof(double))));
using LaneBits = long long __attribute__((vector_size(kWidth * sizeof(double))));
using LanesInMemory = double
    __attribute__((vector_size(kWidth * sizeof(double)), aligned(sizeof(double)), may_alias));

inline Lanes load(const double* p) { return *reinterpret_cast<const LanesInMemory*>(p); }
inline void store(double* p, Lanes x) { *reinterpret_cast<LanesInMemory*>(p) = x; }
inline Lanes all(double x) { return x - Lanes{}; }

inline Lanes select(LaneBits mask, Lanes yes, Lanes no) {
  return reinterpret_cast<Lanes>((mask & reinterpret_cast<LaneBits>(yes)) |
                                 (~mask & reinterpret_cast<LaneBits>(no)));
}
inline Lanes absolute(Lanes x) {
  return reinterpret_cast<Lanes>(reinterpret_cast<LaneBits>(x) & 0x7fffffffffffffffLL);
}

#if defined(__AVX2__) && defined(__FMA__)
inline Lanes smaller(Lanes a, Lanes b) { return _mm256_min_pd(a, b); }
inline Lanes larger(Lanes a, Lanes b) { return _mm256_max_pd(a, b); }
inline Lanes root(Lanes x) { return _mm256_sqrt_pd(x); }
#else
inline Lanes smaller(Lanes a, Lanes b) { return _mm_min_pd(a, b); }
inline Lanes larger(Lanes a, Lanes b) { return _mm_max_pd(a, b); }
inline Lanes root(Lanes x) { return _mm_sqrt_pd(x); }
#endif

/// Whole part of lanes within the range of int, and the rest.
struct Split {
  int whole[kWidth];
  Lanes fraction;
};

inline Split split(Lanes x) {
  Split s;
#if defined(__AVX2__) && defined(__FMA__)
  const __m128i whole = _mm256_cvttpd_epi32(x);
  _mm_storeu_si128(reinterpret_cast<__m128i*>(s.whole), whole);
  s.fraction = x - _mm256_cvtepi32_pd(whole);
#else
  const __m128i whole = _mm_cvttpd_epi32(x);
  _mm_storel_epi64(reinterpret_cast<__m128i*>(s.whole), whole);
  s.fraction = x - _mm_cvtepi32_pd(whole);
#endif
  return s;
}

/// Four neighbouring numbers of each lane's own array.
struct Quad {
  Lanes p0, p1, p2, p3;
};

/// Reads row[k][0 .. 3] into lane k.
inline Quad loadQuad(const double* const (&row)[kWidth]) {
#if defined(__AVX2__) && defined(__FMA__)
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

/// One number of each lane's own array.
inline Lanes loadOne(const double* const (&at)[kWidth]) {
#if defined(__AVX2__) && defined(__FMA__)
  return Lanes{*at[0], *at[1], *at[2], *at[3]};
#else
  return Lanes{*at[0], *at[1]};
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
