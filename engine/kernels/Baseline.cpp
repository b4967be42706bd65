// SPDX-License-Identifier: ISC
#include "engine/kernels/KernelTable.h"

namespace qlx::engine::kernels {

constinit const Kernels kBaselineKernels = kernelTable("baseline");

} // namespace qlx::engine::kernels
