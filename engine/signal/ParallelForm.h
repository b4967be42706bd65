// SPDX-License-Identifier: ISC
#pragma once

#include "engine/kernels/Kernels.h"
#include "engine/signal/FilterDesigns.h"

#include <algorithm>
#include <array>
#include <complex>

namespace qlx::engine {

/// Turns a series of sections into the sum of parallel ones (partial fractions), which wait for
/// nothing but their own past. The memory stays. All poles of the series must differ, so no two
/// designs may be the same.
///
/// With N(z) / D(z) the series and p, q the poles of section i, the section's share is
/// c0 + c1 / z over its denominator, where c0 = r + s, c1 = -(r q + s p) for the residues
/// r = N(p) / (D'(p) / ...) and s of the two poles in powers of 1 / z. Both poles are real for a Q
/// below a half, otherwise conjugate.
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
    const Complex half = std::sqrt(Complex(a1 * a1 / 4 - a2));
    const Complex p = -a1 / 2 + half, q = -a1 / 2 - half;
    // Residue of the term r / (1 - pole u).
    const auto residue = [&](Complex pole, Complex partner) {
      const Complex u = Real(1) / pole;
      Complex r = Real(1) / (Real(1) - partner * u);
      for (std::size_t n = 0; n < M; ++n) {
        r *= Complex(k[n].b0) + u * (Complex(k[n].b1) + u * Complex(k[n].b2));
        if (n != i) r /= Complex(1) + u * (Complex(k[n].a1) + u * Complex(k[n].a2));
      }
      return r;
    };
    const Complex r = residue(p, q), s = residue(q, p);
    for (std::size_t lane = Channels * i; lane < Channels * (i + 1); ++lane) {
      out.a1[lane] = k[i].a1;
      out.a2[lane] = k[i].a2;
      out.c0[lane] = static_cast<double>((r + s).real());
      out.c1[lane] = static_cast<double>(-(r * q + s * p).real());
    }
  }
}

template <int Sections, int Channels>
void clearMemory(kernels::ParallelSections<Sections, Channels>& sections) noexcept {
  std::fill(std::begin(sections.v1), std::end(sections.v1), 0.0);
  std::fill(std::begin(sections.v2), std::end(sections.v2), 0.0);
}

} // namespace qlx::engine
