// SPDX-License-Identifier: ISC
#pragma once

#include "tests/reference/Primitives.h"

#include <array>

namespace qlx::reference {

// Early reflections: twelve taps a side, darker and softer the longer their path.
struct Room {
  struct Tap {
    int delay = 0;
    float fraction = 0;
    double gain = 0, pole = 0, state = 0;
  };
  struct Side {
    Ring ring{65536};
    std::array<Tap, 12> taps;
    double process(double send);
    void clear();
  };
  void computeTaps(double engineRate);

  double size = 1, virtualSize = 1, lrDelay = 0.15, mainCutoffHz = 5000;
  Side left, right;
};

} // namespace qlx::reference
