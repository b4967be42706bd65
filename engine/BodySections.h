#pragma once

#include "engine/FilterDesigns.h"
#include "engine/kernels/Kernels.h"

#include <algorithm>
#include <array>

namespace qlx::engine {

/// Designs fixed sections for all channels at a rate in Hz; what is switched off, or beyond the
/// table, passes. The memory stays.
template <class Sections, std::size_t M>
void designSections(Sections& sections, const std::array<FilterDesign, M>& designs,
                    double hz) noexcept {
  static_assert(M <= Sections::kCount);
  constexpr std::size_t kChannels = Sections::kChannels;
  for (std::size_t i = 0; i < Sections::kCount; ++i) {
    Biquad::Coefficients k;
    if (i < M) {
      const FilterDesign& d = designs[i];
      Biquad filter(hz, d.response, d.hz, d.q, d.db);
      filter.setEnabled(d.enabled);
      filter.setSampleRate(hz);
      filter.setFrequencyAndQ(d.hz, d.q);
      k = filter.target();
    }
    for (std::size_t lane = kChannels * i; lane < kChannels * (i + 1); ++lane) {
      sections.field[kernels::kA1][lane] = k.a1;
      sections.field[kernels::kA2][lane] = k.a2;
      sections.field[kernels::kB0][lane] = k.b0;
      sections.field[kernels::kB1][lane] = k.b1;
      sections.field[kernels::kB2][lane] = k.b2;
    }
  }
}

template <class Sections>
void clearSections(Sections& sections) noexcept {
  for (int field = kernels::kX1; field <= kernels::kY2; ++field)
    std::fill(std::begin(sections.field[field]), std::end(sections.field[field]), 0.0);
}

} // namespace qlx::engine
