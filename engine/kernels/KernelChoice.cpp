// SPDX-License-Identifier: ISC
#include "engine/kernels/Kernels.h"

#include <cstdlib>
#include <cstring>

namespace qlx::engine::kernels {

// What the compiler's tests answer includes that the operating system keeps the registers.
bool canRun(const Kernels& kernels) noexcept {
  __builtin_cpu_init();
  if (&kernels == &kBaselineKernels) return true;
  const bool four = __builtin_cpu_supports("avx2") && __builtin_cpu_supports("fma");
  if (&kernels == &kAvx2Kernels) return four;
  return four && __builtin_cpu_supports("avx512f") && __builtin_cpu_supports("avx512vl") &&
         __builtin_cpu_supports("avx512dq");
}

const Kernels& chooseKernels() noexcept {
  const char* forced = std::getenv("QLX_ISA");
  const Kernels* const fromBest[] = {&kAvx512Kernels, &kAvx2Kernels, &kBaselineKernels};
  if (forced != nullptr)
    for (const Kernels* kernels : fromBest)
      if (std::strcmp(forced, kernels->name) == 0 && canRun(*kernels)) return *kernels;
  for (const Kernels* kernels : fromBest)
    if (canRun(*kernels)) return *kernels;
  return kBaselineKernels;
}

} // namespace qlx::engine::kernels
