// SPDX-License-Identifier: ISC
#pragma once

#include "engine/kernels/GlideKernels.h"

namespace qlx::engine::kernels {
namespace {

// Mixing over whole vectors: the buffers have room for them beyond n.

void mixSends(const MixSignals& m, const MixGains& g, double* sendLeft, double* sendRight, int n) {
  for (int j = 0; j < n; j += kWidth) {
    const Lanes shared = load(m.toHorns + j) + load(m.hornEcho + j);
    const Lanes hornGain = load(g.horn + j) * g.hornLevel;
    const Lanes horn1 = (load(m.horn1 + j) * 0.5 + shared) * hornGain;
    const Lanes horn2 = (load(m.horn2 + j) * 0.5 + shared) * hornGain * load(g.microphone2 + j);
    const Lanes drum = (load(m.toDrum + j) + load(m.drum + j)) * load(g.drum + j);
    // Each horn microphone hears mostly its own side of the motor's noise.
    const Lanes a = load(g.noiseA + j), b = load(g.noiseB + j), drumNoise = load(m.drumNoise + j);
    const Lanes noise1 = load(m.noise1 + j) * 0.5, noise2 = load(m.noise2 + j);
    const Lanes own1 = b * noise1 + a * noise2, own2 = b * noise2 + a * noise1;
    store(m.horn1 + j, horn1);
    store(m.horn2 + j, horn2);
    store(m.drum + j, drum);
    store(m.noise1 + j, own1);
    store(m.noise2 + j, own2);
    store(sendLeft + j, horn2 * load(g.pan2Left + j) + horn1 * load(g.pan1Left + j) +
                            drum * load(g.drumLeft + j) + (own1 + drumNoise) * g.noiseSend);
    store(sendRight + j, horn2 * load(g.pan2Right + j) + horn1 * load(g.pan1Right + j) +
                             drum * load(g.drumRight + j) + (own2 + drumNoise) * g.noiseSend);
  }
}

void mixRoom(const MixSignals& m, const MixGains& g, const double* left, const double* right,
             const double* levels, int n) {
  for (int j = 0; j < n; j += kWidth) {
    const Lanes hornGain = load(g.horn + j) * g.hornLevel, fromLeft = load(left + j);
    store(m.horn1 + j, load(m.horn1 + j) + (fromLeft * levels[0] + load(m.noise1 + j)) * hornGain);
    store(m.horn2 + j, load(m.horn2 + j) + (load(right + j) * levels[1] + load(m.noise2 + j)) *
                                               hornGain * load(g.microphone2 + j));
    store(m.drum + j,
          load(m.drum + j) + (fromLeft * levels[2] + load(m.drumNoise + j)) * load(g.drum + j));
  }
}

void mixOutput(const MixSignals& m, const MixGains& g, const MixFilters& f, double* left,
               double* right, int n) {
  constexpr double kMixGain = 0.50118723362; // -6 dB
  for (int j = 0; j < n; j += kWidth) {
    const Lanes highPass = load(f.hornShare + j), lowPass = load(f.drumShare + j);
    Lanes horn1 = load(m.horn1 + j), horn2 = load(m.horn2 + j), drum = load(m.drum + j);
    horn1 += highPass * (load(f.horn1 + j) - horn1);
    horn2 += highPass * (load(f.horn2 + j) - horn2);
    drum += lowPass * (load(f.drum + j) - drum);
    store(left + j, (horn2 * load(g.pan2Left + j) + horn1 * load(g.pan1Left + j) +
                     drum * load(g.drumLeft + j)) *
                        kMixGain);
    store(right + j, (horn2 * load(g.pan2Right + j) + horn1 * load(g.pan1Right + j) +
                      drum * load(g.drumRight + j)) *
                         kMixGain);
  }
}

} // namespace
} // namespace qlx::engine::kernels
