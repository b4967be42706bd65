// SPDX-License-Identifier: ISC
// Renders a script of host actions through the reference model: reference_render SCRIPT IN OUT.
// Input and output are interleaved stereo doubles. Lines: rate R | suspend | resume | preset N |
// param INDEX VALUE | midi STATUS D1 D2 | process N | blocks B N.
#include "tests/reference/ReferenceEffect.h"

#include <algorithm>
#include <cstdio>
#include <fstream>
#include <sstream>
#include <string>
#include <vector>

namespace {

using qlx::reference::ReferenceEffect;

class Renderer {
 public:
  Renderer(const char* in, const char* out)
      : m_in(in, std::ios::binary), m_out(out, std::ios::binary) {}

  bool run(const std::string& line);
  void report() const {
    std::printf("horn %.4f Hz, drum %.4f Hz\n", m_effect.hornSpeedHz(), m_effect.drumSpeedHz());
  }

 private:
  void block(int frames);

  ReferenceEffect m_effect;
  std::ifstream m_in;
  std::ofstream m_out;
};

void Renderer::block(int frames) {
  const auto n = std::size_t(frames);
  std::vector<double> io(2 * n, 0.0), l(n), r(n);
  const auto bytes = std::streamsize(io.size() * sizeof(double));
  m_in.read(reinterpret_cast<char*>(io.data()), bytes);
  for (std::size_t i = 0; i < n; ++i) {
    l[i] = io[2 * i];
    r[i] = io[2 * i + 1];
  }
  m_effect.process(l.data(), r.data(), l.data(), r.data(), frames);
  for (std::size_t i = 0; i < n; ++i) {
    io[2 * i] = l[i];
    io[2 * i + 1] = r[i];
  }
  m_out.write(reinterpret_cast<const char*>(io.data()), bytes);
}

bool Renderer::run(const std::string& line) {
  std::istringstream words(line);
  std::string action;
  if (!(words >> action) || action[0] == '#') return true;
  int a = 0, b = 0, c = 0;
  float v = 0;
  if (action == "rate" && words >> v) {
    m_effect.setSampleRate(v);
  } else if (action == "suspend") {
    m_effect.suspend();
  } else if (action == "resume") {
    m_effect.resume();
  } else if (action == "preset" && words >> a) {
    m_effect.restoreSlots(a);
  } else if (action == "param" && words >> a >> v) {
    m_effect.setParameter(a, v);
  } else if (action == "midi" && words >> a >> b >> c) {
    m_effect.processMidi(a, b, c);
  } else if (action == "process" && words >> a) {
    block(a);
  } else if (action == "blocks" && words >> a >> b) {
    for (; b > 0; b -= a) block(std::min(a, b));
  } else {
    std::fprintf(stderr, "not understood: %s\n", line.c_str());
    return false;
  }
  return true;
}

} // namespace

int main(int argc, char** argv) {
  if (argc != 4) {
    std::fprintf(stderr, "usage: reference_render SCRIPT IN.f64 OUT.f64\n");
    return 2;
  }
  std::ifstream script(argv[1]);
  if (!script) return 1;
  Renderer renderer(argv[2], argv[3]);
  for (std::string line; std::getline(script, line);)
    if (!renderer.run(line)) return 2;
  renderer.report();
  return 0;
}
