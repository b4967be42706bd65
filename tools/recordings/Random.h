#pragma once

#include <cstdint>

namespace qlx::recordings {

/// Random numbers that are the same everywhere: a 64-bit counter whose values are well mixed. Each
/// source of sound has its own seed, so that a change in one leaves the others as they were.
class Random {
 public:
  explicit constexpr Random(std::uint64_t seed) : m_counter(seed * 0x9e3779b97f4a7c15U) {}

  /// Even over -1 .. 1.
  constexpr double symmetric() {
    m_counter += 0x9e3779b97f4a7c15U;
    std::uint64_t mixed = m_counter;
    mixed = (mixed ^ (mixed >> 30U)) * 0xbf58476d1ce4e5b9U;
    mixed = (mixed ^ (mixed >> 27U)) * 0x94d049bb133111ebU;
    mixed ^= mixed >> 31U;
    return static_cast<double>(mixed >> 11U) * 0x1p-52 - 1.0;
  }

  /// Nearly normal (a sum of four), mean 0, root mean square 1, never beyond 3.5.
  constexpr double bell() {
    const double sum = symmetric() + symmetric() + symmetric() + symmetric();
    return sum * 0.8660254037844386; // each of the four has a mean square of 1/3
  }

 private:
  std::uint64_t m_counter;
};

} // namespace qlx::recordings
