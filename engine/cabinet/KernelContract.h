// SPDX-License-Identifier: ISC
#pragma once

// What the stages and the kernels must agree in. Nothing else checks it: the kernels' buffers stand
// on the stack, and they read tables and lines without a look at their ends.

#include "engine/cabinet/Directivity.h"
#include "engine/cabinet/DrumModel.h"
#include "engine/cabinet/HornModel.h"
#include "engine/cabinet/ReducedModels.h"
#include "engine/signal/FilterDesigns.h"
#include "engine/signal/SubBlock.h"

#include <algorithm>

namespace qlx::engine {

// Samples: the kernels work on whole vectors, two of the widest at a time.
static_assert(kSubBlock == kernels::kLongestSubBlock);
static_assert(kSubBlock % 8 == 0);
static_assert(kHistorySize == kernels::kLineSize && DelayLine::kSize == kernels::kLineSize);
static_assert(AttenuationLaw::kSize - 1 == kernels::kLevelPieces);

// Lanes: whole vectors, four lanes in the widest.
static_assert(kernels::kHornLanes == 2 * HornMicrophone::kRayCount);
static_assert(kernels::kHornLanes % 4 == 0,
              "two rays fill a vector; a single new one takes a partner with a gain of 0");
static_assert(kernels::kDrumLanes >= DrumModel::kRayCount && kernels::kDrumLanes % 4 == 0);
static_assert(kernels::kReducedLanes % 4 == 0);
static_assert(Rays::kMax >= HornMicrophone::kRayCount && Rays::kMax >= DrumModel::kRayCount);

// Body sections: room for all, and no two with the same poles.
template <std::size_t N>
consteval bool allDiffer(const std::array<FilterDesign, N>& designs) {
  for (std::size_t i = 0; i < N; ++i)
    for (std::size_t k = 0; k < i; ++k)
      if (designs[i].hz == designs[k].hz && designs[i].q == designs[k].q &&
          designs[i].db == designs[k].db)
        return false;
  return true;
}
static_assert(kHornBody.size() <= kernels::kBodySections, "raise kBodySections by four");
static_assert(kReducedHornBody.size() <= kernels::kReducedBodySections);
static_assert(allDiffer(kHornBody) && allDiffer(kReducedHornBody));
static_assert(kernels::kBodySections % 4 == 0, "eight lanes at a time, two a section");
static_assert(kernels::kReducedBodySections % 4 == 0);

// Ranges of the kernels' approximations against the tables that feed them.
consteval double lowest(const auto& table) { return *std::min_element(table.begin(), table.end()); }
consteval double highest(const auto& table) {
  return *std::max_element(table.begin(), table.end());
}
static_assert(lowest(kHornPeakHz) >= kernels::kPeakWarpCentreHz - kernels::kPeakWarpReachHz);
static_assert(highest(kHornPeakHz) <= kernels::kPeakWarpCentreHz + kernels::kPeakWarpReachHz);
// Sine and cosine serve angles up to half a turn: half the lowest rate of a section.
static_assert(sectionRate(kLowestSectionRate) == kLowestSectionRate);
static_assert(highest(kHornPeakHz) <= kHighestShare * kLowestSectionRate);
static_assert(highest(kDrumLowPassHz) <= kHighestShare * kLowestSectionRate);
static_assert(kHornShelfHz <= kHighestShare * kLowestSectionRate);
static_assert(lowest(kHornPeakQ) > 0.0 && lowest(kDrumLowPassQ) > 0.0 && kHornShelfQ > 0.0);
// Powers of two serve exponents of -1000 .. 1000: gains in decibels (a twelfth of an octave each),
// and poles of low-passes, whose exponent is below 8 for 1 Hz at a rate of 1 Hz.
static_assert(lowest(kHornPeakDb) >= -200.0 && highest(kHornPeakDb) <= 200.0);
static_assert(lowest(kHornShelfDb) >= -200.0 && highest(kHornShelfDb) <= 200.0);
static_assert(8.0 * highest(kReducedHornHz) < 1000.0 * kLowestModelRate);
static_assert(8.0 * highest(kReducedDrumHz) < 1000.0 * kLowestModelRate);

} // namespace qlx::engine
