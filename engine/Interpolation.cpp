#include "engine/Interpolation.h"

namespace qlx::engine {

namespace {

/// Position split into the index of the first of four points (before wrapping into 0 .. length - 1)
/// and the fraction.
struct RingPosition {
  int first;
  double fraction;
};

RingPosition ringPosition(double pos, int length) {
  while (pos < 0.0) pos += length;
  const auto whole = static_cast<int>(pos);
  int first = whole + length - 1;
  while (first >= length) first -= length;
  return {first, pos - whole};
}

template <class Sample>
Sample tableRead(double x, const Sample* table, int last) {
  if (x <= 0.0) return table[0];
  if (x >= last) return table[last];
  const auto i = static_cast<int>(x);
  const CubicWeights<Sample> weights(static_cast<Sample>(x - i));
  const int before = i > 0 ? i - 1 : 0;
  const int after = i + 2 > last ? i + 1 : i + 2;
  return weights(table[before], table[i], table[i + 1], table[after]);
}

} // namespace

double cubicRingRead(double pos, const double* ring, int size) noexcept {
  const RingPosition p = ringPosition(pos, size);
  const double* y = ring + p.first;
  return CubicWeights<double>(p.fraction)(y[0], y[1], y[2], y[3]);
}

double cubicTableRead(double x, const double* table, int last) noexcept {
  return tableRead(x, table, last);
}

float cubicLoopRead(double pos, const float* samples, int length) noexcept {
  const RingPosition p = ringPosition(pos, length);
  const float* y = samples + p.first;
  return CubicWeights<float>(static_cast<float>(p.fraction))(y[0], y[1], y[2], y[3]);
}

float cubicOneShotRead(double x, const float* samples, int last) noexcept {
  return tableRead(x, samples, last);
}

} // namespace qlx::engine
