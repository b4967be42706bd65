// SPDX-License-Identifier: ISC
#include "engine/kernels/Kernels.h"

#include <cstdlib>
#include <cstring>

namespace qlx::engine::kernels {

const Kernels& chooseKernels() noexcept {
  const char* forced = std::getenv("QLX_ISA");
  if (forced != nullptr && std::strcmp(forced, kBaselineKernels.name) == 0) return kBaselineKernels;
  __builtin_cpu_init();
  const bool hasAvx2 = __builtin_cpu_supports("avx2") && __builtin_cpu_supports("fma");
  return hasAvx2 ? kAvx2Kernels : kBaselineKernels;
}

} // namespace qlx::engine::kernels
