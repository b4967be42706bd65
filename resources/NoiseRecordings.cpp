// SPDX-License-Identifier: ISC
#include "resources/NoiseRecordings.h"

extern "C" {
// Defined in Recordings.S.
extern const float qlxHornSlow1[];
extern const float qlxHornSlow2[];
extern const float qlxHornFast[];
extern const float qlxDrumSlow[];
extern const float qlxDrumFast[];
extern const float qlxStartStop[];
}

namespace qlx::resources {

namespace {

constexpr std::size_t kSmallestPage = 4096;

std::span<const float> resident(const float* samples, std::size_t count) {
  for (std::size_t i = 0; i < count; i += kSmallestPage / sizeof(float)) {
    static_cast<void>(*static_cast<const volatile float*>(samples + i));
  }
  return {samples, count};
}

} // namespace

engine::Recordings noiseRecordings() {
  using engine::kRecordingGuard;
  return {{resident(qlxHornSlow1, engine::kHornSlowLength + kRecordingGuard),
           resident(qlxHornSlow2, engine::kHornSlowLength + kRecordingGuard)},
          resident(qlxHornFast, engine::kHornFastLength + kRecordingGuard),
          resident(qlxDrumSlow, engine::kDrumSlowLength + kRecordingGuard),
          resident(qlxDrumFast, engine::kDrumFastLength + kRecordingGuard),
          resident(qlxStartStop, engine::kStartStopLength + 1)};
}

} // namespace qlx::resources
