// SPDX-License-Identifier: ISC
#include "resources/NoiseRecordings.h"

#include "resources/PackedRecording.h"

#include <array>
#include <atomic>
#include <cstdint>
#include <memory>
#include <numeric>
#include <stdexcept>

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

constexpr std::size_t kTotalLength =
    std::accumulate(kLengths.begin(), kLengths.end(), std::size_t{0});

class RecordingMemory {
 public:
  RecordingMemory() {
    std::span rest(m_samples.get(), kTotalLength);
    for (std::size_t i = 0; i < kLengths.size(); ++i) {
      m_spans[i] = rest.first(kLengths[i]);
      rest = rest.subspan(kLengths[i]);
    }
  }

  engine::Recordings recordings() const {
    return {{m_spans[0], m_spans[1]}, m_spans[2], m_spans[3], m_spans[4], m_spans[5], &m_filled};
  }

  void fill() {
    for (std::size_t i = 0; i < kLengths.size(); ++i) {
      const std::span packed(qlxRecordings + qlxRecordingPlaces[i],
                             qlxRecordings + qlxRecordingPlaces[i + 1]);
      if (!unpackRecording(packed, m_spans[i])) throw std::logic_error("a recording is damaged");
    }
    m_filled.store(true, std::memory_order_release);
  }

 private:
  /// Not written before it is filled: the system takes no page for it until then.
  std::unique_ptr<float[]> m_samples = std::make_unique_for_overwrite<float[]>(kTotalLength);
  std::array<std::span<float>, kLengths.size()> m_spans{};
  std::atomic<bool> m_filled{false};
};

RecordingMemory& memory() {
  static RecordingMemory shared;
  return shared;
}

} // namespace

engine::Recordings noiseRecordings() { return memory().recordings(); }

void unpackNoiseRecordings() { [[maybe_unused]] static const bool once = (memory().fill(), true); }

} // namespace qlx::resources
