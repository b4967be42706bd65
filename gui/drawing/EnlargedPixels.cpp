// SPDX-License-Identifier: ISC
#include "gui/drawing/EnlargedPixels.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <vector>

namespace qlx::gui {

namespace {

using Weights = std::array<std::int16_t, 4>; ///< in units of 1 / 4096

// The cubic goes through the pixels' middles: every two make three, whose middles lie 1/6 of a
// pixel before the first's, midway, and 1/6 behind the second's. Of each of the three: the first of
// its four neighbours from the pair's first, and their weights.
struct Phase {
  int first;
  Weights weights;
};
constexpr int kWeightBits = 12;
constexpr std::array<Phase, 3> kPhases{
    {{-2, {-47, 540, 3840, -237}}, {-1, {-256, 2304, 2304, -256}}, {0, {-237, 3840, 540, -47}}}};

using Bytes = const std::uint8_t*;
using Lines = std::array<const std::uint32_t*, 4>; ///< of pixels

Bytes bytesOf(const std::uint32_t* pixels) { return reinterpret_cast<Bytes>(pixels); }

// Products of 16 bits, of which a processor works out several at a time.
void mixBytes(const std::array<Bytes, 4>& from, const Weights& weights, int count,
              std::uint8_t* __restrict to) {
  constexpr int kHalf = 1 << (kWeightBits - 1);
  const Bytes a = from[0];
  const Bytes b = from[1];
  const Bytes c = from[2];
  const Bytes d = from[3];
  const std::int16_t ofA = weights[0];
  const std::int16_t ofB = weights[1];
  const std::int16_t ofC = weights[2];
  const std::int16_t ofD = weights[3];
  for (int i = 0; i < count; ++i) {
    const int sum = ofA * a[i] + ofB * b[i] + ofC * c[i] + ofD * d[i] + kHalf;
    to[i] = static_cast<std::uint8_t>(std::clamp(sum >> kWeightBits, 0, 255));
  }
}

/// Takes from every colour what exceeds its pixel's alpha, as a weighted mean may.
void limitColours(std::uint32_t* __restrict pixels, int count) {
  constexpr int kBlock = 64; // worked on at a time
  std::array<std::uint32_t, kBlock> limits;
  for (int done = 0; done < count; done += kBlock, pixels += kBlock) {
    const int now = std::min(kBlock, count - done);
    std::uint32_t all = ~0U;
    for (int i = 0; i < now; ++i) {
      const std::uint32_t two = (pixels[i] >> 24) | (pixels[i] >> 24 << 8);
      limits[static_cast<std::size_t>(i)] = two | two << 16;
      all &= pixels[i];
    }
    if (all >> 24 == 255) continue;
    const Bytes limit = bytesOf(limits.data());
    auto* const bytes = reinterpret_cast<std::uint8_t*>(pixels);
    for (int i = 0; i < 4 * now; ++i) bytes[i] = std::min(bytes[i], limit[i]);
  }
}

/// Weighted means of `count` pixels of four lines each.
void mixLines(const Lines& from, const Weights& weights, int count, std::uint32_t* to) {
  mixBytes({bytesOf(from[0]), bytesOf(from[1]), bytesOf(from[2]), bytesOf(from[3])}, weights,
           4 * count, reinterpret_cast<std::uint8_t*>(to));
  limitColours(to, count);
}

/// Makes lines half as long again. A phase is worked out for the whole line at once, from the
/// pairs' first pixels and their second ones, so that several pixels go into a register.
class LineWidener {
 public:
  explicit LineWidener(int width) : m_pairs(static_cast<std::size_t>(width / 2)) {
    for (auto& pixels : m_ofPairs) pixels.resize(m_pairs + 2);
    for (auto& pixels : m_mixed) pixels.resize(m_pairs);
  }

  void widen(const std::uint32_t* from, std::uint32_t* to) {
    auto& [firsts, seconds] = m_ofPairs;
    // The line's ends are repeated, so that its pixels all have four neighbours.
    firsts.front() = seconds.front() = from[0];
    firsts.back() = seconds.back() = from[2 * m_pairs - 1];
    for (std::size_t i = 0; i < m_pairs; ++i) {
      firsts[i + 1] = from[2 * i];
      seconds[i + 1] = from[2 * i + 1];
    }
    for (std::size_t phase = 0; phase < kPhases.size(); ++phase)
      mixLines(neighbours(kPhases[phase].first), kPhases[phase].weights, static_cast<int>(m_pairs),
               m_mixed[phase].data());
    for (std::size_t i = 0; i < m_pairs; ++i)
      for (const auto& mixed : m_mixed) *to++ = mixed[i];
  }

 private:
  /// Of all pairs at once; `first` from the pair's first pixel.
  Lines neighbours(int first) const {
    Lines lines;
    int place = first + 2;
    for (const std::uint32_t*& line : lines) {
      line = m_ofPairs[static_cast<std::size_t>(place % 2)].data() + place / 2;
      ++place;
    }
    return lines;
  }

  std::size_t m_pairs;
  std::array<std::vector<std::uint32_t>, 2> m_ofPairs; ///< firsts, seconds; a pair more at each end
  std::array<std::vector<std::uint32_t>, 3> m_mixed;   ///< by phase
};

} // namespace

PixelBuffer halfAsLargeAgain(const PixelBuffer& picture) {
  PixelBuffer large(picture.width / 2 * 3, picture.height / 2 * 3);
  LineWidener widener(picture.width);
  constexpr int kNeighbours = 6; // lines that those of a pair are made of
  PixelBuffer wide(large.width, kNeighbours);
  const auto wideRow = [&wide](int y) { return wide.row(y % kNeighbours); };
  int widened = 0;
  for (int y = 0; y < large.height; ++y) {
    const int pair = y / 3 * 2;
    for (; widened < std::min(pair + kNeighbours - 2, picture.height); ++widened)
      widener.widen(picture.row(widened), wideRow(widened));
    const Phase& phase = kPhases[static_cast<std::size_t>(y % 3)];
    Lines lines;
    int place = pair + phase.first;
    for (const std::uint32_t*& line : lines)
      line = wideRow(std::clamp(place++, 0, picture.height - 1));
    mixLines(lines, phase.weights, large.width, large.row(y));
  }
  return large;
}

} // namespace qlx::gui
