// SPDX-License-Identifier: ISC
#pragma once

namespace qlx::test {

/// Worst errors of the kernels' mathematics against the standard library, for
/// one instruction set.
struct KernelErrors {
  double sine, cosine, logarithm;
  double powerOfTwo, peakWarp; ///< relative
};

KernelErrors measureBaseline();
KernelErrors measureAvx2();
KernelErrors measureAvx512();

} // namespace qlx::test
