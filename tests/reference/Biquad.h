// SPDX-License-Identifier: ISC
#pragma once

#include "tests/reference/Tables.h"

#include <array>

namespace qlx::reference {

// One second-order section. Settings glide over 3 ms along straight lines of the zeros and poles
// unless they take effect at once; the recursion may saturate softly.
struct Biquad {
  Biquad() = default;
  Biquad(double rate, const Section& s);

  void setSampleRate(double fs);
  void setFrequency(double f);
  void setQ(double newQ);
  void setFrequencyAndQ(double f, double newQ);
  void setFrequencyQGain(double f, double newQ, double g);
  void setGainDb(double g);
  void setEnabled(bool on);
  void setInstantUpdate(bool on);
  void setSaturation(double drive);
  void setSaturationOffset(double offset);
  void clearStates();

  double tickGlide(double x) { return glide(x, false); }
  double tickGlideSaturating(double x) { return glide(x, true); }
  double tickFixed(double x) { return fixed(x, false); }
  double tickFixedSaturating(double x) { return fixed(x, true); }

  struct Coefficients {
    double a1 = 0, a2 = 0, b0 = 1, b1 = 0, b2 = 0;
  };
  struct States {
    double x1 = 0, x2 = 0, y1 = 0, y2 = 0;
  };
  // Zeros: real 1, real 2, imaginary A, imaginary B; poles likewise; gain.
  using Roots = std::array<double, 9>;

  void recompute();
  void design();
  Roots targetRoots() const;
  void snap();
  double glide(double x, bool saturating);
  double fixed(double x, bool saturating);
  double saturate(double y) const;
  static double run(const Coefficients& c, States& s, double x);

  double sampleRate = 44100, frequency = 1000, q = 1, gainDb = 0;
  int type = 0;
  bool enabled = false, instantUpdate = true;
  Coefficients target, running;
  Roots current{0, 0, 0, 0, 0, 0, 0, 0, 1}, goal = current, increment{};
  long long glideSteps = 132;
  long long glideRemaining = 0;
  double saturationDrive = -1, saturationK = 0.001, saturationOffset = 0;
  bool saturationOn = false;
  States gliding, still;
};

} // namespace qlx::reference
