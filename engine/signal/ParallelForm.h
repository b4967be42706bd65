// SPDX-License-Identifier: ISC
#pragma once

#include "engine/kernels/Kernels.h"
#include "engine/signal/FilterDesigns.h"

#include <algorithm>
#include <array>
#include <complex>

namespace qlx::engine {

/// Turns a series of sections with simple complex poles into the sum of parallel ones (partial
/// fractions), which wait for nothing but their own past. The memory stays.
///
/// With N(z) / D(z) the series and p a pole of section i, the section's share is
/// c0 + c1 / z over its denominator, where c0 = 2 Re r, c1 = -2 Re(r conj p) for the residue
/// r = N(p) / (D'(p) / ...) of the pole in powers of 1 / z.
template <int Sections, int Channels, std::size_t M>
void makeParallel(kernels::ParallelSections<Sections, Channels>& out,
                  const std::array<FilterDesign, M>& designs, double hz) noexcept {
  static_assert(M <= Sections);
  using Real = long double;
  using Complex = std::complex<Real>;
  std::array<Biquad::Coefficients, M> k;
  for (std::size_t i = 0; i < M; ++i) {
    const FilterDesign& d = designs[i];
    Biquad filter(hz, d.response, d.hz, d.q, d.db);
    filter.setEnabled(d.enabled);
    filter.setSampleRate(hz);
    filter.setFrequencyAndQ(d.hz, d.q);
    k[i] = filter.target();
  }
  // In u = 1 / z: N = prod(b0 + b1 u + b2 u^2), D = prod(1 + a1 u + a2 u^2).
  Real direct = 1;
  for (const Biquad::Coefficients& c : k) direct *= Real(c.b2) / Real(c.a2);
  out.direct = static_cast<double>(direct);
  std::fill(std::begin(out.c0), std::end(out.c0), 0.0);
  std::fill(std::begin(out.c1), std::end(out.c1), 0.0);
  std::fill(std::begin(out.a1), std::end(out.a1), 0.0);
  std::fill(std::begin(out.a2), std::end(out.a2), 0.0);
  for (std::size_t i = 0; i < M; ++i) {
    const Real a1 = k[i].a1, a2 = k[i].a2;
    const Complex pole(-a1 / 2, std::sqrt(a2 - a1 * a1 / 4)), u = Real(1) / pole;
    // Residue of the term r / (1 - pole u).
    Complex r = Real(1) / (Real(1) - std::conj(pole) * u);
    for (std::size_t n = 0; n < M; ++n) {
      r *= Complex(k[n].b0) + u * (Complex(k[n].b1) + u * Complex(k[n].b2));
      if (n != i) r /= Complex(1) + u * (Complex(k[n].a1) + u * Complex(k[n].a2));
    }
    for (std::size_t lane = Channels * i; lane < Channels * (i + 1); ++lane) {
      out.a1[lane] = k[i].a1;
      out.a2[lane] = k[i].a2;
      out.c0[lane] = static_cast<double>(2 * r.real());
      out.c1[lane] = static_cast<double>(-2 * (r * std::conj(pole)).real());
    }
  }
}

template <int Sections, int Channels>
void clearMemory(kernels::ParallelSections<Sections, Channels>& sections) noexcept {
  std::fill(std::begin(sections.v1), std::end(sections.v1), 0.0);
  std::fill(std::begin(sections.v2), std::end(sections.v2), 0.0);
}

} // namespace qlx::engine
