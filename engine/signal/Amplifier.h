// SPDX-License-Identifier: ISC
#pragma once

#include "engine/kernels/Kernels.h"
#include "engine/settings/SmoothedSettings.h"
#include "engine/signal/Biquad.h"
#include "engine/signal/SubBlock.h"

namespace qlx::engine {

/// The amplifier ahead of the speakers: input gain, tube or transistor drive, and the four tone
/// controls. Runs at the host's rate. Audio thread only.
class Amplifier {
 public:
  enum class Type : unsigned char { Thru = 0, Tube = 1, Solid = 2 };
  enum class Tone : unsigned char { Presence, LoMid, Top, Bottom, Count };

  explicit Amplifier(const kernels::Kernels& kernels);

  void
  setSampleRate(double hz) noexcept; ///< host rate of the tone filters, which glide from here on
  void setTrackerRate(double hz) noexcept; ///< host rate of the drive's DC tracker
  void clear() noexcept;                   ///< the drive's DC tracker
  void setInstantUpdate() noexcept;
  void clearFilters() noexcept;
  void setType(Type type) noexcept { m_type = type; }

  /// Wanted gain in dB of a tone control; bandwidth and the filter's share of it follow.
  void setTone(Tone tone, double db) noexcept;

  /// n samples of the mono input, in place; drive and gains as smoothed.
  void process(const SmoothedValues& settings, int n, SubBlock& samples) noexcept;

 private:
  const kernels::Kernels& m_kernels;
  Type m_type = Type::Tube;
  double m_dcTracker = 0.0;
  double m_dcCoefficient = 0.0;
  std::array<Biquad, static_cast<std::size_t>(Tone::Count)> m_tone;
};

} // namespace qlx::engine
