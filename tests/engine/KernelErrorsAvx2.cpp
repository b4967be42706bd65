// SPDX-License-Identifier: ISC
#include "tests/engine/KernelErrors.h"

namespace qlx::engine::test {

KernelErrors measureAvx2() { return kernels::measure(); }

} // namespace qlx::engine::test
