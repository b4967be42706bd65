// SPDX-License-Identifier: ISC
#pragma once

#include "engine/kernels/Kernels.h"
#include "engine/kernels/Lanes.h"

namespace qlx::engine::kernels {
namespace {

constexpr double kPi = 3.14159265358979323846;

// Minimax polynomials; errors measured by the tests.

/// Sine of |x| <= pi / 2 within 1e-15.
inline Lanes sineOfQuarter(Lanes x) {
  // Pairs of terms side by side: the chain of dependent operations is half as long as Horner's.
  const Lanes z = x * x, z2 = z * z;
  const Lanes low = -0.1666666666666665 + z * 0.008333333333325952;
  const Lanes middle = -0.00019841269836478288 + z * 2.7557318057287497e-06;
  const Lanes high = -2.5051973046733884e-08 + z * 1.6050976753941704e-10;
  const Lanes p = low + z2 * (middle + z2 * (high + z2 * -7.408115813056402e-13));
  return x + (x * z) * p;
}

/// Sine and cosine of 0 <= x <= pi within 1e-15.
inline Lanes sineOfHalf(Lanes x) { return sineOfQuarter(smaller(x, kPi - x)); }
inline Lanes cosineOfHalf(Lanes x) { return sineOfQuarter(0.5 * kPi - x); }

/// 2 to the power of -1000 <= x <= 1000, relative error below 1e-14.
inline Lanes powerOfTwo(Lanes x) {
  constexpr double kRound = 6755399441055744.0; // 1.5 x 2^52: adding it rounds to whole numbers
  const Lanes shifted = x + kRound;
  const Lanes f = x - (shifted - kRound), f2 = f * f, f4 = f2 * f2;
  const Lanes a = 1.0 + f * 0.6931471805599497;
  const Lanes b = 0.24022650695908768 + f * 0.05550410866445883;
  const Lanes c = 0.009618129108034596 + f * 0.0013333558228561767;
  const Lanes d = 0.00015403529961127076 + f * 1.5252658116409854e-05;
  const Lanes e = 1.3215662835959238e-06 + f * 1.0208537929657404e-07;
  const Lanes p = (a + f2 * b) + f4 * ((c + f2 * d) + f4 * (e + f2 * 7.037278846726901e-09));
  return reinterpret_cast<Lanes>(reinterpret_cast<LaneBits>(p) +
                                 (reinterpret_cast<LaneBits>(shifted) << 52));
}

/// Logarithm to base 2 of normal x > 0, error below 1e-15 beside the whole part.
inline Lanes logarithmOfTwo(Lanes x) {
  // The significand between sqrt(1/2) and sqrt(2), the exponent beside it.
  constexpr long long kRootHalf = 0x3fe6a09e667f3bcdLL;
  constexpr double kRound = 6755399441055744.0;
  const LaneBits bits = reinterpret_cast<LaneBits>(x);
  const LaneBits above = bits - kRootHalf;
  // An arithmetic shift by 52, made of what SSE2 has: the exponent is small.
  const LaneBits exponent =
      static_cast<LaneBits>((above >> 52) & 0xfff) - (((above >> 63) & 1) << 12);
  const Lanes m = reinterpret_cast<Lanes>(bits - (exponent << 52));
  const Lanes whole =
      reinterpret_cast<Lanes>(exponent + 0x4338000000000000LL) - kRound; // exact for small integers
  const Lanes t = (m - 1.0) / (m + 1.0), z = t * t;
  const Lanes p = 2.885390081777927 +
                  z * (0.9617966939243245 +
                       z * (0.5770780172502946 +
                            z * (0.4121984014728928 +
                                 z * (0.3206164258557573 +
                                      z * (0.26144310958586486 + z * 0.24292899774240803)))));
  return whole + t * p;
}

inline Lanes fourth(Lanes x) {
  const Lanes square = x * x;
  return square * square;
}
inline Lanes eighth(Lanes x) {
  const Lanes square = x * x;
  return fourth(square);
}

/// (1 + x kPeakWarpReachHz / kPeakWarpCentreHz) to the power of kPeakWarp for |x| <= 1, relative
/// error below 2e-11: the counter-warp of a peak's Q relative to the one at the centre. A wider
/// reach or another exponent needs other coefficients (minimax of the same degrees).
static_assert(kPeakWarp == 2.8 && kPeakWarpCentreHz == 1750.0 && kPeakWarpReachHz == 450.0);
inline Lanes peakWarpAroundCentre(Lanes x) {
  const Lanes x2 = x * x, x4 = x2 * x2;
  const Lanes a = 0.9999999999926076 + x * 0.7199999999414606;
  const Lanes b = 0.16662857168378414 + x * 0.011425960050780025;
  const Lanes c = -0.00014690658577764284 + x * 9.062831556331831e-06;
  const Lanes d = -8.522349268737225e-07 + x * 1.050524983254328e-07;
  return (a + x2 * b) + x4 * ((c + x2 * d) + x4 * -1.5328334997431522e-08);
}

/// x to the power of y for 0 < x.
inline Lanes power(Lanes x, double y) { return powerOfTwo(logarithmOfTwo(x) * y); }

} // namespace
} // namespace qlx::engine::kernels
