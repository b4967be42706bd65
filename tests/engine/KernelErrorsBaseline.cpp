// SPDX-License-Identifier: ISC
#include "tests/engine/KernelErrors.h"

namespace qlx::engine::test {

KernelErrors measureBaseline() { return kernels::measure(); }

} // namespace qlx::engine::test
