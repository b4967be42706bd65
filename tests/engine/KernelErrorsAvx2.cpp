// SPDX-License-Identifier: ISC
#include "tests/engine/KernelErrors.h"

namespace qlx::test {
using namespace engine;

KernelErrors measureAvx2() { return kernels::measure(); }

} // namespace qlx::test
