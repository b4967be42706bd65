#pragma once

#include "engine/Acoustics.h"
#include "engine/Biquad.h"

#include <array>

namespace qlx::engine {

/// From the cabinet's input to the horn's throat: a differentiator (the driver's velocity), then
/// the crossover and the driver's response for the horn itself, and a coarse one for the cross-talk
/// horn. Both saturate in one or two sections. Engine rate; audio thread only.
class HornCrossover {
 public:
  HornCrossover();

  void setSampleRate(double hz) noexcept;
  void clear() noexcept; ///< the differentiator
  void setInstantUpdate() noexcept;
  void setSaturation(double drive) noexcept;
  void clearFilters() noexcept;

  /// n samples: `x` the engine's input, `feedGain` one value a sample; `horn` and `reduced` receive
  /// both throats.
  void process(const RunBuffer& x, const RunBuffer& feedGain, int n, RunBuffer& horn,
               RunBuffer& reduced) noexcept;

 private:
  std::array<Biquad, 12> m_chain;
  std::array<Biquad, 8> m_reducedChain;
  double m_differentiator = 0.0;
  double m_previous = 0.0;
  double m_pole = 0.0;
};

} // namespace qlx::engine
