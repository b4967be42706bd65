// SPDX-License-Identifier: ISC
#pragma once

#include <cstdint>

namespace qlx::recordings {

/// Random numbers that are the same everywhere: a counter whose values are well mixed. Each source
/// of sound has its own seed, so that a change in one leaves the others as they were.
class Random {
 public:
  /// The seed is mixed too: counters that started side by side would run through the same numbers,
  /// a few places apart.
  explicit constexpr Random(std::uint64_t seed) : m_counter(mixed(mixed(seed) + kStep)) {}

  /// Even over -1 .. 1.
  constexpr double symmetric() {
    m_counter += kStep;
    return static_cast<double>(mixed(m_counter) >> 11U) * 0x1p-52 - 1.0;
  }

  /// Nearly normal (a sum of four), mean 0, root mean square 1, never beyond 3.5.
  constexpr double bell() {
    const double sum = symmetric() + symmetric() + symmetric() + symmetric();
    return sum * 0.8660254037844386; // each of the four has a mean square of 1/3
  }

 private:
  static constexpr std::uint64_t kStep = 0x9e3779b97f4a7c15U;

  static constexpr std::uint64_t mixed(std::uint64_t x) {
    x = (x ^ (x >> 30U)) * 0xbf58476d1ce4e5b9U;
    x = (x ^ (x >> 27U)) * 0x94d049bb133111ebU;
    return x ^ (x >> 31U);
  }

  std::uint64_t m_counter;
};

} // namespace qlx::recordings
