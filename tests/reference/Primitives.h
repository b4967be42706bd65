// SPDX-License-Identifier: ISC
#pragma once

#include <cmath>
#include <cstddef>
#include <numbers>
#include <span>
#include <vector>

// Reads, one-pole smoothing and the flush that every part of the reference model uses.
namespace qlx::reference {

inline constexpr double kTwoPi = 2.0 * std::numbers::pi;
inline constexpr double kInverseSpeedOfSound = 0.0029386699579770194; // s/m
inline constexpr double kSpeedOfSound = 340.29;                       // m/s

// Recursive states far below the constant become exact zero.
inline double flush(double x, double tiny = 1e-12) { return (x + tiny) - tiny; }

// y follows x; pole 0 follows at once.
inline void onePole(double& y, double x, double pole) { y = flush((y - x) * pole + x); }

template <typename T>
T cubic(T p0, T p1, T p2, T p3, T t) {
  const T t2 = t * t, t3 = t2 * t;
  return T(0.5) * ((2 * t2 - t3 - t) * p0 + (3 * t3 - 5 * t2 + 2) * p1 +
                   (4 * t2 - 3 * t3 + t) * p2 + (t3 - t2) * p3);
}

// Position in a loop of any length; the fraction is rounded to the sample type.
template <typename T>
T cubicLoop(double position, std::span<const T> loop, std::size_t length) {
  while (position < 0.0) position += double(length);
  const double whole = std::trunc(position);
  const auto first = std::size_t(whole) + length - 1;
  auto at = [&](std::size_t k) { return loop[(first + k) % length]; };
  return cubic<T>(at(0), at(1), at(2), at(3), T(position - whole));
}

// Position in a table with the indices 0 to last; ends are held.
template <typename T>
T cubicTable(double position, std::span<const T> table, std::size_t last) {
  if (!(position > 0.0)) return table[0];
  if (position >= double(last)) return table[last];
  const auto i = std::size_t(position);
  const std::size_t before = i == 0 ? 0 : i - 1, after = i + 2 > last ? last : i + 2;
  return cubic<T>(table[before], table[i], table[i + 1], table[after], T(position - double(i)));
}

// A ring of doubles with a write position that its owner moves.
struct Ring {
  explicit Ring(std::size_t size) : data(size, 0.0) {}
  void clear() { data.assign(data.size(), 0.0); }
  void write(double x) { data[position] = x; }
  void advance() { position = (position + 1) % data.size(); }

  double back(double delay) const {
    double at = double(position) - delay;
    while (at < 0.0) at += double(data.size());
    return at;
  }
  double cubicRead(double delay) const {
    return cubicLoop<double>(back(delay), std::span<const double>(data), data.size());
  }
  double wholeRead(double delay) const { return data[std::size_t(back(delay)) % data.size()]; }
  double linearRead(double delay) const {
    const double at = back(delay);
    const auto i = std::size_t(at);
    const double t = at - double(i);
    return (1.0 - t) * data[i % data.size()] + t * data[(i + 1) % data.size()];
  }

  std::vector<double> data;
  std::size_t position = 0;
};

} // namespace qlx::reference
