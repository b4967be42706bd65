// SPDX-License-Identifier: ISC
#include "engine/kernels/MixKernels.h"
#include "engine/kernels/NoiseKernels.h"
#include "engine/kernels/RayKernels.h"
#include "engine/kernels/SeriesKernels.h"
#include "engine/kernels/StageKernels.h"

namespace qlx::engine::kernels {

const Kernels kBaselineKernels = {"baseline", hornRays,    drumRays,      reducedRays, restHorn,
                                  restDrum,   fixedPair,   pairTaps,      body,        reducedBody,
                                  pairSeries, chainSeries, limitedChains, loopRead,    noiseTreble,
                                  restTreble, roomSide,    mixSends,      mixRoom,     mixOutput,
                                  fir,        tube,        transistor};

} // namespace qlx::engine::kernels
