// SPDX-License-Identifier: ISC
#include "tests/reference/Biquad.h"

#include "tests/reference/Primitives.h"

#include <algorithm>
#include <cmath>

namespace qlx::reference {

Biquad::Biquad(double rate, const Section& s)
    : sampleRate(rate), frequency(s.hz), q(s.q), gainDb(s.db), type(s.type),
      glideSteps((long long)(rate * 0.003)) {
  if (s.enabled) setEnabled(true);
}

void Biquad::setSampleRate(double fs) {
  sampleRate = fs >= 20000.0 && fs <= 400000.0 ? fs : 44100.0;
  glideSteps = (long long)(sampleRate * 0.003);
  recompute();
  setSaturation(saturationDrive);
}

void Biquad::setFrequency(double f) {
  frequency = std::clamp(f, 0.001, 0.499 * sampleRate);
  recompute();
}

void Biquad::setQ(double newQ) {
  q = std::clamp(newQ, 0.0001, 1000.0);
  recompute();
  setSaturation(saturationDrive);
}

void Biquad::setFrequencyAndQ(double f, double newQ) {
  setFrequencyQGain(std::clamp(f, 0.001, 0.499 * sampleRate), std::clamp(newQ, 0.0001, 1000.0),
                    gainDb);
}

void Biquad::setFrequencyQGain(double f, double newQ, double g) {
  frequency = f;
  q = newQ;
  gainDb = g;
  recompute();
  setSaturation(saturationDrive);
}

void Biquad::setGainDb(double g) {
  gainDb = std::clamp(g, -1000.0, 1000.0);
  recompute();
}

void Biquad::setEnabled(bool on) {
  if (on == enabled) return;
  enabled = on;
  recompute();
  snap();
}

void Biquad::setInstantUpdate(bool on) {
  if (on == instantUpdate) return;
  instantUpdate = on;
  if (!on) snap();
}

void Biquad::setSaturation(double drive) {
  saturationDrive = drive;
  saturationOn = drive > 0.0;
  saturationK = saturationOn ? frequency * 0.01 * (44100.0 / sampleRate) * drive * 3.0 /
                                   (1000.0 * std::pow(q, 0.75))
                             : 0.001;
}

void Biquad::setSaturationOffset(double offset) {
  saturationOffset = std::clamp(offset, -0.25, 0.25);
}

void Biquad::clearStates() { gliding = still = States{}; }

void Biquad::snap() {
  current = goal;
  increment = {};
  glideRemaining = 0;
}

void Biquad::recompute() {
  design();
  goal = targetRoots();
  glideRemaining = glideSteps;
  for (std::size_t i = 0; i < goal.size(); ++i)
    increment[i] = (goal[i] - current[i]) / double(glideSteps);
  if (instantUpdate) snap();
}

void Biquad::design() {
  target = Coefficients{};
  if (!enabled) return;
  double exponent = 0.0, base = 0.5001;
  switch (type) {
  case kHighPass: exponent = 6.0; break;
  case kLowShelf: exponent = 3.5; break;
  case kPeaking:
  case kBandPass: exponent = 2.8; break;
  case kHighShelf: exponent = 4.0; break;
  case kLowPass:
    exponent = 8.0;
    base = 0.50001;
    break;
  default: break;
  }
  const double w = kTwoPi * frequency / sampleRate, c = std::cos(w), s = std::sin(w);
  const double A = std::pow(10.0, gainDb * 0.025);
  const double warped =
      exponent > 0.0 ? q * (1.0 - std::pow(frequency / (base * sampleRate), exponent)) : q;
  const double alpha = s / (2.0 * warped), shelf = s * std::sqrt(A) / warped;
  double a0 = 1.0;
  auto& [a1, a2, b0, b1, b2] = target;
  switch (type) {
  case kHighPass:
    a0 = 1.0 + alpha;
    b0 = b2 = (1.0 + c) / 2.0;
    b1 = -(1.0 + c);
    a1 = -2.0 * c;
    a2 = 1.0 - alpha;
    break;
  case kLowShelf:
    a0 = (A + 1.0) + (A - 1.0) * c + shelf;
    a1 = -2.0 * ((A - 1.0) + (A + 1.0) * c);
    a2 = (A + 1.0) + (A - 1.0) * c - shelf;
    b0 = A * ((A + 1.0) - (A - 1.0) * c + shelf);
    b1 = 2.0 * A * ((A - 1.0) - (A + 1.0) * c);
    b2 = A * ((A + 1.0) - (A - 1.0) * c - shelf);
    break;
  case kPeaking:
    a0 = 1.0 + alpha / A;
    a1 = b1 = -2.0 * c;
    a2 = 1.0 - alpha / A;
    b0 = 1.0 + alpha * A;
    b2 = 1.0 - alpha * A;
    break;
  case kBandPass:
    a0 = 1.0 + alpha;
    b0 = alpha;
    b2 = -alpha;
    a1 = -2.0 * c;
    a2 = 1.0 - alpha;
    break;
  case kHighShelf:
    a0 = (A + 1.0) - (A - 1.0) * c + shelf;
    a1 = 2.0 * ((A - 1.0) - (A + 1.0) * c);
    a2 = (A + 1.0) - (A - 1.0) * c - shelf;
    b0 = A * ((A + 1.0) + (A - 1.0) * c + shelf);
    b1 = -2.0 * A * ((A - 1.0) + (A + 1.0) * c);
    b2 = A * ((A + 1.0) + (A - 1.0) * c - shelf);
    break;
  case kLowPass:
    a0 = 1.0 + alpha;
    b0 = b2 = (1.0 - c) / 2.0;
    b1 = 1.0 - c;
    a1 = -2.0 * c;
    a2 = 1.0 - alpha;
    break;
  default: break;
  }
  for (double* v : {&a1, &a2, &b0, &b1, &b2}) *v /= a0;
}

Biquad::Roots Biquad::targetRoots() const {
  Roots r{};
  auto solve = [&r](std::size_t at, double lead, double linear, double last) {
    const double d = linear * linear - 4.0 * lead * last;
    if (d >= 0.0) {
      r[at] = (std::sqrt(d) - linear) / (2.0 * lead);
      r[at + 1] = (-linear - std::sqrt(d)) / (2.0 * lead);
    } else {
      r[at] = r[at + 1] = -linear / (2.0 * lead);
      r[at + 2] = std::sqrt(-d) / (2.0 * lead);
      r[at + 3] = -r[at + 2];
    }
  };
  solve(0, target.b0, target.b1, target.b2);
  solve(4, 1.0, target.a1, target.a2);
  r[8] = target.b0;
  return r;
}

double Biquad::run(const Coefficients& c, States& s, double x) {
  const double y = c.b0 * x + c.b1 * s.x1 + c.b2 * s.x2 - c.a1 * s.y1 - c.a2 * s.y2;
  s.x2 = s.x1;
  s.x1 = x;
  s.y2 = s.y1;
  return y;
}

double Biquad::saturate(double y) const {
  return y / (std::abs(y + saturationOffset) * saturationK + 1.0);
}

double Biquad::glide(double x, bool saturating) {
  if (type == 0) return x;
  if (!enabled && glideRemaining == 0) {
    gliding = States{};
    return x;
  }
  if (glideRemaining > 0) {
    --glideRemaining;
    for (std::size_t i = 0; i < current.size(); ++i) current[i] += increment[i];
    const Roots& r = current;
    running.b0 = r[8];
    running.b1 = -r[8] * (r[0] + r[1]);
    running.b2 = r[8] * (r[0] * r[1] - r[2] * r[3]);
    running.a1 = -(r[4] + r[5]);
    running.a2 = r[4] * r[5] - r[6] * r[7];
  } else {
    running = target;
  }
  double y = flush(run(running, gliding, x), 1e-30);
  if (saturating && saturationOn) y = saturate(y);
  return gliding.y1 = y;
}

double Biquad::fixed(double x, bool saturating) {
  double y = flush(run(target, still, flush(x, 1e-17)), 1e-17);
  if (saturating && saturationOn) y = saturate(y);
  return still.y1 = y;
}

} // namespace qlx::reference
