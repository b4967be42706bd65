// SPDX-License-Identifier: ISC
// The recordings inside the library, as the engine gets them.

#include "resources/NoiseRecordings.h"
#include "resources/PackedRecording.h"
#include "resources/recordings/Analysis.h"
#include "resources/recordings/RecordingFiles.h"
#include "resources/recordings/RecordingPacker.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <complex>
#include <cstdint>
#include <gtest/gtest.h>
#include <numbers>
#include <ostream>
#include <string>
#include <vector>

namespace qlx::test {
namespace {

using recordings::Signal;
using Samples = std::span<const float>;

std::array<Samples, 6> allRecordings() {
  resources::unpackNoiseRecordings();
  const engine::Recordings r = resources::noiseRecordings();
  return {r.hornSlow[0], r.hornSlow[1], r.hornFast, r.drumSlow, r.drumFast, r.startStop};
}

struct Loop {
  const char* name;
  std::size_t index; // in allRecordings
  int turns;
  double noiseFromHz; // where noise of moving air outweighs tones and wood
  double facing;      // place of the swell in the turn
  double sideLineDb;  // strongest other line of the envelope, against the one at a line a turn
};

void PrintTo(const Loop& loop, std::ostream* out) { *out << loop.name; }

constexpr std::array<Loop, 5> kLoops = {{{"HornSlow1", 0, 1, 300.0, 0.28, -9.0},
                                         {"HornSlow2", 1, 1, 300.0, 0.61, -9.0},
                                         {"HornFast", 2, 34, 300.0, 0.0, -10.0},
                                         {"DrumSlow", 3, 5, 150.0, 0.875, -6.0},
                                         {"DrumFast", 4, 88, 150.0, 0.75, -10.0}}};

class NoiseLoop : public testing::TestWithParam<Loop> {
 protected:
  NoiseLoop()
      : m_stored(allRecordings()[GetParam().index]),
        m_loop(m_stored.begin(), m_stored.end() - engine::kRecordingGuard) {}

  [[nodiscard]] double samplesPerTurn() const {
    return static_cast<double>(m_loop.size()) / GetParam().turns;
  }

  Samples m_stored;
  Signal m_loop;
};

INSTANTIATE_TEST_SUITE_P(All, NoiseLoop, testing::ValuesIn(kLoops),
                         [](const auto& loop) { return loop.param.name; });

TEST_P(NoiseLoop, GuardRepeatsTheBeginning) {
  const Samples guard = m_stored.last(engine::kRecordingGuard);
  EXPECT_TRUE(std::equal(guard.begin(), guard.end(), m_stored.begin()));
}

TEST_P(NoiseLoop, HasNoMeanAndRoomAbove) {
  const double rms = recordings::rmsOf(m_loop);
  EXPECT_LT(std::abs(recordings::meanOf(m_loop)), 1e-4 * rms);
  const auto [low, high] = std::minmax_element(m_loop.begin(), m_loop.end());
  EXPECT_LT(std::max(-*low, *high), 0.9);
  EXPECT_LT(std::max(-*low, *high), 20.0 * rms) << "a lone spike";
  EXPECT_GT(std::max(-*low, *high), 2.5 * rms) << "clipped noise";
}

TEST_P(NoiseLoop, SeamIsLikeAnyOtherPlace) {
  // A step or a kink at the seam is a jump of the second difference; in recordings with much treble
  // it takes the second difference of that to stand out. Both must be usual at the seam.
  const std::size_t n = m_loop.size();
  ASSERT_GT(n, 4U);
  Signal bends = m_loop;
  for (const char* difference : {"second", "fourth"}) {
    const Signal before = bends;
    for (std::size_t i = 0; i < n; ++i)
      bends[i] = before[(i + n - 1) % n] - 2.0 * before[i] + before[(i + 1) % n];
    Signal sizes = bends;
    for (double& size : sizes) size = std::abs(size);
    const double atSeam = std::max({sizes[n - 2], sizes[n - 1], sizes[0], sizes[1]});
    const auto rare = sizes.begin() + static_cast<std::ptrdiff_t>(n * 995 / 1000);
    std::nth_element(sizes.begin(), rare, sizes.end());
    EXPECT_LT(atSeam, *rare) << difference << " difference";
  }
}

TEST_P(NoiseLoop, SwellsOnceATurnWhereTheMouthFacesTheMicrophone) {
  const Loop& loop = GetParam();
  const Signal envelope = recordings::envelopeOf(m_loop, loop.noiseFromHz,
                                                 4.5 * recordings::kSampleRate / samplesPerTurn());
  const auto lines = recordings::periodsOfLoop(envelope);
  const auto turn = static_cast<std::size_t>(loop.turns);
  const double swell = std::abs(lines[turn]);
  EXPECT_GT(swell, 0.15 * std::abs(lines[0]));
  for (std::size_t k = 1; k <= 4 * turn; ++k) {
    if (k == turn) continue;
    EXPECT_LT(20.0 * std::log10(std::abs(lines[k]) / swell), loop.sideLineDb)
        << "line " << k << " of " << turn;
  }
  const double place = -std::arg(lines[turn]) / (2.0 * std::numbers::pi);
  const double late = place - loop.facing - std::floor(place - loop.facing + 0.5);
  EXPECT_LT(std::abs(late), 0.04);
}

TEST_P(NoiseLoop, NoiseNeverRepeats) {
  const double highHz = 2.0 * GetParam().noiseFromHz;
  const Signal noise = recordings::filtered(m_loop, recordings::Response::highPass, highHz, 0.7);
  const std::vector<double> likeness = recordings::autocorrelation(noise);
  const auto shortest = static_cast<std::ptrdiff_t>(0.005 * recordings::kSampleRate);
  const auto half = static_cast<std::ptrdiff_t>(likeness.size() / 2);
  const auto most = std::max_element(likeness.begin() + shortest, likeness.begin() + half);
  EXPECT_LT(*most, 0.1) << "after " << (most - likeness.begin()) << " samples";
}

TEST(NoiseRecordings, HornMicrophonesHearTheSameMachineFromTwoPlaces) {
  const Samples one = allRecordings()[0];
  const Samples two = allRecordings()[1];
  double both = 0.0;
  double first = 0.0;
  double second = 0.0;
  for (std::size_t i = 0; i < engine::kHornSlowLength; ++i) {
    both += static_cast<double>(one[i]) * static_cast<double>(two[i]);
    first += static_cast<double>(one[i]) * static_cast<double>(one[i]);
    second += static_cast<double>(two[i]) * static_cast<double>(two[i]);
  }
  const double likeness = both / std::sqrt(first * second);
  EXPECT_GT(likeness, 0.15);
  EXPECT_LT(likeness, 0.85);
}

TEST(NoiseRecordings, StartAndStopBeginAndEndInSilence) {
  const Samples sound = allRecordings()[5];
  const auto loudness = [](float a, float b) { return std::abs(a) < std::abs(b); };
  const float peak = std::abs(*std::max_element(sound.begin(), sound.end(), loudness));
  EXPECT_GT(peak, 0.5F);
  EXPECT_LT(peak, 1.0F);
  EXPECT_EQ(sound.front(), 0.0F);
  EXPECT_EQ(sound.back(), 0.0F);
  for (const Samples end : {sound.first(20), sound.last(20)}) {
    EXPECT_LT(std::abs(*std::max_element(end.begin(), end.end(), loudness)), 0.002F * peak);
  }
  const Signal whole(sound.begin(), sound.end());
  EXPECT_LT(std::abs(recordings::meanOf(whole)), 1e-4 * recordings::rmsOf(whole));
}

/// FNV-1a.
std::uint64_t checksum(Samples samples) {
  std::uint64_t sum = 0xcbf29ce484222325U;
  for (const std::byte byte : std::as_bytes(samples)) {
    sum = (sum ^ std::to_integer<std::uint64_t>(byte)) * 0x100000001b3U;
  }
  return sum;
}

TEST(NoiseRecordings, AreTheSameToTheBitOnEveryMachine) {
  // These numbers change only when somebody means the sound to change.
  constexpr std::array<std::uint64_t, 6> kChecksums = {0x95eba5d4d2e6bb83U, 0x060f0f8cefbedfc5U,
                                                       0x868f84ed73df56dfU, 0xc0403b81b19b0373U,
                                                       0x5985bb142b98dfb0U, 0xf58320ed50602dbbU};
  const std::vector<recordings::RecordingFile> files =
      recordings::recordingFiles(recordings::recordMachine());
  const std::array<Samples, 6> embedded = allRecordings();
  ASSERT_EQ(files.size(), embedded.size());
  for (std::size_t i = 0; i < files.size(); ++i) {
    std::vector<float> model;
    for (const std::int32_t steps : files[i].samples)
      model.push_back(static_cast<float>(steps) * resources::kSampleStep);
    EXPECT_EQ(checksum(model), kChecksums[i])
        << files[i].name << std::hex << " now 0x" << checksum(model);
    EXPECT_TRUE(std::ranges::equal(model, embedded[i]))
        << files[i].name << " in the library differs from the model's";
  }
}

TEST(PackedRecording, ReturnsEverySampleAndRefusesShortenedBytes) {
  constexpr std::int32_t kPeak = 1 << 20;
  std::vector<std::int32_t> steps(10000);
  const auto size = static_cast<std::int32_t>(steps.size());
  for (std::int32_t i = 0; i < size; ++i) {
    const std::int32_t silence = 0;
    const std::int32_t alternating = i % 2 == 0 ? kPeak : -kPeak;
    const std::int32_t lone = i % 1000 == 0 ? -kPeak : i % 3;
    const std::int32_t arbitrary =
        static_cast<std::int32_t>(static_cast<std::uint32_t>(i) * 2654435761U) / 2048;
    steps[static_cast<std::size_t>(i)] =
        std::array{silence, alternating, lone, arbitrary}[static_cast<std::size_t>(i * 4 / size)];
  }
  const std::string bytes = recordings::packRecording(steps);
  const auto packed = std::as_bytes(std::span(bytes));
  std::vector<float> samples(steps.size());
  ASSERT_TRUE(resources::unpackRecording(packed, samples));
  for (std::size_t i = 0; i < steps.size(); ++i)
    ASSERT_EQ(samples[i] / resources::kSampleStep, static_cast<float>(steps[i])) << i;
  for (std::size_t length = 0; length + resources::kPackedPadding < packed.size(); length += 97) {
    const std::vector<std::byte> shortened(packed.begin(),
                                           packed.begin() + static_cast<std::ptrdiff_t>(length));
    EXPECT_FALSE(resources::unpackRecording(shortened, samples)) << length;
  }
}

} // namespace
} // namespace qlx::test
