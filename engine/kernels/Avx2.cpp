#include "engine/kernels/RayKernels.h"
#include "engine/kernels/SeriesKernels.h"

namespace qlx::engine::kernels {

extern const Kernels kAvx2Kernels;
const Kernels kAvx2Kernels = {"avx2",    hornRays, drumRays,   reducedRays, restHorn,    restDrum,
                              fixedPair, pairTaps, pairSeries, chainSeries, limitedChain};

} // namespace qlx::engine::kernels
