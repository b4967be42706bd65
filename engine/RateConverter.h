#pragma once

#include "engine/Acoustics.h"
#include "engine/Biquad.h"
#include "engine/FirTables.h"

#include <array>
#include <cstdint>

namespace qlx::engine {

/// From the host's rate to the engine's and back: the same 32-tap low-pass decimates the
/// amplifier's signal and interpolates both outputs, which an image filter has passed before. At
/// factor 1 it does nothing. Audio thread only.
class RateConverter {
 public:
  RateConverter();

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
  int decimate(const RunBuffer& in, int n, RunBuffer& out, std::array<int, kRun>& at) noexcept;

  /// The reverse for both outputs, in place: `left` and `right` hold the engine samples, then n
  /// host samples. Belongs to the decimate call before it.
  void interpolate(int n, RunBuffer& left, RunBuffer& right) noexcept;

 private:
  class Line {
   public:
    void clear() noexcept { m_samples.fill(0.0F); }
    void write(int position, double x) noexcept;
    double filter(int position, const FirTable& table) const noexcept;

   private:
    std::array<float, 2 * kFirTaps> m_samples{};
  };

  void interpolateSide(Biquad& imageFilter, Line& line, int n, RunBuffer& side) const noexcept;
  bool isEngineSample(int j) const noexcept {
    return ((m_sampleCounter + static_cast<std::uint32_t>(j)) &
            static_cast<std::uint32_t>(m_factor - 1)) == 0;
  }

  int m_factor = 1;
  const FirTable* m_table = nullptr;
  Line m_input, m_left, m_right;
  Biquad m_imageLeft, m_imageRight;
  int m_position = kFirTaps - 1; // of the lines, before the current stretch
  std::uint32_t m_sampleCounter = 0;
};

} // namespace qlx::engine
