// SPDX-License-Identifier: ISC
#include <cstdio>
#include <filesystem>

#include "tests/fuzz/FuzzTargets.h"
#include "tests/support/TemporaryFolder.h"

/// Writes the seeds of every fuzz target into FOLDER/<target>/.
int main(int argc, char** argv) {
  if (argc != 2) {
    std::fputs("usage: write_seed_corpus FOLDER\n", stderr);
    return 2;
  }
  for (const auto& target : qlx::test::allFuzzTargets()) {
    const auto folder = std::filesystem::path(argv[1]) / target.name;
    std::filesystem::create_directories(folder);
    int number = 0;
    for (const auto& seed : target.seeds()) {
      qlx::test::writeBytes((folder / std::to_string(number++)).string(), seed);
    }
  }
  return 0;
}
