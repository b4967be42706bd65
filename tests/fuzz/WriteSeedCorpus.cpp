// SPDX-License-Identifier: ISC
#include <cstdio>
#include <cstring>
#include <exception>
#include <filesystem>

#include "tests/fuzz/FuzzTargets.h"
#include "tests/support/TemporaryFolder.h"

namespace {

void writeSeeds(const std::filesystem::path& to) {
  for (const auto& target : qlx::test::allFuzzTargets()) {
    const auto folder = to / target.name;
    std::filesystem::create_directories(folder);
    int number = 0;
    for (const auto& inputs : {target.seeds(), qlx::test::keptInputs(target.name)})
      for (const auto& input : inputs)
        qlx::test::writeBytes((folder / std::to_string(number++)).string(), input);
  }
}

} // namespace

/// Writes the seeds of every fuzz target and what is kept of earlier runs into FOLDER/<target>/;
/// with --keep takes what is to be kept from there.
int main(int argc, char** argv) {
  try {
    if (argc == 2) {
      writeSeeds(argv[1]);
      return 0;
    }
    if (argc == 3 && std::strcmp(argv[1], "--keep") == 0) {
      for (const auto& target : qlx::test::allFuzzTargets())
        qlx::test::keepInputs(target.name, std::filesystem::path(argv[2]) / target.name);
      return 0;
    }
    std::fputs("usage: write_seed_corpus [--keep] FOLDER\n", stderr);
    return 2;
  } catch (const std::exception& error) {
    std::fprintf(stderr, "write_seed_corpus: %s\n", error.what());
    return 1;
  }
}
