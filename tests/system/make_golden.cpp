// SPDX-License-Identifier: ISC
// Renders scenario files with the reference model into fixtures: make_golden SCENARIO.txt OUT.f64
// (thinned, interleaved stereo, raw doubles).
#include "tests/system/Scenario.h"

#include <cstdio>
#include <fstream>
#include <sstream>

int main(int argc, char** argv) {
  if (argc != 3) {
    std::fprintf(stderr, "usage: make_golden SCENARIO.txt OUT.f64\n");
    return 2;
  }
  std::ifstream file(argv[1]);
  std::stringstream script;
  script << file.rdbuf();
  qlx::test::ReferencePlayer player(qlx::test::plugInRecordings());
  const auto kept = qlx::test::thinned(qlx::test::play(script.str(), player),
                                       qlx::test::kKeptFrames, qlx::test::kFramesPerWindow);
  std::ofstream out(argv[2], std::ios::binary);
  for (std::size_t i = 0; i < kept.left.size(); ++i) {
    for (const double x : {kept.left[i], kept.right[i]})
      out.write(reinterpret_cast<const char*>(&x), sizeof x);
  }
  return out ? 0 : 1;
}
