// SPDX-License-Identifier: ISC
#include "live/EffectPlayer.h"

#include "live/MidiMap.h"
#include "tests/live/RecordingEffect.h"
#include "tests/support/CountingAllocator.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <thread>

namespace qlx::test {

using live::EffectPlayer;
using live::MidiMessage;
using live::Notice;
using ::testing::ElementsAre;
using namespace std::string_literals;

namespace {

class EffectPlayerTest : public ::testing::Test {
 protected:
  std::string play(std::span<const MidiMessage> midi, int frames = 64) {
    player.process({{m_in.data(), m_in.data()}, {m_left.data(), m_right.data()}, frames, midi});
    return effect.taken();
  }
  std::string play(std::initializer_list<MidiMessage> midi) { return play(std::span(midi)); }

  RecordingEffect effect;
  EffectPlayer player{effect.record(), 100};

 private:
  std::array<float, 256> m_in{0.5F, -0.75F};
  std::array<float, 256> m_left{};
  std::array<float, 256> m_right{};
};

} // namespace

TEST_F(EffectPlayerTest, BlocksAreCutWhereMessagesFall) {
  EXPECT_EQ(play({}), "64 ");
  EXPECT_EQ(play({}, 250), "100 100 50 ");
  EXPECT_EQ(play({{0, {0x90, 60, 1}}, {0, {0x80, 60, 0}}, {10, {0xB0, 1, 7}}}),
            "(90 60 1) (80 60 0) 10 (b0 1 7) 54 ");
  // Out of order or of the block: as soon as may be.
  EXPECT_EQ(play({{20, {0xB0, 1, 1}}, {5, {0xB0, 1, 2}}, {900, {0xB0, 1, 3}}}),
            "20 (b0 1 1) (b0 1 2) 44 (b0 1 3) ");
  const live::Meters meters = player.readMeters();
  EXPECT_EQ(meters.in, 0.75F);
  EXPECT_EQ(meters.out, 0.75F);
  EXPECT_EQ(player.readMeters().in, 0.0F);
}

TEST_F(EffectPlayerTest, AssignedControllersMoveParametersOnly) {
  player.assign({2, 74}, 33);
  EXPECT_EQ(play({{0, {0xB1, 74, 127}}, {0, {0xB0, 74, 1}}, {8, {0xB1, 74, 0}}}),
            "=33:100 (b0 74 1) 8 =33:0 56 ");
  player.assign({2, 74}, EffectPlayer::kNoParameter);
  EXPECT_EQ(play({{0, {0xB1, 74, 5}}}), "(b1 74 5) 64 ");
}

TEST_F(EffectPlayerTest, LearnsTheNextControllerAndReportsPrograms) {
  player.learn(7);
  // Notes and channel mode messages are no controllers.
  EXPECT_EQ(play({{0, {0x90, 1, 1}}, {0, {0xB0, 123, 0}}, {0, {0xBF, 11, 64}}}),
            "(90 1 1) (b0 123 0) =7:50 64 ");
  EXPECT_EQ(player.learning(), EffectPlayer::kNoParameter);
  player.setProgramChannel(3);
  play({{0, {0xC2, 31, 0}}, {0, {0xC3, 5, 0}}});
  const auto learned = player.notice();
  ASSERT_TRUE(learned && learned->kind == Notice::Kind::Learned);
  EXPECT_EQ(learned->value, 7);
  EXPECT_EQ(learned->controller, (live::Controller{16, 11}));
  const auto program = player.notice();
  ASSERT_TRUE(program && program->kind == Notice::Kind::Program);
  EXPECT_EQ(program->value, 31);
  EXPECT_FALSE(player.notice());
}

TEST_F(EffectPlayerTest, AFloodOfMessagesIsPlayedWithoutAllocating) {
  std::array<MidiMessage, 200> flood{};
  for (auto& message : flood) message = {3, {0xC0, 4, 0}};
  player.learn(1);
  const AllocationCount allocations;
  player.process({{nullptr, nullptr}, {nullptr, nullptr}, 0, flood});
  EXPECT_EQ(allocations.value(), 0);
  const std::string words = effect.taken();
  EXPECT_EQ(std::ranges::count(words, '('), 200);
}

TEST(RingTest, KeepsTheOrderBetweenThreadsAndRefusesWhenFull) {
  live::Ring<int, 4> small;
  for (int i = 0; i < 6; ++i) EXPECT_EQ(small.push(i), i < 4);
  EXPECT_EQ(small.pop(), 0);
  EXPECT_TRUE(small.push(4));
  constexpr int kItems = 100000;
  live::Ring<int, 64> ring;
  std::jthread writer([&ring] {
    for (int i = 0; i < kItems;)
      if (ring.push(i)) ++i;
  });
  for (int wanted = 0; wanted < kItems;) {
    const auto item = ring.pop();
    if (!item) continue;
    ASSERT_EQ(*item, wanted);
    ++wanted;
  }
}

TEST(ChannelMessageTest, OtherAndDamagedMessagesAreLeftOut) {
  using Bytes = std::vector<std::uint8_t>;
  const auto good = [](const Bytes& bytes) {
    MidiMessage message{};
    return live::toChannelMessage(bytes, 0, message);
  };
  for (const Bytes& bytes : {Bytes{0x80, 0, 0}, {0xEF, 127, 127}, {0xC0, 5}, {0xD1, 5, 255}})
    EXPECT_TRUE(good(bytes));
  for (const Bytes& bytes : {Bytes{},
                             {0xF8},
                             {0xF0, 1, 2, 0xF7},
                             {0x7F, 1, 1},
                             {0xB0, 1},
                             {0xC0},
                             {0xB0, 0x80, 1},
                             {0x90, 1, 0xFF}})
    EXPECT_FALSE(good(bytes));
}

TEST(MidiMapTest, ReadsWhatItWritesAndSaysWhatIsDamaged) {
  const auto find = [](std::string_view name) {
    return name == "Drive"       ? std::optional(5)
           : name == "Room Size" ? std::optional(6)
                                 : std::nullopt;
  };
  std::vector<std::string> faults;
  const auto map =
      live::MidiMap::parse("# comment\n\n 1\t74 Drive # here\r\n16 0  Room Size", find, faults);
  EXPECT_THAT(faults, ElementsAre());
  EXPECT_EQ(map.controllerOf(5), (live::Controller{1, 74}));
  EXPECT_EQ(map.controllerOf(6), (live::Controller{16, 0}));
  const auto name = [](int p) { return std::string(p == 5 ? "Drive" : "Room Size"); };
  EXPECT_EQ(live::MidiMap::parse(map.text(name), find, faults).entries(), map.entries());

  const auto damaged = live::MidiMap::parse(
      "0 1 Drive\n17 1 Drive\n1 120 Drive\n1 x Drive\n1 1\n1 1 Nobody\n1e0 1 Drive\n"
      "99999999999 1 Drive\n\0\xFF\n2 3 Drive\n2 4 Drive\n"s,
      find, faults);
  EXPECT_THAT(faults, ::testing::SizeIs(9));
  EXPECT_THAT(faults[2], ::testing::StartsWith("line 3: "));
  EXPECT_EQ(damaged.entries().size(), 1U); // the last line for a control counts
  EXPECT_EQ(damaged.controllerOf(5), (live::Controller{2, 4}));
  faults.clear();
  live::MidiMap::parse(std::string(1 << 20, '\n'), find, faults);
  EXPECT_THAT(faults, ::testing::SizeIs(1));
}

} // namespace qlx::test
