// SPDX-License-Identifier: ISC
#include "engine/kernels/KernelTable.h"

namespace qlx::engine::kernels {

constinit const Kernels kAvx2Kernels = kernelTable("avx2");

} // namespace qlx::engine::kernels
