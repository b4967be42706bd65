// SPDX-License-Identifier: ISC
#include "engine/kernels/FourLanes.h"
#include "engine/kernels/KernelTable.h"

namespace qlx::engine::kernels {
namespace {

/// Four lanes that are left over go through vectors of four.
void hornRaysOfEight(HornBank& bank, int lanes, const RayPass& pass, double* pairs) {
  const int wide = lanes / kWidth * kWidth;
  hornLanes(bank, 0, wide, pass, pairs);
  if (wide == lanes) return;
  double rest[2 * kLongestSubBlock];
  four_lanes::hornLanes(bank, wide, lanes, pass, rest);
  for (int i = 0; i < 2 * pass.n; ++i) pairs[i] += rest[i];
}

constexpr Kernels tableOfEight() {
  Kernels kernels = kernelTable("avx512");
  kernels.hornRays = hornRaysOfEight;
  kernels.reducedBody = four_lanes::reducedBody;
  kernels.drumRays = four_lanes::drumRays;
  kernels.reducedRays = four_lanes::reducedRays;
  kernels.pairSeries = four_lanes::pairSeries;
  kernels.chainSeries = four_lanes::chainSeries;
  kernels.limitedChains = four_lanes::limitedChains;
  kernels.noiseTreble = four_lanes::noiseTreble;
  kernels.roomSide = four_lanes::roomSide;
  return kernels;
}

} // namespace

constinit const Kernels kAvx512Kernels = tableOfEight();

} // namespace qlx::engine::kernels
