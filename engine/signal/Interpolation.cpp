// SPDX-License-Identifier: ISC
#include "engine/signal/Interpolation.h"

namespace qlx::engine {

namespace {

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

double cubicTableRead(double x, const double* table, int last) noexcept {
  return tableRead(x, table, last);
}

float cubicOneShotRead(double x, const float* samples, int last) noexcept {
  return tableRead(x, samples, last);
}

} // namespace qlx::engine
