// SPDX-License-Identifier: ISC
#include "engine/signal/Biquad.h"

#include "engine/signal/Denormals.h"
#include "engine/signal/Phase.h"

#include <algorithm>
#include <cmath>

namespace qlx::engine {

namespace {

constexpr double kLowestFrequency = 0.001;
constexpr double kLeastGlide = 1e-30;
constexpr double kLeastFixed = 1e-17;

struct ScalarMath {
  using Number = double;
  static double root(double x) { return std::sqrt(x); }
  static double absolute(double x) { return std::abs(x); }
  static bool atLeastZero(double x) { return x >= 0.0; }
  static double choose(bool first, double a, double b) { return first ? a : b; }
};
using Laws = FilterLaws<ScalarMath>;

/// Exponent of the Q's counter-warp by response; 0 where Q is not used or used plainly.
constexpr std::array<double, 11> kQWarpExponent = {0,
                                                   kHighPassWarp,
                                                   0,
                                                   kLowShelfWarp,
                                                   kPeakWarp,
                                                   kPeakWarp,
                                                   kPeakWarp,
                                                   kHighShelfWarp,
                                                   kLowPassWarp,
                                                   0,
                                                   0};

using Coefficients = Biquad::Coefficients;
using DesignInput = Biquad::DesignInput;

Laws::Design design(Response response, const DesignInput& d) {
  const double c = d.c, alpha = d.alpha;
  const double middle = -2 * c, high = 1 + alpha, low = 1 - alpha;
  switch (response) {
  case Response::HighPass: return {{high, middle, low}, {(1 + c) / 2, -(1 + c), (1 + c) / 2}};
  case Response::HighPassFirstOrder: {
    const double k = c / (1 + d.s);
    return {{1, -k, 0}, {(1 + k) / 2, -(1 + k) / 2, 0}};
  }
  case Response::LowShelf: return Laws::shelf(1.0, c, d.s / d.q, d.gain);
  case Response::Peaking: return Laws::peak(c, alpha, d.gain);
  case Response::BandPass: return {{high, middle, low}, {alpha, 0, -alpha}};
  case Response::Notch: return {{high, middle, low}, {1, middle, 1}};
  case Response::HighShelf: return Laws::shelf(-1.0, c, d.s / d.q, d.gain);
  case Response::LowPass: return Laws::lowPass(c, alpha);
  case Response::LowPassFirstOrder: {
    const double k = 2 - c;
    const double a1 = std::sqrt(k * k - 1) - k;
    return {{1, a1, 0}, {1 + a1, 0, 0}};
  }
  case Response::AllPass: return {{high, middle, low}, {low, middle, high}};
  case Response::PassThrough: break;
  }
  return {{1, 0, 0}, {1, 0, 0}};
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
  m_targetRoots = {};
  m_targetRoots.value[kGain] = 1.0;
  m_currentRoots = m_targetRoots;
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
  m_frequency = std::clamp(hz, kLowestFrequency, kHighestShare * m_sampleRate);
  recompute();
}

void Biquad::setQ(double q) noexcept {
  m_q = std::clamp(q, 0.0001, 1000.0);
  recompute();
  setSaturation(m_saturationDrive);
}

void Biquad::setFrequencyAndQ(double hz, double q) noexcept {
  m_frequency = std::clamp(hz, kLowestFrequency, kHighestShare * m_sampleRate);
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
    const double edge =
        (m_response == Response::LowPass ? kLowPassWarpEdgeShare : kWarpEdgeShare) * m_sampleRate;
    m_design.q = Laws::warpedQ(m_q, std::pow(m_frequency / edge, exponent));
  }
  m_design.alpha = m_design.s / (2.0 * m_design.q);
}

void Biquad::recompute() noexcept {
  m_target = {};
  if (m_enabled && m_response != Response::PassThrough) {
    m_design.gain = std::pow(10.0, m_gainDb * 0.025);
    placeFrequency();
    const Laws::Design d = design(m_response, m_design);
    m_target = {d.a[1] / d.a[0], d.a[2] / d.a[0], d.b[0] / d.a[0], d.b[1] / d.a[0],
                d.b[2] / d.a[0]};
  }
  Laws::rootsOf({{1.0, m_target.a1, m_target.a2}, {m_target.b0, m_target.b1, m_target.b2}},
                m_targetRoots.value);
  if (m_target.b0 == 0.0) // a section that is silent has no zeros
    std::fill_n(m_targetRoots.value + kZeroCentre, kPoleCentre - kZeroCentre, 0.0);
  startGlide();
}

void Biquad::startGlide() noexcept {
  if (m_instantUpdate) {
    snapGlide();
    return;
  }
  m_glideRemaining = m_glideSteps;
  for (int i = 0; i < kRootCount; ++i)
    m_increments.value[i] = (m_targetRoots.value[i] - m_currentRoots.value[i]) / m_glideSteps;
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
void flushDenormals(Biquad::Memory& m, double least) {
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
  flushDenormals(m, least);
  memory = m;
}

} // namespace

template <class Limiter>
void Biquad::runMoving(std::span<double> run, Limiter limit) noexcept {
  Laws::Glide glide(m_currentRoots.value, m_increments.value);
  Memory m = m_glide;
  for (double& x : run) x = glide.next(m, x, limit);
  m_glide = m;
  const auto n = static_cast<double>(run.size());
  for (int i = 0; i < kRootCount; ++i)
    m_currentRoots.value[i] = flushDenormals(m_currentRoots.value[i] + n * m_increments.value[i]);
  m_glideRemaining -= static_cast<int>(run.size());
}

template <class Limiter>
void Biquad::runGlide(std::span<double> run, Limiter limit) noexcept {
  if (passesThrough()) return;
  const auto moving = std::min(run.size(), static_cast<std::size_t>(m_glideRemaining));
  if (moving > 0) runMoving(run.first(moving), limit);
  flushDenormals(m_glide, kLeastGlide);
  // A section that has been switched off passes from here on.
  if (moving < run.size() && !passesThrough())
    runFixed(m_target, m_glide, kLeastGlide, run.subspan(moving), limit);
}

void Biquad::processGlide(std::span<double> run) noexcept {
  runGlide(run, [](double y) { return y; });
}

void Biquad::processGlideSaturating(std::span<double> run) noexcept {
  runGlide(run, [this](double y) { return saturated(y); });
}

void Biquad::processFixed(std::span<double> run) noexcept {
  runFixed(m_target, m_fixed, kLeastFixed, run, [](double y) { return y; });
}

void Biquad::processFixedSaturating(std::span<double> run) noexcept {
  runFixed(m_target, m_fixed, kLeastFixed, run, [this](double y) { return saturated(y); });
}

std::array<double, 8> Biquad::memory() const noexcept {
  return {m_glide.x1, m_glide.x2, m_glide.y1, m_glide.y2,
          m_fixed.x1, m_fixed.x2, m_fixed.y1, m_fixed.y2};
}

} // namespace qlx::engine
