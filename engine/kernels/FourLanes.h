// SPDX-License-Identifier: ISC
#pragma once

#include "engine/kernels/Kernels.h"

// Kernels for AVX2 that processors with wider vectors use too: eight lanes would lie idle where
// sections follow each other, or where there are no more than four rays. Kernels.h says what they
// do. Defined in Avx2.cpp.
namespace qlx::engine::kernels::four_lanes {

/// The horn's lanes from `first` to before `end`.
void hornLanes(HornBank& bank, int first, int end, const RayPass& pass, double* pairs);
void drumRays(DrumBank& bank, int lanes, const RayPass& pass, double* out);
void reducedRays(ReducedBank& bank, int lanes, const RayPass& horn, const RayPass& drum,
                 double* pairs);
void reducedBody(ReducedBodySections& sections, double* samples, int n);
void pairSeries(const PairSeries& series, double* pairs, int n);
void chainSeries(const ChainSeries& series, double* samples, int n);
void limitedChains(ChainSections<4>* const* chains, double* const* signals, int count, int n);
void noiseTreble(NoiseTreble& treble, const double* between, const double* slow, const double* fast,
                 double* out, int n);
void roomSide(RoomSide& side, double* out, int n);

} // namespace qlx::engine::kernels::four_lanes
