// SPDX-License-Identifier: ISC
#include "brezan/analysis/LeverMarks.h"
#include "brezan/analysis/Spectrogram.h"
#include "brezan/pictures/SoundPicture.h"
#include "tests/support/CommandRun.h"

#include <gtest/gtest.h>

#include <cmath>
#include <numbers>
#include <sstream>

namespace qlx::test {
using namespace tools;
namespace {

std::vector<double> sine(double frequency, double rate, double seconds, double level) {
  std::vector<double> wave(static_cast<std::size_t>(seconds * rate));
  for (std::size_t i = 0; i < wave.size(); ++i)
    wave[i] = level * std::sin(2.0 * std::numbers::pi * frequency * static_cast<double>(i) / rate);
  return wave;
}

} // namespace

TEST(Spectrogram, ReadsLevelAndPitch) {
  constexpr SpectrogramRange kRange{20, 300, 30.0, 14000.0};
  for (const double rate : {44100.0, 48000.0, 96000.0})
    for (const double hz : {80.0, 441.3, 1000.0, 3333.3, 9900.0}) {
      const Spectrogram s = spectrogram(sine(hz, rate, 1.0, 0.1), rate, kRange);
      int loudest = 0;
      for (int row = 0; row < kRange.rows; ++row)
        if (s.at(10, row) > s.at(10, loudest)) loudest = row;
      EXPECT_NEAR(static_cast<double>(s.at(10, loudest)), -20.0, 1.5) << hz << " at " << rate;
      const double row = kRange.rows * std::log(hz / 30.0) / std::log(14000.0 / 30.0);
      EXPECT_NEAR(loudest, row, hz < 100.0 ? 6.0 : 2.0) << hz << " at " << rate;
    }
}

TEST(Spectrogram, PlacesEventsInTime) {
  std::vector<double> sound(44100, 0.0);
  sound[22050] = 1.0;
  const Spectrogram s = spectrogram(sound, 44100.0, {100, 20, 100.0, 10000.0});
  for (int column = 0; column < 100; ++column) {
    const double away = std::abs(column + 0.5 - 50.0); // columns; the window reaches 4.6 of them
    if (away < 3.0 || away > 6.0) {
      EXPECT_EQ(s.at(column, 10) > -100.0F, away < 3.0) << column;
    }
  }
}

TEST(LeverMarks, FollowPedalWheelAndBrake) {
  const std::vector<TimedMidi> midi{{1.0, {0xB0, 64, 127}},
                                    {2.0, {0x90, 64, 127}},
                                    {3.0, {0xB0, 1, 64}},
                                    {5.0, {0xB0, 64, 0}},
                                    {9.0, {0xB0, 64, 127}}};
  std::istringstream in("4 Stop Stopped\n6 stop 1\n7 Stop Running\n8 Stop 1\n10 Lever Chorale\n"
                        "10.5 Drive 0.5\n");
  const auto marks = leverMarks(midi, readAutomation(in, "x"));
  const std::pair<double, LeverState> expected[] = {
      {0.0, LeverState::Slow},    {1.0, LeverState::Fast}, {3.0, LeverState::Moving},
      {4.0, LeverState::Stopped}, {5.0, LeverState::Slow}, // a lever move lets the brake go
      {6.0, LeverState::Stopped}, {7.0, LeverState::Slow}, {8.0, LeverState::Stopped},
      {9.0, LeverState::Fast},    {10.0, LeverState::Slow}};
  ASSERT_EQ(marks.size(), std::size(expected));
  for (std::size_t i = 0; i < marks.size(); ++i) {
    EXPECT_EQ(marks[i].seconds, expected[i].first) << i;
    EXPECT_EQ(marks[i].state, expected[i].second) << i;
  }
}

TEST(Picture, RefusesAnEmptySound) {
  const TemporaryFolder folder;
  EXPECT_THROW(drawPicture({"", {{}}, 44100.0, {}}, folder / "a.png"), std::runtime_error);
  EXPECT_EQ(folder.entries(), 0U);
}

} // namespace qlx::test
