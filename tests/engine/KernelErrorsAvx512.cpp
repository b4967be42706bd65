// SPDX-License-Identifier: ISC
#include "tests/engine/KernelErrors.h"

namespace qlx::test {
using namespace engine;

KernelErrors measureAvx512() { return kernels::measure(); }

} // namespace qlx::test
