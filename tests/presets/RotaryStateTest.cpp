// SPDX-License-Identifier: ISC
// Presets and states of the effect that hosts load.
#include "tests/support/EffectFixture.h"
#include "tests/support/MidiMessage.h"

#include <atomic>
#include <cmath>
#include <numbers>
#include <span>
#include <stdexcept>
#include <thread>

namespace qlx::test {
namespace {

constexpr std::int32_t kFrames = 64;
constexpr double kRate = 44100.0;
constexpr double kToneHz = 110.0;
constexpr double kLevel = 0.25;

using Values = std::vector<std::pair<std::int32_t, float>>;

/// Plays a steady tone without motor noise, block after block, and measures how far each sample
/// lies from the straight continuation of the two before: about 6e-5 in the tone itself, and the
/// height of the step where one is.
class Player {
 public:
  explicit Player(RotaryEffect& effect) : m_effect(effect) {}

  void playBlock() {
    for (auto& sample : m_left) {
      const auto t = static_cast<double>(m_frame++) / kRate;
      sample = static_cast<float>(kLevel * std::sin(2.0 * std::numbers::pi * kToneHz * t));
    }
    m_right = m_left;
    float* io[] = {m_left.data(), m_right.data()};
    m_effect.processReplacing(io, io, kFrames);
    watch(m_left, 0);
    watch(m_right, 1);
    m_blocks.fetch_add(1);
  }
  void playSeconds(double seconds) {
    for (auto left = static_cast<int>(seconds * kRate / kFrames); left > 0; --left) playBlock();
  }

  int blocks() const { return m_blocks.load(); }
  double greatestStep() const { return m_greatestStep; }
  void forgetSteps() { m_greatestStep = 0.0; }

 private:
  void watch(std::span<const float> samples, std::size_t channel) {
    auto& [before, last] = m_past[channel];
    for (const float sample : samples) {
      const auto now = static_cast<double>(sample);
      const double step = std::abs(now - 2.0 * last + before);
      m_greatestStep = std::isfinite(step) ? std::max(m_greatestStep, step) : 1e9;
      before = last;
      last = now;
    }
  }

  RotaryEffect& m_effect;
  std::array<float, kFrames> m_left{};
  std::array<float, kFrames> m_right{};
  std::array<std::pair<double, double>, 2> m_past{};
  std::int64_t m_frame = 0;
  std::atomic<int> m_blocks{0};
  double m_greatestStep = 0.0;
};

class RotaryState : public EffectFixture {
 protected:
  static std::vector<char> chunkOf(RotaryEffect& effect) {
    void* data = nullptr;
    const std::int32_t size = effect.getChunk(&data, false);
    return {static_cast<char*>(data), static_cast<char*>(data) + size};
  }
  static int setChunk(RotaryEffect& effect, const std::vector<char>& chunk) {
    return effect.setChunk(chunk.data(), static_cast<std::int32_t>(chunk.size()), false);
  }
  /// A state in which preset `number`, with `values`, is current.
  static std::vector<char> state(std::int32_t number, const Values& values) {
    RotaryEffect effect(nullptr);
    effect.selectPreset(number);
    effect.setParameter(kMech, 0.0F);
    for (const auto& [index, value] : values) effect.setParameter(index, value);
    return chunkOf(effect);
  }
};

TEST_F(RotaryState, GivenWhileAudioRunsDoesNotClickAndArrivesWhole) {
  const std::vector<std::vector<char>> states{
      state(0, {}),
      state(3, {{kSetup, 0.6F}, {kHDistance, 1.0F}, {kSize, 0.75F}}),
      state(
          12,
          {{kLever, 1.0F}, {kHDistance, 0.0F}, {kDDistance, 0.0F}, {kDrive, 0.7F}, {kStop, 1.0F}}),
  };
  RotaryEffect live(nullptr);
  ASSERT_EQ(setChunk(live, states[0]), 0);
  live.resume();
  Player player(live);
  player.playSeconds(1.0);
  player.forgetSteps();

  std::atomic<bool> done{false};
  std::thread audio([&] {
    while (!done) player.playBlock();
  });
  // Also before the fade that the last one asked for is over.
  for (int i = 1; i <= 60; ++i) {
    ASSERT_EQ(setChunk(live, states[static_cast<std::size_t>(i) % states.size()]), 0);
    const int until = player.blocks() + i * 7 % 60;
    while (player.blocks() < until) std::this_thread::yield();
  }
  const auto& last = states[2];
  for (int i = 0; i < 2; ++i) ASSERT_EQ(setChunk(live, last), 0); // some hosts give it twice
  done = true;
  audio.join();
  // The mute comes down and lifts with its last 3 % at once, of dry against wet: a step of 0.0066.
  // Work that begins before the mute is down steps by 0.012.
  EXPECT_LT(player.greatestStep(), 0.009);

  player.playSeconds(1.0); // whatever was asked for is done
  RotaryEffect fresh(nullptr);
  ASSERT_EQ(setChunk(fresh, last), 0);
  fresh.resume();
  Player(fresh).playSeconds(1.0);
  EXPECT_EQ(chunkOf(live), last);
  // The clip's own parameter tells only who wrote it last; distance and clip go together.
  for (std::int32_t i = 0; i < kHornAmplitudeClip; ++i) {
    EXPECT_EQ(live.getParameter(i), fresh.getParameter(i)) << i;
  }
}

TEST_F(RotaryState, SharedParametersStayWhateverPresetIsChosen) {
  const Values shared{{kBypass, 1.0F}, {kCPUmode, 1.0F}, {kLever, 0.75F},
                      {kSpeed, 0.5F},  {kStop, 1.0F},    {kMIDIchl, 0.25F}};
  for (const auto& [index, value] : shared) effect->setParameter(index, value);
  for (const std::int32_t preset : {3, 16, 31, 31, 0}) {
    effect->selectPreset(preset);
    for (const auto& [index, value] : shared) {
      EXPECT_EQ(effect->getParameter(index), value) << preset << ": " << index;
      for (const auto& slot : effect->getPresetSlots()) {
        EXPECT_EQ(slot.values[static_cast<std::size_t>(index)], value) << preset << ": " << index;
      }
    }
  }
}

TEST_F(RotaryState, PedalAndKnobCountWhileTheHostIsToldOfARecall) {
  MidiMessage wheel(0xB0, 1, 127);
  effect->setParameter(kLever, 0.25F);
  effect->setParameter(kStop, 1.0F);
  whileUpdating() = [&] {
    EXPECT_EQ(effect->getParameter(kStop), 1.0F);
    std::thread([&] {
      EXPECT_FALSE(effect->isPresetLoading());
      effect->processEvents(&wheel.list);
      effect->setParameter(kDrive, 0.625F);
    }).join();
    EXPECT_TRUE(effect->isPresetLoading());
  };
  effect->selectPreset(3);
  RotaryEffect next(nullptr);
  ASSERT_EQ(setChunk(next, chunkOf(*effect)), 0);
  const Values expected{{kLever, 1.0F}, {kStop, 0.0F}, {kDrive, 0.625F}};
  for (const auto& [index, value] : expected) {
    EXPECT_EQ(effect->getParameter(index), value) << index;
    EXPECT_EQ(next.getParameter(index), value) << index;
  }
}

TEST_F(RotaryState, LeverOutOfTheHostsAnswerReleasesTheBrake) {
  effect->setParameter(kStop, 1.0F);
  whileUpdating() = [&] {
    // A recall within a recall: neither its end nor its own lever changes what the outer one does.
    effect->selectPreset(5);
    EXPECT_TRUE(effect->isPresetLoading());
    EXPECT_EQ(effect->getParameter(kStop), 1.0F);
    effect->setParameter(kLever, 0.75F);
  };
  effect->selectPreset(3);
  EXPECT_FALSE(effect->isPresetLoading());
  EXPECT_EQ(effect->getParameter(kStop), 0.0F);
}

TEST_F(RotaryState, ARecallThatIsThrownOutOfIsOver) {
  whileUpdating() = [] { throw std::runtime_error("host"); };
  EXPECT_THROW(effect->selectPreset(3), std::runtime_error);
  effect->setParameter(kDrive, 0.625F);
  EXPECT_EQ(effect->getPresetSlot(3).values[kDrive], 0.625F);
}

} // namespace
} // namespace qlx::test
