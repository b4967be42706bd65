// SPDX-License-Identifier: ISC
#include "resources/NoiseRecordings.h"

#include "resources/PackedRecording.h"

#include <array>
#include <cstdint>
#include <numeric>
#include <stdexcept>
#include <vector>

namespace qlx::resources {

namespace {

/// In the order of Recordings.S: horn slow at two microphones, fast; drum slow, fast; start/stop.
constexpr std::array kLengths = {engine::kHornSlowLength + engine::kRecordingGuard,
                                 engine::kHornSlowLength + engine::kRecordingGuard,
                                 engine::kHornFastLength + engine::kRecordingGuard,
                                 engine::kDrumSlowLength + engine::kRecordingGuard,
                                 engine::kDrumFastLength + engine::kRecordingGuard,
                                 engine::kStartStopLength + 1};

} // namespace

extern "C" {
// Defined in Recordings.S.
extern const std::uint32_t qlxRecordingPlaces[kLengths.size() + 1];
extern const std::byte qlxRecordings[];
}

namespace {

class UnpackedRecordings {
 public:
  UnpackedRecordings()
      : m_samples(std::accumulate(kLengths.begin(), kLengths.end(), std::size_t{0})) {
    std::span<float> room(m_samples);
    for (std::size_t i = 0; i < kLengths.size(); ++i) {
      const std::span packed(qlxRecordings + qlxRecordingPlaces[i],
                             qlxRecordings + qlxRecordingPlaces[i + 1]);
      const auto samples = room.first(kLengths[i]);
      room = room.subspan(samples.size());
      if (!unpackRecording(packed, samples)) throw std::logic_error("a recording is damaged");
      m_spans[i] = samples;
    }
  }

  engine::Recordings spans() const {
    return {{m_spans[0], m_spans[1]}, m_spans[2], m_spans[3], m_spans[4], m_spans[5]};
  }

 private:
  std::vector<float> m_samples;
  std::array<std::span<const float>, kLengths.size()> m_spans{};
};

} // namespace

engine::Recordings noiseRecordings() {
  static const UnpackedRecordings unpacked;
  return unpacked.spans();
}

} // namespace qlx::resources
