// SPDX-License-Identifier: ISC
#pragma once

#include "engine/kernels/Kernels.h"
#include "engine/signal/Biquad.h"
#include "engine/signal/SubBlock.h"

#include <array>
#include <cstdint>

namespace qlx::engine {

/// From the host's rate to the engine's and back: the same 32-tap low-pass decimates the
/// amplifier's signal and interpolates both outputs, which an image filter has passed before. At
/// factor 1 it does nothing. Audio thread only.
class RateConverter {
 public:
  explicit RateConverter(const kernels::Kernels& kernels);

  /// Host samples per engine sample: 1, 2, 4 or 8.
  void setFactor(int factor) noexcept;
  int factor() const noexcept { return m_factor; }

  /// Cut-off of the image filters, limited by the rate that they have at this moment.
  void setImageFrequency(double hz) noexcept;
  void setHostRate(double hz) noexcept; ///< of the image filters
  void setInstantUpdate() noexcept;
  void clear() noexcept; ///< lines and their position
  void restartCounter() noexcept { m_sampleCounter = 0; }
  void clearFilters() noexcept;

  /// Takes n host samples of `in`; writes what falls on engine samples to `out` and the host
  /// samples' numbers to `at`. Returns how many engine samples there are.
  int decimate(const SubBlock& in, int n, SubBlock& out, std::array<int, kSubBlock>& at) noexcept;

  /// The reverse for both outputs, in place: `left` and `right` hold the engine samples, then n
  /// host samples. Belongs to the decimate call before it.
  void interpolate(int n, SubBlock& left, SubBlock& right) noexcept;

 private:
  /// A sub-block of samples behind the ones that the low-pass still needs; in single precision, as
  /// the low-pass's coefficients are.
  class Line {
   public:
    void clear() noexcept { m_samples.fill(0.0); }
    /// Appends a sample of the current sub-block.
    void write(int j, double x) noexcept {
      m_samples[kPast + static_cast<std::size_t>(j)] = static_cast<double>(static_cast<float>(x));
    }
    /// Where the low-pass begins for sample j of the current sub-block.
    const double* before(int j) const noexcept { return m_samples.data() + j; }
    void finish(int n) noexcept;

   private:
    static constexpr std::size_t kPast = kernels::kFirTaps - 1;
    std::array<double, kPast + kSubBlock + 8> m_samples{};
  };

  void interpolateSide(Line& line, int n, SubBlock& side) const noexcept;
  int firstEngineSample() const noexcept {
    return static_cast<int>((0U - m_sampleCounter) & static_cast<std::uint32_t>(m_factor - 1));
  }

  const kernels::Kernels& m_kernels;
  int m_factor = 1;
  std::array<double, kernels::kFirTaps> m_table{}; ///< the newest sample's tap last
  Line m_input, m_left, m_right;
  Biquad m_imageLeft, m_imageRight;
  std::uint32_t m_sampleCounter = 0;
};

} // namespace qlx::engine
