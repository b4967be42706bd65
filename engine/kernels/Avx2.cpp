// SPDX-License-Identifier: ISC
#include "engine/kernels/FourLanes.h"
#include "engine/kernels/KernelTable.h"

namespace qlx::engine::kernels {

constinit const Kernels kAvx2Kernels = kernelTable("avx2");

namespace four_lanes {

void hornLanes(HornBank& bank, int first, int end, const RayPass& pass, double* pairs) {
  kernels::hornLanes(bank, first, end, pass, pairs);
}
void drumRays(DrumBank& bank, int lanes, const RayPass& pass, double* out) {
  kernels::drumRays(bank, lanes, pass, out);
}
void reducedRays(ReducedBank& bank, int lanes, const RayPass& horn, const RayPass& drum,
                 double* pairs) {
  kernels::reducedRays(bank, lanes, horn, drum, pairs);
}
void reducedBody(ReducedBodySections& sections, double* samples, int n) {
  kernels::reducedBody(sections, samples, n);
}
void pairSeries(const PairSeries& series, double* pairs, int n) {
  kernels::pairSeries(series, pairs, n);
}
void chainSeries(const ChainSeries& series, double* samples, int n) {
  kernels::chainSeries(series, samples, n);
}
void limitedChains(ChainSections<4>* const* chains, double* const* signals, int count, int n) {
  kernels::limitedChains(chains, signals, count, n);
}
void noiseTreble(NoiseTreble& treble, const double* between, const double* slow, const double* fast,
                 double* out, int n) {
  kernels::noiseTreble(treble, between, slow, fast, out, n);
}
void roomSide(RoomSide& side, double* out, int n) { kernels::roomSide(side, out, n); }

} // namespace four_lanes
} // namespace qlx::engine::kernels
