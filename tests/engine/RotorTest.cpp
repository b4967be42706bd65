// SPDX-License-Identifier: ISC
#include "engine/rotor/RotorHistory.h"
#include "engine/rotor/RotorMotion.h"
#include "engine/rotor/RotorReadout.h"
#include "tests/engine/EngineFixture.h"

#include <gtest/gtest.h>

#include <cmath>
#include <numbers>
#include <thread>

namespace qlx::test {
namespace {

using Event = RotorMotion::Event;
using Direction = RotorMotion::Direction;

double turnsBetween(double a, double b) { return std::abs(std::remainder(a - b, 1.0)); }

RotorMotion motor(Direction direction, double rate = 22050) {
  RotorMotion m(direction);
  m.setSlowSpeed(0.7);
  m.setFastSpeed(6.8);
  m.setAccelTime(1.0);
  m.setDecelTime(0.5);
  m.setLever(1.0);
  m.setSampleRate(rate);
  return m;
}

TEST(RotorMotion, LeverAndStopSelectSpeedAndReportEvents) {
  struct Step {
    bool stop;
    double value;
    double hz;
    RotorMotion::SpeedState state;
    Event event;
  };
  using State = RotorMotion::SpeedState;
  const Step steps[] = {{false, 1.0, 0.7, State::Slow, Event::None},
                        {false, 0.5, 3.75, State::Between, Event::None},
                        {false, 0.0, 6.8, State::Fast, Event::None},
                        {true, 1.0, 0.0, State::Stopped, Event::Stop},
                        {true, 0.6, 0.0, State::Stopped, Event::None},
                        {false, 1.0, 0.0, State::Stopped, Event::None},
                        {true, 0.4, 0.7, State::Slow, Event::Start},
                        {true, 0.0, 0.7, State::Slow, Event::None}};
  RotorMotion m(Direction::Drum);
  m.setSlowSpeed(0.7);
  m.setFastSpeed(6.8);
  EXPECT_EQ(m.speedState(), State::Unset);
  for (const Step& s : steps) {
    EXPECT_EQ(s.stop ? m.setStop(s.value) : m.setLever(s.value), s.event);
    EXPECT_EQ(m.speedState(), s.state);
    EXPECT_NEAR(m.targetSpeedHz(), s.hz, 1e-12);
  }
}

TEST(RotorMotion, RateChangeKeepsHertzAndSnaps) {
  RotorMotion m = motor(Direction::Drum, 22050);
  m.setLever(0.0);
  m.setSampleRate(48000);
  EXPECT_NEAR(m.currentSpeedHz(), 6.8, 1e-12);
}

// --- Read-out for displays ---

using Clock = RotorReadout::Clock;

Clock::time_point at(double seconds) {
  return Clock::time_point(
      std::chrono::duration_cast<Clock::duration>(std::chrono::duration<double>(seconds)));
}

TEST(RotorReadout, PicturesMoveByEqualStepsWhateverTheBlock) {
  for (const double block : {64 / 44100.0, 512 / 44100.0, 2048 / 44100.0, 0.25}) {
    RotorReadout readout;
    const double hornSpeed = -6.77, drumSpeed = 0.93;
    const auto phaseAt = [](double speed, double t) { return speed * t - std::floor(speed * t); };
    int stored = 0;
    for (int idle = 30; idle < 330; ++idle) {
      const double now = idle / 60.0;
      for (; stored * block <= now; ++stored) {
        const double end = stored * block;
        readout.store({phaseAt(hornSpeed, end), hornSpeed}, {phaseAt(drumSpeed, end), drumSpeed},
                      at(end), block);
      }
      EXPECT_LT(turnsBetween(readout.hornPhase(at(now)), hornSpeed * now), 1e-6) << block;
      EXPECT_LT(turnsBetween(readout.drumPhase(at(now)), drumSpeed * now), 1e-6) << block;
    }
    // The audio has stopped.
    const double end = (stored - 1) * block;
    const double last = drumSpeed * (end + block);
    EXPECT_LT(turnsBetween(readout.drumPhase(at(end + 100.0)), last), 1e-6) << block;
    EXPECT_LT(turnsBetween(readout.drumPhase(at(end - 100.0)), drumSpeed * end), 1e-6) << block;
  }
}

TEST(RotorReadout, ReaderNeverMixesTwoBlocks) {
  RotorReadout readout;
  // Every entry says by itself that the phase is 0.25 at ten seconds.
  const auto store = [&readout](int i) {
    const double time = i % 1000 / 128.0, speed = i % 37 - 18;
    const double phase = 0.25 - speed * (10 - time);
    const RotorReadout::Rotor rotor{phase - std::floor(phase), speed};
    readout.store(rotor, rotor, at(time), 20.0 + i % 3);
  };
  store(0);
  std::atomic<bool> done{false};
  std::thread audio([&] {
    for (int i = 0; !done; ++i) store(i);
  });
  double worst = 0.0;
  for (int i = 0; i < 100000; ++i)
    worst = std::max({worst, turnsBetween(readout.hornPhase(at(10)), 0.25),
                      turnsBetween(readout.drumPhase(at(10)), 0.25)});
  done = true;
  audio.join();
  EXPECT_LT(worst, 1e-9);
}

TEST(RotorReadout, EngineStoresWhatLeadsToTheNextBlock) {
  for (const double lever : {1.0, 0.0}) {
    for (const int block : {512, 2048}) {
      test::EngineFixture f;
      f.engine.set(Setting::Lever, lever);
      f.engine.request(kPendingFullReset);
      f.settle(0.5);
      const RotaryEngine& engine = f.engine;
      const Clock::time_point before{}, later = Clock::now() + std::chrono::hours(1);
      f.render(block, block, 0);
      for (int i = 0; i < 20; ++i) {
        const double horn = engine.hornPhase(later), drum = engine.drumPhase(later);
        const auto start = Clock::now();
        f.render(block, block, 0);
        const auto end = Clock::now() + std::chrono::duration_cast<Clock::duration>(
                                            std::chrono::duration<double>((block + 1) / f.rate));
        EXPECT_LT(turnsBetween(engine.hornPhase(before), horn), 1e-9);
        EXPECT_LT(turnsBetween(engine.drumPhase(before), drum), 1e-9);
        EXPECT_EQ(engine.hornPhase(start), engine.hornPhase(before)) << "stored after the block";
        EXPECT_EQ(engine.hornPhase(end), engine.hornPhase(later));
      }
    }
  }
}

} // namespace
} // namespace qlx::test
