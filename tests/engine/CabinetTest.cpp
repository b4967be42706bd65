// SPDX-License-Identifier: ISC
#include "engine/cabinet/CrossTalk.h"
#include "engine/cabinet/HornMicrophone.h"
#include "engine/cabinet/Room.h"
#include "tests/engine/EngineFixture.h"

#include <gtest/gtest.h>

#include <cmath>
#include <numbers>

namespace qlx::test {
namespace {

constexpr double kRate = 44100.0;

std::size_t firstAbove(const std::vector<double>& x, double level) {
  for (std::size_t i = 0; i < x.size(); ++i)
    if (std::abs(x[i]) > level) return i;
  return x.size();
}

TEST(Room, TapsArriveByPathAndFallLinearlyInDecibels) {
  constexpr double kPaths[] = {3.1, 4.3, 5.7, 6.3, 7.8, 8.3, 8.7, 9.3, 9.6, 10.5};
  constexpr double kCutoffs[] = {0.93, 0.91, 0.8, 0.7, 0.7, 0.65, 0.6, 0.55, 0.5, 0.35};
  RoomSettings settings;
  settings.size = 4.0;
  settings.virtualSize = 1.2;
  settings.leftRightDelay = 0.15;
  settings.mainCutoffHz = 20000.0 / 0.93;
  Room room(kernels::chooseKernels());
  room.computeTaps(settings, kRate);
  std::vector<double> left;
  SubBlock gain;
  gain.fill(1.0);
  for (int i = 0; i < 10000; i += kSubBlock) {
    SubBlock send{}, l, r;
    if (i == 0) send[0] = 1.0;
    room.process(send, send, gain, kSubBlock, l, r);
    left.insert(left.end(), l.begin(), l.end());
  }
  const double longest = 4.0 * 1.2 * 14.9 + 0.15;
  for (std::size_t tap = 0; tap < std::size(kPaths); ++tap) {
    const double samples = 4.0 * kPaths[tap] * kRate / 340.29;
    const double pole =
        std::exp(-2 * std::numbers::pi *
                 std::clamp(kCutoffs[tap] * settings.mainCutoffHz, 20.0, 20000.0) / kRate);
    // Sum of the tap's impulse response over a short sub-block: the level times what the low-pass
    // has let through.
    double sum = 0;
    const auto first = static_cast<std::size_t>(samples);
    for (std::size_t i = first - 1; i < first + 40; ++i) sum += left[i];
    const double expected =
        std::pow(10, -20 / longest * 4.0 * kPaths[tap] / 20) * (1 - std::pow(pole, 40));
    EXPECT_NEAR(sum, expected, 0.02 * expected) << tap;
    EXPECT_LT(std::abs(left[first - 3]), 0.01 * expected) << "silence before tap " << tap;
  }
}

TEST(CrossTalk, PathsHaveTheirDelaysAndLaws) {
  CabinetSettings cabinet;
  cabinet.amRadius = 0.2;
  Rays rays;
  rays.rebuild(hornImages({}, CabinetWalls(false)), {}, cabinet.amRadius);
  AttenuationLaw law;
  law.rebuild(cabinet, rays);
  CrossTalk cross;
  cross.setSampleRate(22050);
  SmoothedSettings settings;
  cross.computeTargets({{0.0, 0.35}, 0.2, {0.25, 1.0}, 0.2, law, law}, settings);
  const double k = 22050 / 340.29;
  // In circles of the rotor: the drum microphone at (0, -1.75), the horn's at (5, 0).
  const auto span = [](double x, double y) { return std::sqrt(x * x + y * y + 0.77 * 0.77); };
  EXPECT_NEAR(settings.target(Smoothed::PortToDrumDelay), 1.75 * k, 1e-3);
  EXPECT_NEAR(settings.target(Smoothed::HornToDrumDelay), (span(0, 1.95) - 0.77) * k, 1e-3);
  EXPECT_NEAR(settings.target(Smoothed::HornEchoDelay), (span(5, 0.2) - 0.77) * k, 1e-3);
  EXPECT_NEAR(settings.target(Smoothed::DrumToHornDelay), (span(5, 0) - 0.77) * k, 1e-3);
  EXPECT_NEAR(settings.target(Smoothed::PortToHornDelay), span(5, 0) * k, 1e-3);
  EXPECT_EQ(settings.target(Smoothed::PortToHornLevel), settings.target(Smoothed::DrumToHornLevel));
}

TEST(CrossTalk, ReadsAtTheSmoothedDelay) {
  CrossTalk cross;
  cross.setSampleRate(kRate);
  SmoothedSettings settings;
  settings.setSampleRate(kRate);
  settings.setTarget(Smoothed::HornEchoDelay, 50.0);
  settings.setTarget(Smoothed::HornEchoLevel, 1.0);
  settings.snap();
  std::vector<double> echo;
  for (int i = 0; i < 256; i += kSubBlock) {
    SubBlock impulse{}, silence{};
    if (i == 0) impulse[0] = 1.0;
    CrossTalk::Output out;
    cross.process(silence, impulse, silence, settings.advance(kSubBlock), kSubBlock, out);
    echo.insert(echo.end(), out.hornEcho.begin(), out.hornEcho.end());
  }
  EXPECT_EQ(firstAbove(echo, 1e-9), 50U);
  const double pole = std::exp(-2 * std::numbers::pi * 4500 / kRate);
  EXPECT_NEAR(echo[50], 4 * (1 - pole) * 0.1575, 1e-9);
  EXPECT_NEAR(echo[51], echo[50] * pole, 1e-9);
}

} // namespace
} // namespace qlx::test
