// SPDX-License-Identifier: ISC
#include "live/Player.h"
#include "live/LearnMenu.h"

#include "tests/live/RecordingEffect.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <stdexcept>
#include <thread>

namespace qlx::test {

namespace {

/// The machine that the test's audio systems stand for.
struct Machine {
  double rate = 48000.0;
  bool running = true;
  int refusals = 0; ///< of the next starts
  int open = 0;
  live::BlockProcessor* processor = nullptr;
};

class MachineSystem final : public live::AudioSystem {
 public:
  explicit MachineSystem(Machine& machine) : m_machine(machine) { ++machine.open; }
  ~MachineSystem() override { --m_machine.open; }
  double rate() const override { return m_machine.rate; }
  int blockFrames() const override { return 64; }
  void start(live::BlockProcessor& processor) override {
    if (m_machine.refusals > 0 && m_machine.refusals-- > 0) throw std::runtime_error("refused");
    m_machine.processor = &processor;
  }
  void stop() noexcept override { m_machine.processor = nullptr; }
  int lateBlocks() const override { return 2; }
  bool isAlive() const override { return m_machine.running; }

 private:
  Machine& m_machine;
};

class Host final : public live::EffectHost {
 public:
  sdk::EffectRecord& record() override { return m_effect.record(); }
  void start(double rate, int) override { words += "on " + std::to_string(int(rate)) + ' '; }
  void stop() override { words += "off "; }
  int presetCount() override { return 32; }
  void selectPreset(int number) override { words += "preset " + std::to_string(number) + ' '; }
  std::string words;

 private:
  RecordingEffect m_effect;
};

void send(const Machine& machine, std::initializer_list<live::MidiMessage> midi) {
  machine.processor->process({{nullptr, nullptr}, {nullptr, nullptr}, 0, std::span(midi)});
}

} // namespace

TEST(PlayerTest, FollowsRateProgramsAndControllersAndFindsTheSystemAgain) {
  Machine machine;
  Host host;
  int saved = 0;
  live::Player::Events events;
  events.open = [&]() -> std::unique_ptr<live::AudioSystem> {
    EXPECT_EQ(machine.open, 0) << "two at once";
    return machine.running ? std::make_unique<MachineSystem>(machine) : nullptr;
  };
  events.mapChanged = [&saved] { ++saved; };
  std::string said;
  events.say = [&said](const std::string& words) { said += words + '\n'; };
  {
    live::Player player(host, {}, events);
    machine.rate = 44100.0;
    player.idle();
    send(machine, {{0, {0xC0, 9, 0}}, {0, {0xC0, 32, 0}}});
    player.idle(); // no such preset
    send(machine, {{0, {0xC0, 9, 0}}, {0, {0xC0, 31, 0}}});
    player.idle();
    player.learn(4);
    send(machine, {{0, {0xB2, 20, 1}}});
    player.idle();
    EXPECT_EQ(player.map().controllerOf(4), (live::Controller{3, 20}));
    player.forget(4);
    EXPECT_EQ(player.map().controllerOf(4), std::nullopt);
    EXPECT_EQ(saved, 2);

    machine.running = false;
    player.idle();
    EXPECT_EQ(player.system(), nullptr);
    machine.running = true;
    machine.rate = 96000.0;
    machine.refusals = 1;
    const auto awaitSystem = [&] {
      do {
        player.idle();
        std::this_thread::sleep_for(std::chrono::milliseconds(10));
      } while (player.system() == nullptr);
      EXPECT_NE(machine.processor, nullptr);
    };
    awaitSystem();
    EXPECT_EQ(player.lateBlocks(), 6);
    machine.rate = 88200.0;
    machine.refusals = 1;
    player.idle();
    EXPECT_EQ(player.system(), nullptr);
    awaitSystem();
    EXPECT_EQ(machine.refusals, 0);
  }
  EXPECT_EQ(host.words, "on 48000 on 44100 preset 31 on 96000 on 96000 on 88200 on 88200 off ");
  EXPECT_EQ(said, "the rate is 44100 Hz now\nthe audio system has ended; waiting for it to come "
                  "back\nrefused\nthe audio system is back\nrefused\nthe audio system is back\n");
  EXPECT_EQ(machine.processor, nullptr);
  machine.running = false;
  EXPECT_THROW(live::Player(host, {}, events), std::runtime_error);
}

TEST(LearnMenuTest, LearnsUntilAControllerMovesOrTheSignIsClosed) {
  using Menu = sdk::EditorMenu;
  Machine machine;
  Host host;
  live::Player::Events events;
  events.open = [&] { return std::make_unique<MachineSystem>(machine); };
  live::Player player(host, {}, events);
  live::LearnMenu learn(player, [](int parameter) { return "P" + std::to_string(parameter); });
  Menu menu{};
  const auto tell = [&](Menu::Event event, std::int32_t chosen = 0) {
    menu.event = event;
    menu.chosen = chosen;
    std::string shown = learn.answer(menu) ? "yes" : "no";
    if (event != Menu::kIdle)
      for (std::int32_t i = 0; i < menu.itemCount; ++i)
        shown += std::string("; ") + menu.titles[static_cast<std::size_t>(i)].data();
    return shown;
  };
  const auto choose = [&](std::int32_t item) {
    tell(Menu::kClosed);
    return tell(Menu::kChosen, item);
  };
  menu.parameter = -1;
  EXPECT_EQ(tell(Menu::kOpening), "no");
  menu.parameter = 5;
  EXPECT_EQ(tell(Menu::kOpening), "yes; Learn: P5");
  EXPECT_EQ(choose(0), "yes; Move a MIDI controller for P5");
  EXPECT_EQ(tell(Menu::kIdle), "yes");
  send(machine, {{0, {0xB2, 20, 1}}});
  EXPECT_EQ(tell(Menu::kIdle), "no");
  player.idle();
  EXPECT_EQ(tell(Menu::kOpening), "yes; Learn: P5; Forget controller 20 of channel 3");
  EXPECT_EQ(choose(1), "no");
  EXPECT_EQ(player.map().controllerOf(5), std::nullopt);

  for (const bool byClick : {false, true}) {
    tell(Menu::kOpening);
    choose(0);
    EXPECT_EQ(player.effect().learning(), 5);
    if (byClick)
      EXPECT_EQ(choose(0), "no") << "the sign itself";
    else
      tell(Menu::kClosed);
    EXPECT_EQ(player.effect().learning(), live::EffectPlayer::kNoParameter);
  }
}

} // namespace qlx::test
