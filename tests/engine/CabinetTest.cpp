// SPDX-License-Identifier: ISC
#include "engine/cabinet/CabinetGeometry.h"
#include "engine/cabinet/CrossTalk.h"
#include "engine/cabinet/DrumModel.h"
#include "engine/cabinet/HornModel.h"
#include "engine/cabinet/Room.h"
#include "tests/engine/EngineFixture.h"

#include <gtest/gtest.h>

#include <cmath>
#include <numbers>

namespace qlx::test {
namespace {

constexpr double kRate = 44100.0;

TEST(Geometry, RegionsBySideWallsAndSide) {
  // The real walls keep every microphone in the front region; narrower ones let it see the side
  // walls' images.
  CabinetWalls real(false), narrow(false);
  narrow.sideA = narrow.sideB = 0.05;
  // The direction counts by the sine of the bearing alone: straight ahead it is at its largest.
  for (double angle = -0.5; angle <= 0.5; angle += 0.01) {
    EXPECT_EQ(microphoneRegion({angle, 1.0}, real), MicrophoneRegion::Front) << angle;
  }
  EXPECT_EQ(microphoneRegion({-0.1, 1.0}, narrow), MicrophoneRegion::SideB);
  EXPECT_EQ(microphoneRegion({0.1, 1.0}, narrow), MicrophoneRegion::SideA);
  EXPECT_EQ(microphoneRegion({-0.4, 1.0}, narrow), MicrophoneRegion::SideA) << "exchanged behind";
  EXPECT_EQ(microphoneRegion({0.4, 1.0}, narrow), MicrophoneRegion::SideB);
}

TEST(Geometry, ImagesMirrorBehindTheCabinet) {
  const CabinetWalls walls(false);
  const auto front = hornImages({0.1, 1.0}, walls), behind = hornImages({0.4, 1.0}, walls);
  for (std::size_t r = 0; r < front.size(); ++r) {
    EXPECT_NEAR(front[r].x, -behind[r].x, 1e-12) << r;
    EXPECT_NEAR(front[r].y, -behind[r].y, 1e-12) << r;
  }
  EXPECT_NEAR(front[2].x, 0.86, 1e-12);
  EXPECT_NEAR(front[2].y, 0.47, 1e-12);
  EXPECT_NEAR(hornImages({0.1, 1.0}, CabinetWalls(true))[2].x, 0.48, 1e-12) << "walls exchanged";
}

TEST(Geometry, RaysRunFromImageToMicrophone) {
  const MicrophonePosition microphone{0.0, 1.0};
  Rays rays;
  const auto images = hornImages(microphone, CabinetWalls(false));
  rays.rebuild(images, microphone, 0.2);
  EXPECT_NEAR(rays.distance[0], 1.0, 1e-12);
  EXPECT_NEAR(rays.distance[1], 1.47, 1e-12) << "back wall";
  EXPECT_NEAR(rays.distance[7], std::hypot(0.48, 1.0), 1e-12) << "left wall";
  EXPECT_NEAR(rays.halfWidth[0], std::atan(0.2) / (2 * std::numbers::pi), 1e-12);
  EXPECT_NEAR(std::abs(rays.angle[0]), 0.125, 1e-12) << "arc tangent of the full distance";
}

TEST(AttenuationLaw, FallsToFlatBeyondItsDistance) {
  CabinetSettings cabinet;
  cabinet.amRadius = 0.2;
  cabinet.attenuationExponent = 1.0;
  cabinet.attenuationDistance = 1.5;
  Rays rays;
  rays.rebuild(hornImages({0.0, 1.0}, CabinetWalls(false)), {0.0, 1.0}, cabinet.amRadius);
  AttenuationLaw law;
  law.rebuild(cabinet, rays);
  double previous = law.level(0.3, 0.2, 0.0);
  for (double d = 0.31; d < 1.5; d += 0.01) {
    EXPECT_LT(law.level(d, 0.2, 0.0), previous) << d;
    previous = law.level(d, 0.2, 0.0);
  }
  EXPECT_NEAR(law.level(3.0, 0.2, 0.0), law.level(4.0, 0.2, 0.0), 1e-12) << "flat";
  EXPECT_NEAR(law.level(1.0, 0.2, 0.5), law.level(1.1, 0.2, 0.0), 1e-12)
      << "displacement adds to distance";
}

/// A horn or drum model alone, fed with a signal; the settings reduce it to what a test listens to.
class ModelBench {
 public:
  ModelBench()
      : horn(hornSettings, recordings.spans(), kernels::chooseKernels()),
        drum(drumSettings, recordings.spans(), kernels::chooseKernels()) {
    hornSettings.cabinet.amRadius = hornSettings.cabinet.fmRadius = 0.18;
    hornSettings.rayGain.fill(0.0);
    drumSettings.rayGain.fill(0.0);
  }

  void prepare(double hz) {
    for (RotorHistory* history : {&hornHistory, &drumHistory}) {
      history->motion.setSlowSpeed(hz);
      history->motion.setLever(1.0);
      history->setSampleRate(kRate, 1);
    }
    horn.setSampleRate(kRate);
    horn.clear();
    horn.resetFilters();
    horn.rebuildGeometry(0);
    horn.rebuildGeometry(1);
    drum.setSampleRate(kRate);
    drum.clear();
    drum.resetFilters();
    drum.rebuildGeometry();
  }

  template <class Signal>
  std::vector<double> runHorn(int n, Signal signal) {
    return run(hornHistory, n, signal, [&](SubBlock& out) {
      SubBlock second;
      horn.process(hornHistory, line, kSubBlock, out, second);
    });
  }

  template <class Signal>
  std::vector<double> runDrum(int n, Signal signal) {
    return run(drumHistory, n, signal,
               [&](SubBlock& out) { drum.process(drumHistory, line, kSubBlock, out); });
  }

  test::PlainRecordings recordings;
  HornSettings hornSettings;
  DrumSettings drumSettings;
  RotorHistory hornHistory{RotorMotion::Direction::Horn}, drumHistory{RotorMotion::Direction::Drum};
  HornModel horn;
  DrumModel drum;

 private:
  template <class Signal, class Process>
  std::vector<double> run(RotorHistory& history, int n, Signal signal, Process process) {
    std::vector<double> result;
    line.clear();
    for (int i = 0; i < n; i += kSubBlock) {
      history.advance(kSubBlock);
      for (int j = 0; j < kSubBlock; ++j) line.write(history.writeIndex(j), signal(i + j));
      SubBlock out;
      process(out);
      result.insert(result.end(), out.begin(), out.end());
      history.finish(kSubBlock);
    }
    return result;
  }

  DelayLine line;
};

double tone(double hz, int i) { return std::sin(2 * std::numbers::pi * hz * i / kRate); }

std::size_t firstAbove(const std::vector<double>& x, double level) {
  for (std::size_t i = 0; i < x.size(); ++i)
    if (std::abs(x[i]) > level) return i;
  return x.size();
}

TEST(HornModel, StaticRayArrivesAfterItsPathAndNothingElseDoes) {
  ModelBench bench;
  bench.hornSettings.staticGain = 1.0;
  bench.hornSettings.cabinet.reflectionCoeff = 0.0;
  bench.hornSettings.zAxisGain = 1.0;
  bench.horn.microphone(0).setDistance(1.0);
  bench.prepare(0.0);
  const auto out = bench.runHorn(4096, [](int i) { return i == 0 ? 1.0 : 0.0; });
  const double expected = kRate / 340.29;
  EXPECT_NEAR(static_cast<double>(firstAbove(out, 1e-6)), expected, 2.0);
  const auto none = [&] {
    bench.hornSettings.staticGain = 0.0;
    bench.prepare(0.0);
    return bench.runHorn(4096, [](int i) { return i == 0 ? 1.0 : 0.0; });
  }();
  EXPECT_EQ(firstAbove(none, 1e-9), none.size());
}

TEST(HornModel, AmplitudeFloorHoldsEveryRayUp) {
  ModelBench bench;
  bench.hornSettings.staticGain = 1.0;
  bench.horn.microphone(0).setDistance(1.65);
  bench.prepare(0.0);
  const double free = bench.horn.microphone(0).staticLevel();
  bench.hornSettings.ampClip = 2 * free;
  EXPECT_EQ(bench.horn.microphone(0).staticLevel(), 2 * free);
  bench.hornSettings.ampClip = 0.5 * free;
  EXPECT_EQ(bench.horn.microphone(0).staticLevel(), free);
}

/// Instantaneous frequency deviation (largest, relative) of a modulated tone, from its smoothed
/// zero crossings.
double largestDeviation(const std::vector<double>& x, double hz) {
  std::vector<double> crossings;
  for (std::size_t i = x.size() / 4; i + 1 < x.size(); ++i)
    if (x[i] < 0 && x[i + 1] >= 0)
      crossings.push_back(static_cast<double>(i) + x[i] / (x[i] - x[i + 1]));
  double worst = 0;
  constexpr std::size_t kSpan = 8;
  for (std::size_t i = kSpan; i < crossings.size(); ++i) {
    const double f = kRate * kSpan / (crossings[i] - crossings[i - kSpan]);
    worst = std::max(worst, std::abs(f / hz - 1));
  }
  return worst;
}

TEST(HornModel, DirectRayHasTheDopplerOfRadiusAndSpeed) {
  // Away from the warped arc the path changes by fmRadius x sin(phase), the far half of the turn
  // taking half a period.
  for (const double speed : {2.0, 6.77}) {
    ModelBench bench;
    bench.hornSettings.rayGain[0] = 1.0;
    bench.hornSettings.cabinet.fmRadius = 0.15;
    bench.horn.microphone(0).setDistance(1.0);
    bench.prepare(speed);
    const auto out =
        bench.runHorn(static_cast<int>(3 * kRate / speed), [](int i) { return tone(3000, i); });
    const double halfWidth = std::atan(0.18) / (2 * std::numbers::pi);
    const double nearPhaseRate =
        std::numbers::pi / (2 * halfWidth) * speed; // radians a second, the quicker arc
    const double expected = 0.15 * nearPhaseRate / 340.29;
    EXPECT_NEAR(largestDeviation(out, 3000), expected, 0.12 * expected) << speed;
  }
}

TEST(HornModel, StoppedRotorIsTimeInvariant) {
  ModelBench bench;
  bench.hornSettings.rayGain.fill(0.5);
  bench.hornSettings.cabinet.reflectionCoeff = 0.8;
  bench.horn.microphone(0).setDistance(1.0);
  bench.prepare(0.0);
  const auto out = bench.runHorn(44100, [](int i) { return tone(1000, i); });
  for (std::size_t i = 22050; i + 441 < out.size(); ++i)
    ASSERT_NEAR(out[i], out[i + 441], 1e-9) << "periodic like its input";
}

TEST(DrumModel, SplitterDividesStaticFromRotating) {
  struct Case {
    double splitterHz, toneHz;
    bool rotates;
  };
  for (const Case& c : {Case{50, 400, true}, Case{500, 40, false}}) {
    const auto powerWith = [&](double rayGain, double lowStaticGain) {
      ModelBench bench;
      bench.drumSettings.rayGain = {rayGain, 0, 0, 0};
      bench.drumSettings.lowStaticGain = lowStaticGain;
      bench.drumSettings.splitterHz = c.splitterHz;
      bench.drum.setMicDistance(0.65);
      bench.prepare(6.0);
      const auto out = bench.runDrum(44100, [&](int i) { return tone(c.toneHz, i); });
      double power = 0;
      for (std::size_t i = 10000; i < out.size(); ++i) power += out[i] * out[i];
      return power;
    };
    // A ray of no gain to speak of leaves the static band alone.
    EXPECT_EQ(powerWith(1.0, 0.0) > powerWith(1e-9, 1e9), c.rotates) << c.splitterHz;
  }
}

TEST(DrumModel, SideWallsAreSilentInFront) {
  ModelBench bench;
  bench.drumSettings.rayGain = {0, 1, 0, 0}; // back and side walls
  bench.drumSettings.cabinet.reflectionCoeff = 1.0;
  bench.drum.setMicDistance(0.35);
  bench.prepare(0.0);
  const auto out = bench.runDrum(2048, [](int i) { return i == 0 ? 1.0 : 0.0; });
  // The back wall's path is 0.82 m give or take the scoop's circle; wall A's, 0.59 m, would come
  // before it.
  const double nearest = (0.82 - 0.7 * 0.18) * kRate / 340.29,
               farthest = (0.82 + 0.18) * kRate / 340.29;
  const auto first = static_cast<double>(firstAbove(out, 1e-9));
  EXPECT_GT(first, nearest - 2);
  EXPECT_LT(first, farthest + 2);
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
