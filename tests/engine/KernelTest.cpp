// SPDX-License-Identifier: ISC
#include "tests/engine/KernelTest.h"

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
  if (!__builtin_cpu_supports("avx2") || !__builtin_cpu_supports("fma"))
    GTEST_SKIP() << "the processor has no AVX2";
  expectExact(measureAvx2());
}

} // namespace
} // namespace qlx::test
