// SPDX-License-Identifier: ISC
// An audio thread, a user interface and automation at once, as in every host.
#include "brezan/validate/Worker.h"
#include "brezan/validate/checks/AudioRun.h"
#include "brezan/validate/host/EventMemory.h"

#include <deque>
#include <string>

namespace qlx::validate {

namespace {

constexpr double kRate = 48000.0;
constexpr int kBlock = 64;

int blocksOf(const CheckRun& run) { return framesOf(run.seconds(), kRate) / kBlock; }

void playBlocks(const Effect& effect, int blocks, Random random) {
  AudioRun<float> audio(effect, kBlock);
  TestSound sound(random);
  const EventMemory events(2);
  for (int i = 0; i < blocks; ++i) {
    events.randomMidi(random, kBlock);
    if (random.chance(8)) effect.call(sdk::EffectOpcode::ProcessEvents, 0, 0, events.list());
    audio.process(random.between(1, kBlock), std::ref(sound));
  }
}

/// Everything that a user interface asks, once.
void ask(const Effect& effect, Random& random) {
  scan(effect);
  effect.call(sdk::EffectOpcode::EditIdle);
  effect.call(sdk::EffectOpcode::SetProgram, 0, random.below(3));
  if (effect.has(sdk::kProgramChunks)) effect.setState(effect.state());
  for (int i = 0; i < effect.parameters(); ++i)
    (void)effect.text(sdk::EffectOpcode::GetParameterDisplay, i);
}

void together(CheckRun& run) {
  const Effect effect(run);
  effect.start(kRate, kBlock);
  Worker audio([&] { playBlocks(effect, blocksOf(run), Random(4, "audio")); });
  Worker automation([&] {
    Random random(5, "automation");
    while (!audio.done() && effect.parameters() > 0) {
      const int index = random.below(effect.parameters());
      effect.set(index, random.value());
      const float value = effect.get(index);
      run.require(value >= 0.0F && value <= 1.0F, "a value read is not within 0 to 1");
    }
  });
  do ask(effect, run.random());
  while (!audio.done());
  audio.join();
  automation.join();
  effect.requireValuesInRange();
}

void severalAudioThreads(CheckRun& run) {
  std::deque<Effect> effects;
  std::deque<Worker> workers;
  for (int i = 0; i < 4; ++i) effects.emplace_back(run).start(kRate, kBlock);
  for (const Effect& effect : effects)
    workers.emplace_back([&] { playBlocks(effect, blocksOf(run), Random(6, "audio")); });
  for (Worker& worker : workers) worker.join();
}

void movingThread(CheckRun& run) {
  const Effect effect(run);
  effect.start(kRate, kBlock);
  for (int i = run.rounds(4, 100); i > 0; --i) {
    Worker audio([&] { playBlocks(effect, 20, Random(7, "audio")); });
    audio.join();
    playBlocks(effect, 20, run.random());
  }
}

void comingAndGoing(CheckRun& run) {
  const Effect effect(run);
  effect.start(kRate, kBlock);
  Worker audio([&] { playBlocks(effect, blocksOf(run), Random(8, "audio")); });
  do {
    const Effect other(run);
    other.start(kRate, kBlock);
    playBlocks(other, 4, run.random());
  } while (!audio.done());
  audio.join();
}

/// Switched off and told of rates by one thread while another plays, as careless hosts do.
void switching(CheckRun& run) {
  const Effect effect(run);
  effect.start(kRate, kBlock);
  Worker audio([&] { playBlocks(effect, blocksOf(run), Random(9, "audio")); });
  do {
    effect.setRate(run.random().chance(2) ? 44100.0 : 96000.0);
    effect.setBlock(run.random().between(1, kBlock));
    effect.mains(run.random().chance(2));
  } while (!audio.done());
  audio.join();
}

constexpr Check kChecks[] = {
    {"threads", "together", 3, "audio, automation and user interface at once", together},
    {"threads", "audio", 3, "several effects, each on an audio thread of its own",
     severalAudioThreads},
    {"threads", "moving", 3, "one effect played by changing threads", movingThread},
    {"threads", "lives", 4, "effects come and go while another one plays", comingAndGoing},
    {"threads", "switching", 8, "rates, on and off from another thread while playing", switching},
};

} // namespace

std::span<const Check> threadChecks() { return kChecks; }

} // namespace qlx::validate
