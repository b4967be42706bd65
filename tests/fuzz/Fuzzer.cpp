// SPDX-License-Identifier: ISC
#include <cstddef>
#include <cstdint>

#include "tests/fuzz/FuzzTargets.h"

// One program a target: the build says which.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size);

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  static const auto kTarget = qlx::test::allFuzzTargets()[QLX_FUZZ_TARGET];
  kTarget.run({data, size});
  return 0;
}
