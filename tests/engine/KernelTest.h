// SPDX-License-Identifier: ISC
#pragma once

namespace qlx::test {

/// Worst errors of the kernels' mathematics against the standard library, and what the mouth's
/// movement looks like, for one instruction set.
struct KernelErrors {
  double sine, cosine, logarithm;
  double powerOfTwo, peakWarp; ///< relative
  double steepest;             ///< largest step of the sine over a turn, times the turn
  double shareBelow;           ///< of the turn in which the sine is negative
};

KernelErrors measureBaseline();
KernelErrors measureAvx2();

inline constexpr double kTestHalfWidth = 0.08;

} // namespace qlx::test
