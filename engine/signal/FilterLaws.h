// SPDX-License-Identifier: ISC
#pragma once

namespace qlx::engine {

// What second-order sections are made by, for one section of doubles (Biquad) and for vectors of
// sections (kernels/) alike.

/// Highest frequency of a section as a share of the sample rate: at half of it the bilinear designs
/// lose their bandwidth, because the sine of the frequency is zero there.
inline constexpr double kHighestShare = 0.499;

/// Share of the sample rate at which the counter-warp brings the Q to zero: beyond half of it, so
/// that the Q stays positive at every frequency up to kHighestShare. The low-pass, whose
/// counter-warp sets in latest, ends nearest to it.
inline constexpr double kWarpEdgeShare = 0.5001;
inline constexpr double kLowPassWarpEdgeShare = 0.50001;
static_assert(kHighestShare < kLowPassWarpEdgeShare && kLowPassWarpEdgeShare < kWarpEdgeShare);

/// Exponents of the counter-warp: the bilinear transform squeezes bandwidths towards half the rate,
/// against which the Q is reduced by the share (f / edge) to the power of these.
inline constexpr double kHighPassWarp = 6.0;
inline constexpr double kLowShelfWarp = 3.5;
inline constexpr double kPeakWarp = 2.8; ///< peak, band-pass and notch
inline constexpr double kHighShelfWarp = 4.0;
inline constexpr double kLowPassWarp = 8.0;

/// What glides of a section. A pair of roots is kept as its centre and half the difference of the
/// two: real, where both lie on the real axis, or imaginary, where they are conjugate.
enum SectionRoot : int {
  kZeroCentre,
  kZeroHalfReal,
  kZeroHalfImaginary,
  kPoleCentre,
  kPoleHalfReal,
  kPoleHalfImaginary,
  kGain,
  kRootCount
};

/// Designs after R. Bristow-Johnson's equaliser cook-book, and the glide of their roots. `Math` has
/// the type Number and of it root, absolute, atLeastZero and choose; kernel files keep theirs in an
/// unnamed namespace, so that nothing of one instruction set is linked into another's.
///
/// In all designs c is the cosine of the angular frequency, alpha its sine over 2 Q, `gain` the
/// amplitude of half the decibels.
template <class Math>
struct FilterLaws {
  using Number = typename Math::Number;

  static Number warpedQ(Number q, Number warp) { return q - q * warp; }

  /// Denominator and numerator in powers of 1 / z, not normalised.
  struct Design {
    Number a[3], b[3];
  };

  static Design peak(Number c, Number alpha, Number gain) {
    const Number up = alpha * gain, down = alpha / gain;
    return {{1.0 + down, -2.0 * c, 1.0 - down}, {1.0 + up, -2.0 * c, 1.0 - up}};
  }

  /// `side` +1: low shelf, -1: high shelf, mirrored about a quarter of the rate. `slope` is the
  /// sine of the frequency over the Q.
  static Design shelf(double side, Number cosine, Number slope, Number gain) {
    const Number c = side * cosine, width = slope * Math::root(gain);
    const Number more = gain + 1.0, less = gain - 1.0;
    return {{more + less * c + width, -2.0 * side * (less + more * c), more + less * c - width},
            {gain * (more - less * c + width), 2.0 * side * gain * (less - more * c),
             gain * (more - less * c - width)}};
  }

  static Design lowPass(Number c, Number alpha) {
    const Number b = 0.5 * (1.0 - c);
    return {{1.0 + alpha, -2.0 * c, 1.0 - alpha}, {b, 1.0 - c, b}};
  }

  /// Centre and half-differences of the roots of k0 z^2 + k1 z + k2, k0 not zero.
  static void pairOf(const Number (&k)[3], Number* pair) {
    const Number scale = 0.5 / k[0];
    const Number discriminant = k[1] * k[1] - 4.0 * k[0] * k[2];
    const Number half = Math::root(Math::absolute(discriminant)) * scale;
    const auto isReal = Math::atLeastZero(discriminant);
    pair[0] = -k[1] * scale;
    pair[1] = Math::choose(isReal, half, Number{});
    pair[2] = Math::choose(isReal, Number{}, half);
  }

  /// The roots of a design, by SectionRoot.
  static void rootsOf(const Design& design, Number (&root)[kRootCount]) {
    pairOf(design.b, root + kZeroCentre);
    pairOf(design.a, root + kPoleCentre);
    root[kGain] = design.b[0] / design.a[0];
  }

  static Number sumOf(const Number* pair) { return 2.0 * pair[0]; }
  static Number productOf(const Number* pair) {
    return pair[0] * pair[0] - pair[1] * pair[1] + pair[2] * pair[2];
  }

  /// A section by the sums and products of its roots.
  struct Section {
    Number gain, zeroSum, zeroProduct, poleSum, poleProduct;

    explicit Section(const Number (&root)[kRootCount])
        : gain(root[kGain]), zeroSum(sumOf(root + kZeroCentre)),
          zeroProduct(productOf(root + kZeroCentre)), poleSum(sumOf(root + kPoleCentre)),
          poleProduct(productOf(root + kPoleCentre)) {}

    /// One sample; `memory` has the last two inputs x1, x2 and outputs y1, y2, `limit` is applied
    /// inside the recursion.
    template <class Memory, class Limiter>
    Number next(Memory& memory, Number x, Limiter limit) const {
      const Number fed = gain * (x - zeroSum * memory.x1 + zeroProduct * memory.x2);
      const Number y = limit((fed - poleProduct * memory.y2) + poleSum * memory.y1);
      memory.x2 = memory.x1;
      memory.x1 = x;
      memory.y2 = memory.y1;
      memory.y1 = y;
      return y;
    }
  };

  /// A section whose roots and gain move by `step` before every sample: sums of roots along
  /// straight lines, their products along parabolas.
  struct Glide {
    Section at;
    Number gainStep, zeroSumStep, poleSumStep;
    Number zeroStep, zeroBend, poleStep, poleBend; ///< of the products

    Glide(const Number (&root)[kRootCount], const Number (&step)[kRootCount])
        : at(root), gainStep(step[kGain]), zeroSumStep(sumOf(step + kZeroCentre)),
          poleSumStep(sumOf(step + kPoleCentre)),
          zeroStep(firstStep(root + kZeroCentre, step + kZeroCentre)),
          zeroBend(2.0 * productOf(step + kZeroCentre)),
          poleStep(firstStep(root + kPoleCentre, step + kPoleCentre)),
          poleBend(2.0 * productOf(step + kPoleCentre)) {}

    template <class Memory, class Limiter>
    Number next(Memory& memory, Number x, Limiter limit) {
      at.gain += gainStep;
      at.zeroSum += zeroSumStep;
      at.poleSum += poleSumStep;
      at.zeroProduct += zeroStep;
      zeroStep += zeroBend;
      at.poleProduct += poleStep;
      poleStep += poleBend;
      return at.next(memory, x, limit);
    }

   private:
    static Number firstStep(const Number* pair, const Number* step) {
      return 2.0 * (pair[0] * step[0] - pair[1] * step[1] + pair[2] * step[2]) + productOf(step);
    }
  };
};

} // namespace qlx::engine
