// SPDX-License-Identifier: ISC
#pragma once

#include "engine/kernels/Kernels.h"
#include "engine/signal/Biquad.h"
#include "engine/signal/SubBlock.h"

#include <array>

namespace qlx::engine {

/// From the cabinet's input to where the rotors begin. The horn: a differentiator (the driver's
/// velocity), the crossover and the driver's response, and a coarse form of them for the cross-talk
/// horn. The drum: the bass speaker and the scoop's mouth. All of them saturate in some sections.
/// Engine rate; audio thread only.
class DriverFilters {
 public:
  explicit DriverFilters(const kernels::Kernels& kernels);

  void setHornRate(double hz) noexcept;
  void setDrumRate(double hz) noexcept;
  void clearHorn() noexcept; ///< the differentiator
  void clearDrum() noexcept; ///< all memory; the next settings act at once
  void setHornInstantUpdate() noexcept;
  void setHornSaturation(double drive) noexcept;
  void setDrumSaturation(double drive) noexcept;
  void clearFilters() noexcept;

  struct Output {
    SubBlock horn, reducedHorn, drum;
  };

  /// n samples: `x` the engine's input, `hornGain` one value a sample; out.drum holds the drum's
  /// feed and is filtered in place.
  void process(const SubBlock& x, const SubBlock& hornGain, int n, Output& out) noexcept;

 private:
  void differentiate(const SubBlock& x, const SubBlock& hornGain, int n, Output& out) noexcept;

  const kernels::Kernels& m_kernels;
  std::array<Biquad, 12> m_horn;
  std::array<Biquad, 8> m_reducedHorn; ///< four in use, the others switched off
  std::array<Biquad, 4> m_drum;
  double m_differentiator = 0.0;
  double m_previous = 0.0;
  double m_pole = 0.0;
};

} // namespace qlx::engine
