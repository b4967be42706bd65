#include "engine/Amplifier.h"

#include <algorithm>
#include <cmath>

namespace qlx::engine {

namespace {

/// Magnitude below which a driven stage passes its input.
constexpr double kSilence = 1e-8;

struct ToneDesign {
  double hz;
  double q, boostQ; ///< at cut and flat, at boost
  double share;     ///< of the control's decibels
};
/// In the order of Tone, which is the order in the signal.
constexpr std::array<ToneDesign, 4> kTone = {{
    {2000, 1.0, 0.7, 1.0},
    {500, 1.0, 0.7, 1.0},
    {4500, 0.35, 0.35, 0.75},
    {80, 1.0, 1.0, 0.75},
}};

/// Half of a push-pull tube stage: soft on the positive side, harder on the negative, then a cubic
/// knee.
double tubeStage(double x) {
  const double u = x >= 0.0 ? 0.55 * x / (1.0 + 0.5 * x) : 0.55 * 2.0 * x / (2.0 - 0.25 * x);
  return 1.4 * (1.5 * u - 0.5 * u * u * u - 0.3);
}

/// Transistor stage: a cubic knee up to a hard limit.
double solidStage(double x) {
  const double w = (std::abs(x + 1.0) - std::abs(x - 1.0)) * 0.5;
  return (1.5 * w - 0.5 * w * w * w) * 0.5;
}

} // namespace

Amplifier::Amplifier() {
  for (std::size_t i = 0; i < kTone.size(); ++i) {
    m_tone[i].init(44100.0, Response::Peaking, kTone[i].hz, kTone[i].q, 0.0);
    m_tone[i].setEnabled(true);
  }
}

void Amplifier::setTrackerRate(double hz) noexcept {
  m_dcCoefficient = 1.0 - std::pow(0.109, 2.0 / (0.1 * hz));
}

void Amplifier::setSampleRate(double hz) noexcept {
  for (Biquad& filter : m_tone) {
    filter.setSampleRate(hz);
    filter.setInstantUpdate(false);
  }
}

void Amplifier::clear() noexcept { m_dcTracker = 0.0; }

void Amplifier::setInstantUpdate() noexcept {
  for (Biquad& filter : m_tone) filter.setInstantUpdate(true);
}

void Amplifier::clearFilters() noexcept {
  for (Biquad& filter : m_tone) filter.clearState();
}

void Amplifier::setTone(Tone tone, double db) noexcept {
  const auto i = static_cast<std::size_t>(tone);
  m_tone[i].setFrequencyQGain(kTone[i].hz, db <= 0.0 ? kTone[i].q : kTone[i].boostQ,
                              db * kTone[i].share);
}

void Amplifier::driveTube(const RunBuffer& drive, int n, RunBuffer& run) noexcept {
  for (std::size_t k = 0; k < static_cast<std::size_t>(n); ++k) {
    const double m = run[k], g = drive[k];
    const double v = tubeStage(-tubeStage(g * m * 1.18));
    // The asymmetry's DC is tracked through silence too, so that no thump follows it.
    m_dcTracker = flushed(m_dcTracker + (-v - m_dcTracker) * m_dcCoefficient);
    if (std::abs(m) >= kSilence) run[k] = (-v - m_dcTracker) / g;
  }
}

void Amplifier::process(const SmoothedRun& settings, int n, RunBuffer& run) noexcept {
  const RunBuffer& input = settings[Smoothed::InputGain];
  const RunBuffer& drive = settings[Smoothed::DriveGain];
  const auto size = static_cast<std::size_t>(n);
  for (std::size_t k = 0; k < size; ++k) run[k] *= input[k];
  if (m_type == Type::Tube) driveTube(drive, n, run);
  if (m_type == Type::Solid) {
    for (std::size_t k = 0; k < size; ++k) {
      if (std::abs(run[k]) >= kSilence) run[k] = solidStage(drive[k] * run[k] * 1.34349) / drive[k];
    }
  }
  const RunBuffer& post = settings[Smoothed::PostDriveGain];
  for (std::size_t k = 0; k < size; ++k) run[k] *= post[k];
  for (Biquad& filter : m_tone) filter.processGlide({run.data(), size});
}

} // namespace qlx::engine
