// SPDX-License-Identifier: ISC
#pragma once

#include <bit>
#include <cstdint>
#include <string_view>

namespace qlx::validate {

/// Numbers that follow from a seed alone, the same with every compiler and library (SplitMix64).
class Random {
 public:
  /// `salt` gives each user of one seed a sequence of its own.
  Random(std::uint64_t seed, std::string_view salt) : m_state(seed) {
    for (const char c : salt) m_state = (m_state ^ static_cast<unsigned char>(c)) * 0x100000001B3U;
  }

  std::uint64_t next() {
    std::uint64_t z = (m_state += 0x9E3779B97F4A7C15U);
    z = (z ^ (z >> 30)) * 0xBF58476D1CE4E5B9U;
    z = (z ^ (z >> 27)) * 0x94D049BB133111EBU;
    return z ^ (z >> 31);
  }
  /// 0 to `count` - 1; `count` > 0.
  int below(int count) { return static_cast<int>(next() % static_cast<std::uint64_t>(count)); }
  int between(int lowest, int highest) { return lowest + below(highest - lowest + 1); }
  bool chance(int oneIn) { return below(oneIn) == 0; }
  double unit() { return static_cast<double>(next() >> 11) * 0x1p-53; } ///< 0 <= x < 1
  float value() { return static_cast<float>(unit()); }
  char byte() { return static_cast<char>(next() & 0xFF); }
  /// Any bit pattern: NaN and infinities, too.
  float anyFloat() { return std::bit_cast<float>(static_cast<std::uint32_t>(next())); }

 private:
  std::uint64_t m_state;
};

} // namespace qlx::validate
