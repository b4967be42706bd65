// SPDX-License-Identifier: ISC
#include "engine/signal/Biquad.h"

#include "engine/signal/Denormals.h"
#include "engine/signal/Phase.h"

#include <algorithm>
#include <cmath>

namespace qlx::engine {

namespace {

constexpr double kLowestFrequency = 0.001;
constexpr double kHighestFraction = 0.499; // of the sample rate
constexpr double kGlideFlush = 1e-30;
constexpr double kFixedFlush = 1e-17;

/// Exponent of the Q reduction towards half the sample rate, by response; 0 where Q is not used or
/// used plainly.
constexpr std::array<double, 11> kQWarpExponent = {0, 6, 0, 3.5, 2.8, 2.8, 2.8, 4, 8, 0, 0};

using Coefficients = Biquad::Coefficients;
using DesignInput = Biquad::DesignInput;

Coefficients normalised(double a0, double a1, double a2, double b0, double b1, double b2) {
  return {a1 / a0, a2 / a0, b0 / a0, b1 / a0, b2 / a0};
}

Coefficients designShelf(const DesignInput& d, double side) {
  // side +1: low shelf, -1: high shelf (the mirrored design, c -> -c and odd terms negated).
  const double c = side * d.c, A = d.gain;
  const double width = d.s * std::sqrt(A) / d.q;
  return normalised((A + 1) + (A - 1) * c + width, side * -2 * ((A - 1) + (A + 1) * c),
                    (A + 1) + (A - 1) * c - width, A * ((A + 1) - (A - 1) * c + width),
                    side * 2 * A * ((A - 1) - (A + 1) * c), A * ((A + 1) - (A - 1) * c - width));
}

Coefficients design(Response response, const DesignInput& d) {
  const double c = d.c, alpha = d.alpha;
  switch (response) {
  case Response::HighPass:
    return normalised(1 + alpha, -2 * c, 1 - alpha, (1 + c) / 2, -(1 + c), (1 + c) / 2);
  case Response::HighPassFirstOrder: {
    const double k = c / (1 + d.s);
    return {-k, 0, (1 + k) / 2, -(1 + k) / 2, 0};
  }
  case Response::LowShelf: return designShelf(d, 1.0);
  case Response::Peaking:
    return normalised(1 + alpha / d.gain, -2 * c, 1 - alpha / d.gain, 1 + alpha * d.gain, -2 * c,
                      1 - alpha * d.gain);
  case Response::BandPass: return normalised(1 + alpha, -2 * c, 1 - alpha, alpha, 0, -alpha);
  case Response::Notch: return normalised(1 + alpha, -2 * c, 1 - alpha, 1, -2 * c, 1);
  case Response::HighShelf: return designShelf(d, -1.0);
  case Response::LowPass:
    return normalised(1 + alpha, -2 * c, 1 - alpha, (1 - c) / 2, 1 - c, (1 - c) / 2);
  case Response::LowPassFirstOrder: {
    const double k = 2 - c;
    const double a1 = std::sqrt(k * k - 1) - k;
    return {a1, 0, 1 + a1, 0, 0};
  }
  case Response::AllPass:
    return normalised(1 + alpha, -2 * c, 1 - alpha, 1 - alpha, -2 * c, 1 + alpha);
  case Response::PassThrough: break;
  }
  return {};
}

/// Roots of k0 z^2 + k1 z + k2 as real parts and imaginary parts.
struct RootPair {
  double real1, real2, imagA, imagB;
};

RootPair rootsOf(double k0, double k1, double k2) {
  if (k0 == 0.0) return {0, 0, 0, 0};
  const double discriminant = k1 * k1 - 4 * k0 * k2;
  if (discriminant >= 0.0) {
    const double root = std::sqrt(discriminant);
    return {(root - k1) / (2 * k0), (-k1 - root) / (2 * k0), 0, 0};
  }
  const double real = -k1 / (2 * k0), imag = std::sqrt(-discriminant) / (2 * k0);
  return {real, real, imag, -imag};
}

} // namespace

Biquad::Biquad(double sampleRate, Response response, double hz, double q, double gainDb) {
  init(sampleRate, response, hz, q, gainDb);
}

void Biquad::init(double sampleRate, Response response, double hz, double q,
                  double gainDb) noexcept {
  m_sampleRate = sampleRate;
  m_response = response;
  m_frequency = hz;
  m_q = q;
  m_gainDb = gainDb;
  m_enabled = false;
  m_instantUpdate = true;
  m_glideSteps = sectionGlideSteps(sampleRate);
  m_target = {};
  m_currentRoots = m_targetRoots = {};
  m_currentRoots[kGain] = m_targetRoots[kGain] = 1.0;
  clear();
}

void Biquad::clear() noexcept {
  m_saturationK = 0.001;
  m_saturationDrive = -1.0;
  m_saturationOffset = 0.0;
  m_saturationOn = false;
  clearState();
  m_increments = {};
  m_glideRemaining = 0;
}

void Biquad::clearState() noexcept {
  m_glide = {};
  m_fixed = {};
}

void Biquad::storeSampleRate(double hz) noexcept {
  m_sampleRate = sectionRate(hz);
  m_glideSteps = sectionGlideSteps(m_sampleRate);
}

void Biquad::setSampleRate(double hz) noexcept {
  storeSampleRate(hz);
  recompute();
  setSaturation(m_saturationDrive);
}

void Biquad::setResponse(Response response) noexcept {
  m_response = response;
  recompute();
}

void Biquad::setFrequency(double hz) noexcept {
  m_frequency = std::clamp(hz, kLowestFrequency, kHighestFraction * m_sampleRate);
  recompute();
}

void Biquad::setQ(double q) noexcept {
  m_q = std::clamp(q, 0.0001, 1000.0);
  recompute();
  setSaturation(m_saturationDrive);
}

void Biquad::setFrequencyAndQ(double hz, double q) noexcept {
  m_frequency = std::clamp(hz, kLowestFrequency, kHighestFraction * m_sampleRate);
  setQ(q);
}

void Biquad::setFrequencyQGain(double hz, double q, double db) noexcept {
  m_frequency = hz;
  m_q = q;
  m_gainDb = db;
  recompute();
  setSaturation(m_saturationDrive);
}

void Biquad::setGainDb(double db) noexcept {
  m_gainDb = std::clamp(db, -1000.0, 1000.0);
  recompute();
}

void Biquad::setEnabled(bool on) noexcept {
  if (on == m_enabled) return;
  m_enabled = on;
  recompute();
  snapGlide();
}

void Biquad::setInstantUpdate(bool on) noexcept {
  if (on == m_instantUpdate) return;
  if (!on) snapGlide();
  m_instantUpdate = on;
}

void Biquad::setSaturation(double drive) noexcept {
  m_saturationDrive = drive;
  m_saturationOn = drive > 0.0;
  // The limiter bites harder the higher the resonance's frequency and the broader it is.
  m_saturationK = m_saturationOn ? m_frequency * 0.01 * (44100.0 / m_sampleRate) * drive * 3.0 /
                                       (1000.0 * std::pow(m_q, 0.75))
                                 : 0.001;
}

void Biquad::setSaturationOffset(double offset) noexcept {
  m_saturationOffset = std::clamp(offset, -0.25, 0.25);
}

void Biquad::placeFrequency() noexcept {
  // Most settings that move are gains: the frequency's place on the circle is kept.
  const std::array<double, 3> place = {m_sampleRate, m_frequency, m_q};
  if (place == m_placed && m_response == m_placedResponse) return;
  m_placed = place;
  m_placedResponse = m_response;
  const double w = kTwoPi * m_frequency / m_sampleRate;
  m_design.c = std::cos(w);
  m_design.s = std::sin(w);
  m_design.q = m_q;
  const double exponent = kQWarpExponent[static_cast<std::size_t>(m_response)];
  if (exponent > 0) {
    const double edge = (m_response == Response::LowPass ? 0.50001 : 0.5001) * m_sampleRate;
    m_design.q = m_q * (1.0 - std::pow(m_frequency / edge, exponent));
  }
  m_design.alpha = m_design.s / (2.0 * m_design.q);
}

void Biquad::recompute() noexcept {
  m_target = {};
  if (m_enabled && m_response != Response::PassThrough) {
    m_design.gain = std::pow(10.0, m_gainDb * 0.025);
    placeFrequency();
    m_target = design(m_response, m_design);
  }
  const RootPair zeros = rootsOf(m_target.b0, m_target.b1, m_target.b2);
  const RootPair poles = rootsOf(1.0, m_target.a1, m_target.a2);
  m_targetRoots = {zeros.real1, zeros.real2, zeros.imagA, zeros.imagB, poles.real1,
                   poles.real2, poles.imagA, poles.imagB, m_target.b0};
  startGlide();
}

void Biquad::startGlide() noexcept {
  if (m_instantUpdate) {
    snapGlide();
    return;
  }
  m_glideRemaining = m_glideSteps;
  for (std::size_t i = 0; i < kRootCount; ++i)
    m_increments[i] = (m_targetRoots[i] - m_currentRoots[i]) / m_glideSteps;
}

void Biquad::snapGlide() noexcept {
  m_currentRoots = m_targetRoots;
  m_increments = {};
  m_glideRemaining = 0;
}

bool Biquad::passesThrough() noexcept {
  if (m_response == Response::PassThrough) return true;
  if (m_enabled || m_glideRemaining > 0) return false;
  m_glide = {};
  return true;
}

double Biquad::saturated(double y) const noexcept {
  return m_saturationOn ? y / (std::abs(y + m_saturationOffset) * m_saturationK + 1.0) : y;
}

double Biquad::tickGlide(double x) noexcept {
  processGlide({&x, 1});
  return x;
}

double Biquad::tickGlideSaturating(double x) noexcept {
  processGlideSaturating({&x, 1});
  return x;
}

double Biquad::tickFixed(double x) noexcept {
  processFixed({&x, 1});
  return x;
}

double Biquad::tickFixedSaturating(double x) noexcept {
  processFixedSaturating({&x, 1});
  return x;
}

namespace {

double step(const Coefficients& k, Biquad::Memory& m, double x) {
  const double y = k.b0 * x + k.b1 * m.x1 + k.b2 * m.x2 - k.a2 * m.y2 - k.a1 * m.y1;
  m.x2 = m.x1;
  m.x1 = x;
  m.y2 = m.y1;
  return y;
}

/// What is too small to be heard becomes zero before it decays into subnormal numbers.
void dropTraces(Biquad::Memory& m, double least) {
  for (double* x : {&m.x1, &m.x2, &m.y1, &m.y2})
    if (std::abs(*x) < least) *x = 0.0;
}

/// A whole run with coefficients that stand still.
template <class Limiter>
void runFixed(const Coefficients& k, Biquad::Memory& memory, double least, std::span<double> run,
              Limiter limit) {
  Biquad::Memory m = memory;
  for (double& x : run) {
    m.y1 = limit(step(k, m, x));
    x = m.y1;
  }
  dropTraces(m, least);
  memory = m;
}

} // namespace

namespace {

/// A number that follows a polynomial of the second degree from sample to sample.
struct Parabola {
  double value, step, bend;
  Parabola(double start, double linear, double square)
      : value(start), step(linear + square), bend(2.0 * square) {}
  double next() {
    value += step;
    step += bend;
    return value;
  }
};

} // namespace

template <class Limiter>
void Biquad::runMoving(std::span<double> run, Limiter limit) noexcept {
  const Roots &r = m_currentRoots, &d = m_increments;
  // Sums of roots move in straight lines, their products along parabolas.
  double zeroSum = r[kZero1] + r[kZero2], poleSum = r[kPole1] + r[kPole2], gain = r[kGain];
  const double zeroStep = d[kZero1] + d[kZero2], poleStep = d[kPole1] + d[kPole2];
  const double gainStep = d[kGain];
  const auto product = [&](Root one, Root two, Root a, Root b) {
    return Parabola(r[one] * r[two] - r[a] * r[b],
                    r[one] * d[two] + r[two] * d[one] - r[a] * d[b] - r[b] * d[a],
                    d[one] * d[two] - d[a] * d[b]);
  };
  Parabola zeros = product(kZero1, kZero2, kZeroImagA, kZeroImagB);
  Parabola poles = product(kPole1, kPole2, kPoleImagA, kPoleImagB);
  Memory m = m_glide;
  for (double& x : run) {
    gain += gainStep;
    zeroSum += zeroStep;
    poleSum += poleStep;
    const double fed = gain * (x - zeroSum * m.x1 + zeros.next() * m.x2);
    const double y = limit((fed - poles.next() * m.y2) + poleSum * m.y1);
    m.x2 = m.x1;
    m.x1 = x;
    m.y2 = m.y1;
    m.y1 = x = y;
  }
  m_glide = m;
  const auto n = static_cast<double>(run.size());
  for (std::size_t i = 0; i < kRootCount; ++i)
    m_currentRoots[i] = flushDenormals(m_currentRoots[i] + n * m_increments[i]);
  m_glideRemaining -= static_cast<int>(run.size());
}

template <class Limiter>
void Biquad::runGlide(std::span<double> run, Limiter limit) noexcept {
  if (passesThrough()) return;
  const auto moving = std::min(run.size(), static_cast<std::size_t>(m_glideRemaining));
  if (moving > 0) runMoving(run.first(moving), limit);
  dropTraces(m_glide, kGlideFlush);
  // A section that has been switched off passes from here on.
  if (moving < run.size() && !passesThrough())
    runFixed(m_target, m_glide, kGlideFlush, run.subspan(moving), limit);
}

void Biquad::processGlide(std::span<double> run) noexcept {
  runGlide(run, [](double y) { return y; });
}

void Biquad::processGlideSaturating(std::span<double> run) noexcept {
  runGlide(run, [this](double y) { return saturated(y); });
}

void Biquad::processFixed(std::span<double> run) noexcept {
  runFixed(m_target, m_fixed, kFixedFlush, run, [](double y) { return y; });
}

void Biquad::processFixedSaturating(std::span<double> run) noexcept {
  runFixed(m_target, m_fixed, kFixedFlush, run, [this](double y) { return saturated(y); });
}

std::array<double, 8> Biquad::memory() const noexcept {
  return {m_glide.x1, m_glide.x2, m_glide.y1, m_glide.y2,
          m_fixed.x1, m_fixed.x2, m_fixed.y1, m_fixed.y2};
}

} // namespace qlx::engine
