// SPDX-License-Identifier: ISC
#include "brezan/MemoryLock.h"

#include <sys/mman.h>

namespace qlx::tools {

bool lockMemory() { return mlockall(MCL_CURRENT) == 0; }

} // namespace qlx::tools
