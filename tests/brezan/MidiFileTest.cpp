// SPDX-License-Identifier: ISC
#include "brezan/plugin/MidiFile.h"

#include <gmock/gmock.h>

#include <random>
#include <sstream>

namespace qlx::test {
using namespace tools;
namespace {

using Bytes = std::vector<std::uint8_t>;

Bytes file(std::uint8_t format, std::uint8_t divisionHigh, std::uint8_t divisionLow,
           const std::vector<Bytes>& tracks) {
  Bytes all{'M', 'T', 'h', 'd', 0, 0, 0, 6, 0, format, 0};
  all.insert(all.end(), {static_cast<std::uint8_t>(tracks.size()), divisionHigh, divisionLow});
  for (const Bytes& track : tracks) {
    all.insert(all.end(), {'M', 'T', 'r', 'k', 0, 0, 0, static_cast<std::uint8_t>(track.size())});
    all.insert(all.end(), track.begin(), track.end());
  }
  return all;
}

struct ReadCase {
  const char* what;
  Bytes bytes;
  std::vector<TimedMidi> expected;
};

const std::vector<ReadCase>& readCases() {
  static const std::vector<ReadCase> cases{
      {"120 beats a minute where no tempo is named",
       file(0, 0, 96, {{96, 0xB0, 64, 127, 0, 0xFF, 0x2F, 0}}),
       {{0.5, {0xB0, 64, 127}}}},
      {"tempo change half-way, running status",
       file(0, 0, 96,
            {{48, 0xB0, 1, 10, 48, 0xFF, 0x51, 3, 0x0F, 0x42, 0x40, 96, 0xB0, 1, 20, 96, 1, 30}}),
       {{0.25, {0xB0, 1, 10}}, {1.5, {0xB0, 1, 20}}, {2.5, {0xB0, 1, 30}}}},
      {"system exclusive and texts are passed over, one-byte messages keep their length",
       file(0, 0, 96, {{0, 0xF0, 2, 1, 0xF7, 0, 0xFF, 1, 2, 'h', 'i', 0, 0xC3, 7, 0, 0x93, 60, 1}}),
       {{0.0, {0xC3, 7, 0}}, {0.0, {0x93, 60, 1}}}},
      {"a tempo track governs the others",
       file(1, 0, 96, {{0, 0xFF, 0x51, 3, 0x0F, 0x42, 0x40}, {96, 0xB0, 64, 1}, {48, 0xB1, 64, 2}}),
       {{0.5, {0xB1, 64, 2}}, {1.0, {0xB0, 64, 1}}}},
      {"ticks of film frames: 25 a second, 40 in each",
       file(0, 0xE7, 40, {{0x87, 0x68, 0xB0, 64, 127}}),
       {{1.0, {0xB0, 64, 127}}}},
  };
  return cases;
}

std::vector<TimedMidi> pedalMoves() {
  return {
      {0.0, {0xB0, 64, 0}}, {0.125, {0xC2, 5, 0}}, {3.5, {0xB0, 64, 127}}, {4000.0, {0xBF, 1, 64}}};
}

std::string written(const std::vector<TimedMidi>& messages) {
  std::ostringstream out;
  writeMidi(out, messages);
  return out.str();
}

void expectSame(const std::vector<TimedMidi>& got, const std::vector<TimedMidi>& expected) {
  ASSERT_EQ(got.size(), expected.size());
  for (std::size_t i = 0; i < got.size(); ++i) {
    EXPECT_NEAR(got[i].seconds, expected[i].seconds, 1e-9) << "message " << i;
    EXPECT_EQ(got[i].bytes, expected[i].bytes) << "message " << i;
  }
}

} // namespace

TEST(MidiFile, ReadsTimesAndMessages) {
  for (const ReadCase& c : readCases()) {
    SCOPED_TRACE(c.what);
    expectSame(parseMidi(c.bytes), c.expected);
  }
}

TEST(MidiFile, ReadsBackWhatItWrites) {
  const std::string bytes = written(pedalMoves());
  expectSame(parseMidi(Bytes(bytes.begin(), bytes.end())), pedalMoves());
}

TEST(MidiFile, RefusesEveryTruncation) {
  const std::string bytes = written(pedalMoves());
  for (std::size_t length = 15; length < bytes.size(); ++length) {
    // A vector of its own: reading past the end is seen by the address sanitizer.
    const Bytes cut(bytes.begin(), bytes.begin() + static_cast<std::ptrdiff_t>(length));
    EXPECT_THROW(parseMidi(cut), std::runtime_error) << length << " bytes";
  }
}

TEST(MidiFile, RefusesWhatIsNoMidiFile) {
  const std::pair<const char*, Bytes> cases[] = {
      {"this is none", {}},
      {"this is none", Bytes(40, 'x')},
      {"format 2", file(2, 0, 96, {})},
      {"division is 0", file(0, 0, 0, {{0, 0xB0, 64, 1}})},
      {"division is 0", file(0, 0xE7, 0, {{0, 0xB0, 64, 1}})},
      {"data without a message", file(0, 0, 96, {{0, 64, 1}})},
      {"cut off", file(0, 0, 96, {{0, 0xB0, 64, 0x90}})},
      {"more than four bytes", file(0, 0, 96, {{0xFF, 0xFF, 0xFF, 0xFF, 0x7F, 0xB0, 64, 1}})},
  };
  for (const auto& [why, bytes] : cases)
    EXPECT_THAT([&bytes = bytes] { parseMidi(bytes); },
                testing::ThrowsMessage<std::runtime_error>(testing::HasSubstr(why)));
}

TEST(MidiFile, SurvivesDamagedFiles) {
  std::mt19937 random(7);
  for (int round = 0; round < 20000; ++round) {
    Bytes bytes = readCases()[random() % readCases().size()].bytes;
    for (int i = 0; i < 3; ++i)
      bytes[random() % bytes.size()] = static_cast<std::uint8_t>(random());
    try {
      for (const TimedMidi& message : parseMidi(bytes)) {
        ASSERT_GE(message.bytes[0], 0x80);
        ASSERT_GE(message.seconds, 0.0);
      }
    } catch (const std::runtime_error&) {
      // A clear refusal is as good.
    }
  }
}

} // namespace qlx::test
