// SPDX-License-Identifier: ISC
#include "engine/cabinet/DrumModel.h"
#include "engine/cabinet/HornMicrophone.h"
#include "engine/rotor/RotorHistory.h"
#include "engine/settings/SettingMailbox.h"
#include "engine/settings/SettingTable.h"
#include "tests/engine/EngineFixture.h"
#include "tests/support/CountingAllocator.h"

#include <gmock/gmock.h>
#include <xmmintrin.h>

#include <algorithm>
#include <atomic>
#include <cmath>
#include <limits>
#include <random>
#include <span>

namespace qlx::test {
namespace {

using test::EngineFixture;
using test::StereoSignal;

StereoSignal noise(int n, unsigned seed = 1) {
  std::mt19937 random(seed);
  std::uniform_real_distribution<double> uniform(-0.5, 0.5);
  StereoSignal s{std::vector<double>(static_cast<std::size_t>(n)), {}};
  for (double& x : s.left) x = uniform(random);
  s.right = s.left;
  for (double& x : s.right) x *= 0.8;
  return s;
}

double peak(const std::vector<double>& x) {
  double p = 0;
  for (const double v : x) p = std::max(p, std::abs(v));
  return p;
}

bool finite(const StereoSignal& s) {
  const auto ok = [](double x) { return std::isfinite(x) && std::fpclassify(x) != FP_SUBNORMAL; };
  return std::all_of(s.left.begin(), s.left.end(), ok) &&
         std::all_of(s.right.begin(), s.right.end(), ok);
}

void expectNear(const StereoSignal& actual, const StereoSignal& expected, double tolerance) {
  EXPECT_THAT(actual.left, testing::Pointwise(testing::DoubleNear(tolerance), expected.left));
  EXPECT_THAT(actual.right, testing::Pointwise(testing::DoubleNear(tolerance), expected.right));
}

TEST(RotaryEngine, BlockSizesDoNotMatterWhileNothingIsPending) {
  const auto render = [](int block) {
    EngineFixture f;
    f.settle();
    f.engine.set(Setting::Lever, 0.0);
    return f.render(noise(40000), block);
  };
  const auto expected = render(512);
  // What is left is rounding, which the body's narrow low resonances make a little larger. It also
  // decides where a sample on the joint of two pieces of a table belongs: they meet within some
  // 1e-9, which rings for a dozen samples.
  constexpr double kRounding = 2e-10, kAtJoints = 5e-9;
  constexpr long kSamplesAtJoints = 24;
  for (const int block : {1, 7, 64, 1000, 16384}) {
    SCOPED_TRACE(block);
    const auto actual = render(block);
    expectNear(actual, expected, kAtJoints);
    for (const auto& [of, to] :
         {std::pair{&actual.left, &expected.left}, {&actual.right, &expected.right}}) {
      long off = 0;
      for (std::size_t i = 0; i < to->size(); ++i) off += std::abs((*of)[i] - (*to)[i]) > kRounding;
      EXPECT_LE(off, kSamplesAtJoints);
    }
  }
}

TEST(RotaryEngine, SharedAndCrossedBuffersGiveTheSame) {
  EngineFixture apart, inPlace, crossed;
  for (EngineFixture* f : {&apart, &inPlace, &crossed}) f->settle();
  const auto in = noise(10000);
  const auto expected = apart.render(in, 100);
  for (std::size_t done = 0; done < in.left.size(); done += 100) {
    std::vector<double> a(in.left.begin() + long(done), in.left.begin() + long(done) + 100);
    std::vector<double> b(in.right.begin() + long(done), in.right.begin() + long(done) + 100);
    auto a2 = a, b2 = b;
    inPlace.engine.process(a.data(), b.data(), a.data(), b.data(), 100);
    crossed.engine.process(a2.data(), b2.data(), b2.data(), a2.data(), 100);
    ASSERT_EQ(a, b2);
    ASSERT_EQ(b, a2);
    ASSERT_TRUE(std::equal(a.begin(), a.end(), expected.left.begin() + long(done)));
    ASSERT_TRUE(std::equal(b.begin(), b.end(), expected.right.begin() + long(done)));
  }
}

TEST(RotaryEngine, SingleAndDoublePrecisionAgreeAndMonoOutputIsTheLeft) {
  EngineFixture wide, narrow, mono;
  for (EngineFixture* f : {&wide, &narrow, &mono}) f->settle();
  const auto in = noise(20000);
  const std::vector<float> l(in.left.begin(), in.left.end()), r(in.right.begin(), in.right.end());
  const StereoSignal rounded{{l.begin(), l.end()}, {r.begin(), r.end()}};
  std::vector<float> ol(l.size()), orr(l.size()), om(l.size());
  narrow.engine.process(l.data(), r.data(), ol.data(), orr.data(), static_cast<int>(l.size()));
  mono.engine.process(l.data(), r.data(), om.data(), nullptr, static_cast<int>(l.size()));
  expectNear({{ol.begin(), ol.end()}, {orr.begin(), orr.end()}}, wide.render(rounded, 128), 1e-6);
  EXPECT_EQ(om, ol);
}

TEST(RotaryEngine, BypassEndsExactlyAtTheInput) {
  EngineFixture f;
  f.settle();
  f.engine.set(Setting::Bypass, 1.0);
  f.render(noise(44100), 256);
  const auto in = noise(5000, 2);
  const auto out = f.render(in, 256);
  EXPECT_EQ(out.left, in.left);
  EXPECT_EQ(out.right, in.right);
}

TEST(RotaryEngine, GeometryChangeFadesThroughDryAndBack) {
  EngineFixture f;
  f.settle();
  f.engine.set(Setting::HornMic1Distance, 1.4); // asks for its work itself
  // The dry path is the input at half level behind a gentle low-pass: on a low tone it tells itself
  // by its level.
  const double hz = 100;
  const auto out = f.render(8820, 64, hz);
  double largestStep = 0;
  for (std::size_t i = 1; i < out.left.size(); ++i)
    largestStep = std::max(largestStep, std::abs(out.left[i] - out.left[i - 1]));
  EXPECT_LT(largestStep, 0.05) << "no click";
  const auto dry = out.left.begin() + 3175; // 69 ms of fade, then at least four blocks dry
  EXPECT_LT(peak({dry, dry + 100}), 0.3 * 0.708 * 0.5 * 1.05);
}

TEST(RotaryEngine, FullResetAppliesThePlacementOnceAndRequestsMadeMeanwhileAreKept) {
  EngineFixture f;
  f.settle();
  const int before = f.placement.calls, leversBefore = f.placement.leversForgotten;
  f.engine.request(kPendingFullReset);
  f.settle();
  EXPECT_EQ(f.placement.calls, before + 1);
  EXPECT_EQ(f.placement.leversForgotten, leversBefore + 1);
  f.engine.request(kPendingRoomTaps);
  f.settle();
  EXPECT_EQ(f.placement.calls, before + 2) << "room work applies the placement too";
}

TEST(RotaryEngine, RatesOutOfRangeKeepTheConfiguration) {
  EngineFixture f;
  for (const double bad : {0.0, -1.0, std::numeric_limits<double>::quiet_NaN(),
                           std::numeric_limits<double>::infinity()})
    f.engine.setHostRate(bad);
  f.engine.request(kPendingFullReset);
  f.settle();
  EXPECT_EQ(f.engine.hostRate(), 44100.0);
  f.engine.setHostRate(8000.0);
  f.engine.request(kPendingFullReset);
  f.settle();
  EXPECT_EQ(f.engine.hostRate(), 22050.0);
  f.setRate(384000.0, CpuMode::Brilliant);
  EXPECT_TRUE(finite(f.render(50000, 512, 440)));
}

TEST(RotaryEngine, ANewRateIsTakenWhileSwitchedOn) {
  EngineFixture f, again;
  for (EngineFixture* each : {&f, &again}) {
    each->engine.switchOn();
    each->settle();
  }
  f.engine.setHostRate(88200.0);
  again.engine.switchOff();
  again.engine.setHostRate(88200.0);
  again.engine.switchOn();
  const auto in = noise(20000);
  const auto out = f.render(in, 256), expected = again.render(in, 256);
  EXPECT_EQ(f.engine.hostRate(), 88200.0);
  EXPECT_EQ(out.left, expected.left) << "as if switched off and on";
  f.engine.setHostRate(88200.0);
  again.engine.request(0);
  EXPECT_EQ(f.render(in, 256).left, again.render(in, 256).left) << "no mute where nothing is new";
}

/// Another thread writes a value and asks for its work between the audio thread's look at the
/// settings and its look at the work.
TEST(SettingMailbox, WorkBringsTheSettingsWrittenBeforeIt) {
  SettingMailbox mailbox;
  double distance = 0.0;
  int writes = 0;
  const auto take = [&](Setting setting, double v) {
    EXPECT_EQ(setting, Setting::HornMic1Distance);
    distance = v;
    ++writes;
  };
  mailbox.write(Setting::HornMic1Distance, 1.0);
  mailbox.request(kPendingHornMic1);
  mailbox.collect(take);
  mailbox.write(Setting::HornMic1Distance, 2.0);
  mailbox.request(kPendingHornMic1 | kPendingDrum);
  EXPECT_EQ(mailbox.takeWork(kPendingHornMic1 | kPendingHornMic2, take), kPendingHornMic1);
  EXPECT_EQ(distance, 2.0);
  EXPECT_TRUE(mailbox.isRequested(kPendingDrum));
  EXPECT_FALSE(mailbox.isRequested(kPendingHornMic1));
  mailbox.write(Setting::HornMic1Distance, 3.0);
  EXPECT_EQ(mailbox.takeWork(kPendingHornMic1, take), 0U);
  EXPECT_EQ(writes, 2) << "no work, no look";
}

TEST(RotaryEngine, RandomSettingsAtEveryBlockStayFinite) {
  std::mt19937 random(5);
  EngineFixture f;
  const auto in = noise(64);
  StereoSignal silence{std::vector<double>(64), std::vector<double>(64)};
  for (int block = 0; block < 20000; ++block) {
    const auto setting = static_cast<Setting>(random() % kSettingCount);
    const double magnitude = std::pow(10.0, static_cast<double>(random() % 12) - 6.0);
    if (setting != Setting::SpeakersBypassed)
      f.engine.set(setting, (random() % 2 != 0 ? 1 : -1) * magnitude);
    if (random() % 50 == 0) f.engine.request(1U << (random() % 11));
    const auto out = f.render(block % 400 < 200 ? in : silence, 64);
    ASSERT_TRUE(finite(out)) << "block " << block << " setting " << int(setting) << " "
                             << magnitude;
  }
}

TEST(RotaryEngine, SilenceFollowsProgrammeWithoutSubnormals) {
  for (const CpuMode mode : {CpuMode::LowCpu, CpuMode::Brilliant}) {
    EngineFixture f;
    f.setRate(44100, mode);
    f.engine.set(Setting::RoomReturnGain, 0.03);
    f.render(noise(44100), 512);
    EXPECT_TRUE(finite(f.render(10 * 44100, 512, 0.0)));
    // The processor itself counts: it notes every operation on a subnormal number.
    int blocksWithSubnormals = 0;
    double loudest = 0.0;
    for (int block = 0; block < 100; ++block) {
      _MM_SET_EXCEPTION_STATE(0);
      const auto out = f.render(512, 512, 0.0);
      if ((_MM_GET_EXCEPTION_STATE() & _MM_EXCEPT_DENORM) != 0) ++blocksWithSubnormals;
      loudest = std::max(loudest, peak(out.left));
    }
    EXPECT_EQ(blocksWithSubnormals, 0);
    EXPECT_LT(loudest, 1e-9);
  }
}

TEST(RotaryEngine, GarbageInputIsOverWithItsBlock) {
  EngineFixture f, clean;
  f.settle();
  clean.settle();
  auto bad = noise(512);
  bad.left[3] = std::numeric_limits<double>::quiet_NaN();
  bad.right[5] = std::numeric_limits<double>::infinity();
  bad.left[100] = 1e30;
  EXPECT_TRUE(finite(f.render(bad, 512)));
  clean.render(noise(512), 512);
  f.render(88200, 512, 0.0);
  clean.render(88200, 512, 0.0);
  expectNear(f.render(44100, 512, 440), clean.render(44100, 512, 440), 1e-6);
}

TEST(RotaryEngine, LoudInputPassesUpToItsLimit) {
  EngineFixture f;
  f.engine.set(Setting::Bypass, 1.0);
  f.settle(1.0);
  const StereoSignal in{{200, -999, 1001, -1e30}, {-200, 999, -1001, 1e30}};
  const auto out = f.render(in, 4);
  EXPECT_EQ(out.left, (std::vector<double>{200, -999, 1000, -1000}));
  EXPECT_EQ(out.right, (std::vector<double>{-200, 999, -1000, 1000}));
}

/// A switching sound that is no number, some samples after the motors are braked, brings the engine
/// down in the middle of a block.
TEST(RotaryEngine, LastSafetyNetGivesTheInputAndStartsAnew) {
  test::PlainRecordings broken;
  broken.startStop()[60] = std::numeric_limits<float>::infinity();
  EngineFixture f(broken.spans()), fresh;
  for (EngineFixture* each : {&f, &fresh}) {
    each->settle();
    each->engine.set(Setting::HornSwitchNoiseVolume, 1.0);
  }
  f.engine.set(Setting::Stop, 1.0);
  auto in = noise(200);
  const auto out = f.render(in, 200);
  EXPECT_EQ(out.left, in.left) << "the whole block, also what came before";
  EXPECT_EQ(out.right, in.right);
  // From here on it does what an undamaged engine does after a full reset.
  fresh.engine.set(Setting::Stop, 1.0);
  fresh.render(200, 200, 0.0);
  fresh.engine.request(kPendingFullReset);
  for (EngineFixture* each : {&f, &fresh}) {
    each->engine.set(Setting::HornSwitchNoiseVolume, 0.0);
    each->settle();
  }
  in = noise(30000);
  expectNear(f.render(in, 256), fresh.render(in, 256), 1e-9);
}

TEST(RotaryEngine, StopAndReleaseBetweenTwoBlocksStillSounds) {
  test::PlainRecordings loud;
  for (std::size_t i = 0; i < kStartStopLength; ++i)
    loud.startStop()[i] = i % 40 < 20 ? 0.5F : -0.5F;
  EngineFixture f(loud.spans());
  f.engine.set(Setting::HornSwitchNoiseVolume, 1.0);
  f.settle();
  EXPECT_LT(peak(f.render(4096, 512, 0.0).left), 1e-9);
  f.engine.set(Setting::Stop, 1.0);
  f.engine.set(Setting::Stop, 0.0);
  EXPECT_GT(peak(f.render(4096, 512, 0.0).left), 1e-4);
}

/// At the limits of the settings and the highest engine rate; the kernels would read on where the
/// lines begin anew.
TEST(Cabinet, FarthestImageIsWithinReachOfTheLines) {
  double farthest = 0.0; // metres
  const auto measure = [&](std::span<const ImageSource> images, const MicrophonePosition& from) {
    Rays rays;
    rays.rebuild(images, from, 0.2);
    for (std::size_t i = 0; i < images.size(); ++i) farthest = std::max(farthest, rays.distance[i]);
  };
  const double hornMetres = settingRow(Setting::HornMic1Distance).highest;
  const double drumMetres = settingRow(Setting::DrumMicDistance).highest;
  for (int step = -50; step <= 50; ++step) {
    for (const CabinetWalls& walls : {CabinetWalls(false), CabinetWalls(true)}) {
      const double turns = step / 100.0;
      measure(hornImages({turns, hornMetres}, walls), {turns, hornMetres});
      measure(drumImages({turns, drumMetres}, walls), {turns, drumMetres});
    }
  }
  farthest += settingRow(Setting::HornFmRadius).highest;
  EXPECT_LT(farthest * 50000.0 * kInverseSpeedOfSound + kSubBlock + 4, kHistorySize);
}

/// Recordings that are unpacked while an engine is running already.
TEST(RotaryEngine, MotorsAreSilentUntilTheirRecordingsAreFilled) {
  const test::PlainRecordings loud(0.5F);
  std::atomic<bool> filled{false};
  Recordings recordings = loud.spans();
  recordings.filled = &filled;
  EngineFixture f(recordings), late(recordings);
  for (EngineFixture* each : {&f, &late}) {
    for (const Setting s : {Setting::HornSlowNoiseVolume, Setting::HornFastNoiseVolume,
                            Setting::DrumSlowNoiseVolume, Setting::DrumFastNoiseVolume,
                            Setting::HornSwitchNoiseVolume, Setting::DrumSwitchNoiseVolume})
      each->engine.set(s, 1.0);
    each->settle();
  }
  for (const double stop : {1.0, 0.0}) { // the switch's sound is there, too
    f.engine.set(Setting::Stop, stop);
    EXPECT_LT(peak(f.render(4096, 512, 0.0).left), 1e-9);
  }
  filled = true;
  late.engine.set(Setting::Stop, 1.0);
  for (EngineFixture* each : {&f, &late}) {
    EXPECT_GT(peak(each->render(4096, 512, 0.0).left), 1e-4);
  }
}

TEST(RotaryEngine, ProcessingAllocatesNothing) {
  EngineFixture f;
  f.settle();
  std::vector<float> l(512, 0.1F), r(512, 0.2F);
  const test::AllocationCount allocations;
  for (int block = 0; block < 400; ++block) {
    f.engine.set(Setting::Lever, block % 2);
    f.engine.set(Setting::HornHighPassHz, 100 + block);
    if (block % 40 == 0) f.engine.request(1U << (block / 40));
    if (block == 390) f.engine.switchOff();
    if (block == 393) f.engine.switchOn();
    f.engine.process(l.data(), r.data(), l.data(), r.data(), 512);
  }
  EXPECT_EQ(allocations.value(), 0);
}

} // namespace
} // namespace qlx::test
