// SPDX-License-Identifier: ISC
#include "midi/MidiLever.h"
#include "tests/support/MidiMessage.h"

#include <cstring>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <memory>
#include <vector>

namespace qlx::test {
using namespace midi;
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;

constexpr std::int32_t kLeverIndex = 2;

/// Remembers where its lever was put.
class LeverEffect : public sdk::AudioEffect {
 public:
  LeverEffect() : AudioEffect(nullptr, 1, 3) {}
  void processReplacing(float**, float**, std::int32_t) override {}
  void processDoubleReplacing(double**, double**, std::int32_t) override {}
  void setParameter(std::int32_t index, float value) override {
    EXPECT_EQ(index, kLeverIndex);
    moves.push_back(value);
  }
  float getParameter(std::int32_t) override { return moves.empty() ? 0.3F : moves.back(); }

  std::vector<float> moves;
};

sdk::Event message(int status, int data1, int data2, std::int32_t type = sdk::kMidiEventType) {
  sdk::Event event{};
  const MidiMessage midi(status, data1, data2);
  std::memcpy(&event, &midi.event, sizeof event);
  event.type = type;
  return event;
}

/// A host's event list of any length.
class Events {
 public:
  explicit Events(std::vector<sdk::Event> events)
      : m_events(std::move(events)),
        m_memory(new std::byte[sizeof(sdk::EventList) + m_events.size() * sizeof(void*)]) {
    auto* const list = new (m_memory.get()) sdk::EventList{};
    list->numEvents = static_cast<std::int32_t>(m_events.size());
    for (std::size_t i = 0; i < m_events.size(); ++i) {
      sdk::Event* const event = &m_events[i];
      std::memcpy(m_memory.get() + offsetof(sdk::EventList, events) + i * sizeof event, &event,
                  sizeof event);
    }
  }
  sdk::EventList* list() { return reinterpret_cast<sdk::EventList*>(m_memory.get()); }

 private:
  std::vector<sdk::Event> m_events;
  std::unique_ptr<std::byte[]> m_memory;
};

class MidiLeverTest : public ::testing::Test {
 protected:
  void play(std::vector<sdk::Event> events) {
    Events list(std::move(events));
    EXPECT_EQ(lever.processEvents(list.list()), 1);
  }

  LeverEffect effect;
  MidiLever lever{effect, kLeverIndex};
};

TEST_F(MidiLeverTest, TakesItsChannelOnly) {
  struct Case {
    int setting;
    int status;
    bool taken;
  };
  for (const Case& c :
       {Case{0, 0xB0, false}, Case{1, 0xB0, true}, Case{1, 0xB1, false}, Case{16, 0xBF, true},
        Case{16, 0xB0, false}, Case{17, 0xB0, true}, Case{17, 0xBF, true}}) {
    effect.moves.clear();
    lever.setChannel(c.setting);
    play({message(c.status, 1, 127)});
    EXPECT_EQ(effect.moves.size(), c.taken ? 1U : 0U) << c.setting << " " << c.status;
  }
}

TEST_F(MidiLeverTest, TheWheelSetsTheLever) {
  lever.setChannel(MidiLever::kEveryChannel);
  play({message(0xB0, 1, 127), message(0xB0, 1, 0), message(0xB0, 1, 64)});
  EXPECT_THAT(effect.moves, ElementsAre(1.0F, 0.0F, ::testing::FloatEq(64.0F / 127.0F)));
  EXPECT_EQ(lever.modWheelActivity(), 1.0F);
  EXPECT_EQ(lever.sustainState(), 0.0);
}

TEST_F(MidiLeverTest, ThePedalResendsTheLeverAndThrowsIt) {
  lever.setChannel(MidiLever::kEveryChannel);
  play({message(0xB3, 64, 64)});
  EXPECT_THAT(effect.moves, ElementsAre(0.3F, 1.0F));
  EXPECT_EQ(lever.sustainState(), 1.0);
  play({message(0xB3, 64, 63)});
  EXPECT_THAT(effect.moves, ElementsAre(0.3F, 1.0F, 1.0F, 0.0F));
  EXPECT_EQ(lever.sustainState(), 0.0);
  EXPECT_EQ(lever.modWheelActivity(), 0.0F);
}

TEST_F(MidiLeverTest, TheLastMessageOfALongListWins) {
  lever.setChannel(MidiLever::kEveryChannel);
  std::vector<sdk::Event> events(40, message(0xB0, 1, 10));
  events.push_back(message(0xB0, 64, 127));
  play(events);
  EXPECT_EQ(effect.moves.size(), 42U);
  EXPECT_EQ(effect.moves.back(), 1.0F);
}

TEST_F(MidiLeverTest, OtherEventsPassUnnoticed) {
  lever.setChannel(MidiLever::kEveryChannel);
  play({message(0x90, 1, 127), message(0xE0, 1, 127), message(0xB0, 7, 127),
        message(0xB0, 1, 127, sdk::kSystemExclusiveEventType)});
  EXPECT_THAT(effect.moves, IsEmpty());
}

TEST_F(MidiLeverTest, EightBitDataCannotPushTheLeverOut) {
  lever.setChannel(MidiLever::kEveryChannel);
  play({message(0xB0, 0x81, 0xFF), message(0xB0, 1, 0x80)});
  EXPECT_THAT(effect.moves, ElementsAre(1.0F, 0.0F));
}

TEST_F(MidiLeverTest, MissingListsAndEventsAreHarmless) {
  EXPECT_EQ(lever.processEvents(nullptr), -1);
  for (const std::int32_t count : {0, -4, 2}) {
    sdk::EventList list{};
    list.numEvents = count;
    EXPECT_EQ(lever.processEvents(&list), 1) << count;
  }
}

TEST_F(MidiLeverTest, ActivityFallsToAnEthInHalfASecondWhateverTheBlocks) {
  for (const int block : {1, 64, 441}) {
    lever.setChannel(MidiLever::kEveryChannel);
    play({message(0xB0, 1, 5)});
    for (int frame = 0; frame < 22050; frame += block) lever.decay(block, 44100.0);
    EXPECT_NEAR(lever.modWheelActivity(), 0.3679, 0.001) << block;
  }
}

} // namespace
} // namespace qlx::test
