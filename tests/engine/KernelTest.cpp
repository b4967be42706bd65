// SPDX-License-Identifier: ISC
#include "tests/engine/KernelTest.h"

#include "engine/kernels/Kernels.h"

#include <gtest/gtest.h>

namespace qlx::test {
namespace {

void expectExact(const KernelErrors& e) {
  EXPECT_LT(e.sine, 2e-15);
  EXPECT_LT(e.cosine, 2e-15);
  EXPECT_LT(e.powerOfTwo, 1e-14);
  EXPECT_LT(e.logarithm, 1e-14);
  EXPECT_LT(e.peakWarp, 2e-11);
  EXPECT_GT(e.sine, 0.0) << "another function than the standard library's";
}

TEST(KernelMathematics, IsExactOnEveryProcessor) { expectExact(measureBaseline()); }

TEST(KernelMathematics, IsExactWithAvx2) {
  if (!canRun(engine::kernels::kAvx2Kernels)) GTEST_SKIP() << "the processor has no AVX2";
  expectExact(measureAvx2());
}

TEST(KernelMathematics, IsExactWithAvx512) {
  if (!canRun(engine::kernels::kAvx512Kernels)) GTEST_SKIP() << "the processor has no AVX-512";
  expectExact(measureAvx512());
}

} // namespace
} // namespace qlx::test
