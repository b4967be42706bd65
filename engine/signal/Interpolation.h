// SPDX-License-Identifier: ISC
#pragma once

#include "engine/signal/SubBlock.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <span>

namespace qlx::engine {

/// Weights of the four-point cubic (Catmull-Rom) interpolation at fraction t, 0 <= t < 1, between
/// the second and the third of four neighbouring samples.
template <class Real>
struct CubicWeights {
  Real w0, w1, w2, w3;

  explicit CubicWeights(Real t) noexcept {
    const Real t2 = t * t, t3 = t2 * t;
    w0 = Real(0.5) * (Real(2) * t2 - t3 - t);
    w1 = Real(0.5) * (Real(3) * t3 - Real(5) * t2 + Real(2));
    w2 = Real(0.5) * (Real(4) * t2 - Real(3) * t3 + t);
    w3 = Real(0.5) * (t3 - t2);
  }

  Real operator()(Real p0, Real p1, Real p2, Real p3) const noexcept {
    return w0 * p0 + w1 * p1 + w2 * p2 + w3 * p3;
  }
};

/// A delay line of Size samples that is continued behind its end by its first samples, so that
/// reading four neighbours or a sub-block never wraps.
template <int Size>
class ContinuedRing {
 public:
  static constexpr int kSize = Size;
  static constexpr int kContinued = kSubBlock + 8; ///< samples of the begin that follow the end
  static_assert((Size & (Size - 1)) == 0, "the index is masked");
  static_assert(Size >= kContinued);

  void clear() noexcept { m_samples.fill(0.0); }

  void write(int index, double x) noexcept {
    const auto i = static_cast<std::size_t>(index & (Size - 1));
    m_samples[i] = x;
    if (i < kContinued) m_samples[i + Size] = x;
  }

  /// Writes a block of samples from `index` on.
  void write(int index, std::span<const double> samples) noexcept {
    const auto begin = static_cast<std::size_t>(index & (Size - 1));
    if (begin >= kContinued && begin + samples.size() <= std::size_t{Size}) {
      std::copy(samples.begin(), samples.end(), m_samples.begin() + begin);
      return;
    }
    for (const double x : samples) write(index++, x);
  }

  double at(int index) const noexcept {
    return m_samples[static_cast<std::size_t>(index & (Size - 1))];
  }

  const double* data() const noexcept { return m_samples.data(); }

 private:
  std::array<double, std::size_t{Size} + kContinued> m_samples{};
};

/// Reads table[0 .. last] at x; below 0 and above `last` the end values hold.
double cubicTableRead(double x, const double* table, int last) noexcept;

/// Reads samples[0 .. last] once, the end values holding outside, in single precision.
float cubicOneShotRead(double x, const float* samples, int last) noexcept;

} // namespace qlx::engine
