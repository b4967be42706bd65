#include "engine/kernels/RayKernels.h"
#include "engine/kernels/SeriesKernels.h"

namespace qlx::engine::kernels {

extern const Kernels kBaselineKernels;
const Kernels kBaselineKernels = {"baseline", hornRays,    drumRays,    reducedRays,
                                  restHorn,   restDrum,    fixedPair,   pairTaps,
                                  pairSeries, chainSeries, limitedChain};

} // namespace qlx::engine::kernels
