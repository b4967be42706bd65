// SPDX-License-Identifier: ISC
#pragma once

// Included by each instruction set's file alone.
#include "engine/kernels/MixKernels.h"
#include "engine/kernels/NoiseKernels.h"
#include "engine/kernels/RayKernels.h"
#include "engine/kernels/SeriesKernels.h"
#include "engine/kernels/StageKernels.h"

namespace qlx::engine::kernels {
namespace {

/// The kernels as compiled for the instruction set of the file that includes this.
constexpr Kernels kernelTable(const char* name) {
  return {.name = name,
          .hornRays = hornRays,
          .drumRays = drumRays,
          .reducedRays = reducedRays,
          .settleHorn = settleHorn,
          .settleDrum = settleDrum,
          .fixedPair = fixedPair,
          .pairTaps = pairTaps,
          .body = body,
          .reducedBody = reducedBody,
          .pairSeries = pairSeries,
          .chainSeries = chainSeries,
          .limitedChains = limitedChains,
          .loopRead = loopRead,
          .noiseTreble = noiseTreble,
          .settleTreble = settleTreble,
          .roomSide = roomSide,
          .mixSends = mixSends,
          .mixRoom = mixRoom,
          .mixOutput = mixOutput,
          .fir = fir,
          .tube = tube,
          .transistor = transistor};
}

} // namespace
} // namespace qlx::engine::kernels
