// SPDX-License-Identifier: ISC
#pragma once

#include "engine/signal/FilterLaws.h"

#include <array>
#include <span>

namespace qlx::engine {

/// Response of a Biquad. The numbers are the order of the design table in Biquad.cpp.
enum class Response : unsigned char {
  PassThrough = 0,
  HighPass = 1,
  HighPassFirstOrder = 2,
  LowShelf = 3,
  Peaking = 4,
  BandPass = 5, ///< 0 dB at the peak
  Notch = 6,
  HighShelf = 7,
  LowPass = 8,
  LowPassFirstOrder = 9,
  AllPass = 10
};

/// The rate that sections work with: from the lowest to 400000 Hz, anything else counts as 44100.
inline constexpr double kLowestSectionRate = 20000.0;
constexpr double sectionRate(double hz) noexcept {
  return hz >= kLowestSectionRate && hz <= 400000.0 ? hz : 44100.0;
}

/// Samples in which a section's poles and zeros reach a new place, 3 ms.
constexpr int sectionGlideSteps(double hz) noexcept { return static_cast<int>(hz * 0.003); }

/// Second-order section with ten responses after the bilinear designs of R. Bristow-Johnson's
/// equaliser cook-book, the Q reduced towards half the sample rate to counter the bilinear
/// transform's squeeze.
///
/// A changed setting moves poles and zeros in straight lines over 3 ms (glide ticks), so that a
/// filter that is re-tuned all the time neither clicks nor becomes unstable on its way. A soft
/// limiter inside the recursion can be switched on.
///
/// Fixed ticks use the wanted coefficients directly and have memory of their own. Settings and
/// ticks belong to one thread.
class Biquad {
 public:
  Biquad() = default;
  Biquad(double sampleRate, Response response, double hz, double q, double gainDb);

  /// Stores the settings; off, instant updates, everything cleared, pass-through until a setter
  /// computes.
  void init(double sampleRate, Response response, double hz, double q, double gainDb) noexcept;

  /// Saturation off, all memory and increments zero.
  void clear() noexcept;

  /// Zeroes the memory alone; settings, saturation and glide stay.
  void clearState() noexcept;

  /// 20000 .. 400000 Hz, anything else counts as 44100. Recomputes, saturation included.
  void setSampleRate(double hz) noexcept;
  void setResponse(Response response) noexcept;
  void setFrequency(double hz) noexcept; ///< limited to 0.001 Hz .. 0.499 of the sample rate
  void setQ(double q) noexcept;          ///< limited to 0.0001 .. 1000
  void setFrequencyAndQ(double hz, double q) noexcept; ///< both limited
  void setFrequencyQGain(double hz, double q,
                         double db) noexcept; ///< as given, for callers that keep the range
  void setGainDb(double db) noexcept;         ///< limited to -1000 .. 1000
  /// True where a setter with these values would change nothing: they are set and no glide runs.
  bool standsAt(double hz, double q, double db) const noexcept {
    return isSettled() && hz == m_frequency && q == m_q && db == m_gainDb;
  }
  void setEnabled(bool on) noexcept;
  void setInstantUpdate(bool on) noexcept;

  /// Drive of the soft limiter, off at 0 and below; and its offset, -0.25 .. 0.25.
  void setSaturation(double drive) noexcept;
  void setSaturationOffset(double offset) noexcept;

  double tickGlide(double x) noexcept;
  double tickGlideSaturating(double x) noexcept;
  double tickFixed(double x) noexcept;
  double tickFixedSaturating(double x) noexcept;

  /// The same over a run of samples, in place.
  void processGlide(std::span<double> run) noexcept;
  void processGlideSaturating(std::span<double> run) noexcept;
  void processFixed(std::span<double> run) noexcept;
  void processFixedSaturating(std::span<double> run) noexcept;

  /// Wanted coefficients of H(z) = (b0 + b1/z + b2/z^2) / (1 + a1/z + a2/z^2).
  struct Coefficients {
    double a1 = 0.0, a2 = 0.0, b0 = 1.0, b1 = 0.0, b2 = 0.0;
  };
  const Coefficients& target() const noexcept { return m_target; }

  /// What the designs share: frequency on the unit circle, shelf and peak gain, bandwidth.
  struct DesignInput {
    double c = 1.0, s = 0.0;     ///< cosine and sine of the frequency
    double gain = 1.0;           ///< amplitude at half the wanted decibels
    double q = 1.0, alpha = 0.0; ///< warped Q and the bandwidth term s / (2 Q)
  };

  /// Samples until the running glide arrives.
  int glideRemaining() const noexcept { return m_glideRemaining; }

  /// True where glide ticks are those of a fixed section with the wanted coefficients.
  bool isSettled() const noexcept {
    return m_enabled && m_response != Response::PassThrough && m_glideRemaining == 0;
  }

  /// Memory of one kind of ticks: the last two inputs and outputs.
  struct Memory {
    double x1 = 0.0, x2 = 0.0, y1 = 0.0, y2 = 0.0;
  };
  Memory& glideMemory() noexcept { return m_glide; }
  Memory& fixedMemory() noexcept { return m_fixed; }

  /// Curvature and offset of the soft limiter; a curvature of 0 leaves it open.
  double limiterCurvature() const noexcept { return m_saturationOn ? m_saturationK : 0.0; }
  double limiterOffset() const noexcept { return m_saturationOffset; }

  /// The eight memory cells (x1, x2, y1, y2 of the glide ticks, then of the fixed ticks).
  std::array<double, 8> memory() const noexcept;

 private:
  /// What glides, by SectionRoot.
  struct Roots {
    double value[kRootCount] = {};
  };

  void recompute() noexcept;
  void placeFrequency() noexcept;
  void startGlide() noexcept;
  void snapGlide() noexcept;
  bool passesThrough() noexcept;
  template <class Limiter>
  void runMoving(std::span<double> run, Limiter limit) noexcept;
  template <class Limiter>
  void runGlide(std::span<double> run, Limiter limit) noexcept;
  void storeSampleRate(double hz) noexcept;
  double saturated(double y) const noexcept;

  double m_sampleRate = 44100.0;
  double m_frequency = 1000.0;
  double m_q = 0.7;
  double m_gainDb = 0.0;
  Response m_response = Response::PassThrough;
  bool m_enabled = false;
  bool m_instantUpdate = true;

  DesignInput m_design;
  std::array<double, 3> m_placed{}; ///< rate, frequency and Q of the design
  Response m_placedResponse = Response::PassThrough;
  Coefficients m_target;
  Roots m_currentRoots{};
  Roots m_targetRoots{};
  Roots m_increments{};
  int m_glideSteps = 132;
  int m_glideRemaining = 0;

  double m_saturationDrive = -1.0;
  double m_saturationK = 0.001;
  double m_saturationOffset = 0.0;
  bool m_saturationOn = false;

  Memory m_glide;
  Memory m_fixed;
};

} // namespace qlx::engine
