// SPDX-License-Identifier: ISC
#include "brezan/pictures/Picture.h"
#include "brezan/analysis/LeverMarks.h"
#include "brezan/analysis/Spectrogram.h"
#include "brezan/bench/Growth.h"
#include "brezan/pictures/Canvas.h"
#include "tests/support/CommandRun.h"

#include <cairo/cairo.h>
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

class PngImage {
 public:
  explicit PngImage(const std::filesystem::path& file)
      : m_surface(cairo_image_surface_create_from_png(file.c_str()), cairo_surface_destroy) {
    if (cairo_surface_status(m_surface.get()) != CAIRO_STATUS_SUCCESS)
      throw std::runtime_error("no picture");
  }
  int width() const { return cairo_image_surface_get_width(m_surface.get()); }
  int height() const { return cairo_image_surface_get_height(m_surface.get()); }
  std::uint32_t pixel(int x, int y) const {
    return *reinterpret_cast<const std::uint32_t*>(
               cairo_image_surface_get_data(m_surface.get()) +
               y * cairo_image_surface_get_stride(m_surface.get()) + 4 * x) &
           0xFFFFFF;
  }

 private:
  std::unique_ptr<cairo_surface_t, decltype(&cairo_surface_destroy)> m_surface;
};

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

TEST(Picture, ShowsLeverMovesAndToneWhereTheyBelong) {
  const TemporaryFolder folder;
  PictureSound sound{"title",
                     {sine(1000.0, 44100.0, 2.0, 0.5), std::vector<double>(88200, 0.0)},
                     44100.0,
                     {{0.0, LeverState::Slow, "slow"}, {1.0, LeverState::Fast, "fast"}}};
  drawPicture(sound, folder / "a.png");
  EXPECT_EQ(folder.entries(), 1U);
  const PngImage image(folder / "a.png");
  const auto pixel = [&image](int x, int y) { return image.pixel(x, y); };
  ASSERT_GT(image.width(), 1000);
  ASSERT_GT(image.height(), 600);
  // The lever's band changes its colour half-way, and only there.
  constexpr int kBandY = 100;
  const int middle = 90 + 1430 / 2;
  EXPECT_EQ(pixel(200, kBandY), pixel(middle - 3, kBandY));
  EXPECT_EQ(pixel(middle + 3, kBandY), pixel(1500, kBandY));
  EXPECT_NE(pixel(middle - 3, kBandY), pixel(middle + 3, kBandY));
  // The brightest pixel of a column of the spectrogram is the tone's.
  int brightest = 360;
  for (int y = 360; y < 900; ++y)
    if ((pixel(500, y) >> 8 & 0xFF) > (pixel(500, brightest) >> 8 & 0xFF)) brightest = y;
  const double place = (912.0 - brightest) / 560.0;
  EXPECT_NEAR(30.0 * std::pow(14000.0 / 30.0, place), 1000.0, 40.0);
}

TEST(Picture, RefusesAnEmptySound) {
  const TemporaryFolder folder;
  EXPECT_THROW(drawPicture({"", {{}}, 44100.0, {}}, folder / "a.png"), std::runtime_error);
  EXPECT_EQ(folder.entries(), 0U);
}

TEST(Picture, ShowsGrowthInPlace) {
  const TemporaryFolder folder;
  Growth growth;
  for (const double cost : {100.0, 200.0, 400.0, 200.0}) {
    GrowthPoint point;
    point.instances = 1 << growth.instances.size();
    point.nsPerSample = cost;
    growth.instances.push_back(point);
    point.what.brilliant = false;
    growth.blocks.push_back(point);
    point.load = cost / 1000.0;
    growth.rates.push_back(point);
  }
  drawGrowth(growth, folder / "g.png");
  const PngImage image(folder / "g.png");
  const auto isDrawn = [&image](int x, int y, const Colour& c) {
    const std::uint32_t pixel = image.pixel(x, y);
    return std::abs(int(pixel >> 16) - c.red * 255) < 3 &&
           std::abs(int(pixel >> 8 & 0xFF) - c.green * 255) < 3;
  };
  // Four places across 420 pixels; from the ground, at 476, the highest reaches 380/1.25 pixels.
  const struct {
    int left;
    const Colour& colour;
  } diagrams[] = {{90, kBlue}, {630, kOrange}, {1170, kOrange}};
  for (const auto& [left, colour] : diagrams)
    for (int place = 0; place < 4; ++place) {
      const int x = left + 420 * place / 4 + 420 / 8;
      const int height = 304 * (place == 0 ? 1 : place == 2 ? 4 : 2) / 4;
      EXPECT_TRUE(isDrawn(x, 476 - height, colour)) << left << ' ' << place;
      EXPECT_FALSE(isDrawn(x, 476 - height + 20, colour)) << left << ' ' << place;
    }
}

} // namespace qlx::test
