// SPDX-License-Identifier: ISC
#include <cstddef>
#include <cstdint>

#include "tests/fuzz/PresetFuzzTargets.h"

// One program a target: the build says which.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size);

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  qlx::test::presetFuzzTargets()[QLX_FUZZ_TARGET].run({data, size});
  return 0;
}
