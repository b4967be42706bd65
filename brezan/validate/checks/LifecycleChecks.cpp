// SPDX-License-Identifier: ISC
// Effects that come and go, are switched on and off, and are told of rates in any order.
#include "brezan/validate/checks/AudioRun.h"
#include "brezan/validate/host/ProcessState.h"

#include <algorithm>
#include <bit>
#include <cmath>
#include <limits>
#include <string>

namespace qlx::validate {

namespace {

using sdk::EffectOpcode;

constexpr double kRate = 48000.0;
constexpr int kBlock = 256;

void order(CheckRun& run) {
  const Effect effect(run);
  AudioRun<float> audio(effect, 4096);
  AudioRun<double> exact(effect, 4096);
  TestSound sound(run.random());
  Random& random = run.random();
  for (int i = run.rounds(200, 20000); i > 0; --i) {
    switch (random.below(9)) {
    case 0: effect.setRate(random.chance(2) ? 44100.0 : 8000.0 + 200000.0 * random.unit()); break;
    case 1: effect.setBlock(random.between(1, 4096)); break;
    case 2: effect.mains(true); break;
    case 3: effect.mains(false); break;
    case 4: effect.call(EffectOpcode::StartProcess); break;
    case 5: effect.call(EffectOpcode::StopProcess); break;
    case 6:
      if (effect.has(sdk::kCanDoubleReplacing)) {
        effect.call(EffectOpcode::SetProcessPrecision, 0, 1);
        exact.process(random.between(1, 300), std::ref(sound));
      }
      break;
    default: audio.process(random.between(0, 300), std::ref(sound));
    }
  }
}

void oddRates(CheckRun& run) {
  const Effect effect(run);
  constexpr double kInfinite = std::numeric_limits<double>::infinity();
  for (const double rate :
       {0.0, -44100.0, 1e-30, 1.0, 1e9, 1e30, kInfinite, -kInfinite, std::nan("")})
    for (const int block : {0, -1, std::numeric_limits<int>::min(), 1 << 20}) {
      run.trying("a rate of " + std::to_string(rate) + " Hz and blocks of " +
                 std::to_string(block));
      effect.start(rate, block);
      effect.mains(false);
    }
  run.trying("sound at a usual rate after odd ones");
  effect.start(kRate, kBlock);
  play<float>(effect, 4 * kBlock, kBlock);
}

/// A whole short life: opened, read, played, changed, closed.
void live(CheckRun& run) {
  const Effect effect(run);
  effect.start(kRate, kBlock);
  effect.randomizeValues();
  play<float>(effect, 2 * kBlock, kBlock);
  if (effect.has(sdk::kProgramChunks)) effect.setState(effect.state());
  effect.setRate(96000.0);
  play<float>(effect, 2 * kBlock, kBlock);
}

std::size_t grown(std::size_t now, std::size_t then) { return now > then ? now - then : 0; }

void leaks(CheckRun& run) {
  constexpr std::size_t kSmallest = 16; // bytes of the heap's smallest piece
  const int lives = run.rounds(30, 500);
  const auto liveOften = [&run](int times) {
    for (; times > 0; --times) live(run);
  };
  liveOften(10); // what libraries keep for the whole process
  const ProcessState before;
  if (before.heapBytes() == 0) run.skip("a sanitizer keeps the memory");
  liveOften(lives);
  const ProcessState after;
  const auto many = static_cast<std::size_t>(lives);
  run.trying(std::to_string(lives) + " lives");
  if (const std::size_t bytes = grown(after.heapBytes(), before.heapBytes());
      bytes > kSmallest * many)
    run.fail(std::to_string(bytes / many) + " bytes are lost in each life");
  run.require(grown(after.mappings(), before.mappings()) < many / 2,
              "memory mappings are left behind");
  run.require(grown(after.descriptors(), before.descriptors()) < many / 2,
              "open files are left behind");
  run.require(after.threads() <= before.threads(), "threads are left behind");
}

/// What the library takes while it is loaded it gives back when it is unloaded: also the C++
/// library's memory for exceptions, 72 kB, if it is linked in.
void loads(CheckRun& run) {
  constexpr std::size_t kBooks = 1024; // bytes that the loader's own books may take a time
  const auto loadOften = [&run](int times) {
    for (; times > 0; --times) {
      scan(Effect(run));
      run.unloadLibrary();
    }
  };
  loadOften(3);
  const ProcessState before;
  if (before.heapBytes() == 0) run.skip("a sanitizer keeps the memory");
  const int times = run.rounds(5, 50);
  loadOften(times);
  const ProcessState after;
  run.trying("loaded " + std::to_string(times) + " times");
  const auto many = static_cast<std::size_t>(times);
  if (const std::size_t bytes = grown(after.heapBytes(), before.heapBytes()); bytes > kBooks * many)
    run.fail(std::to_string(bytes / many) + " bytes are lost each time the library is unloaded");
}

/// Many at once, closed in random order. Unless the sound differs from run to run anyway, each
/// sounds as one alone.
void instances(CheckRun& run) {
  const int count = run.rounds(4, 64);
  const auto playNew = [&run] {
    const Effect effect(run);
    effect.start(kRate, kBlock);
    return play<float>(effect, 16 * kBlock, kBlock);
  };
  const std::vector<float> alone = playNew();
  const bool repeatable = playNew() == alone;
  std::vector<Effect> all;
  for (int i = 0; i < count; ++i) {
    all.emplace_back(run).start(kRate, kBlock);
    if (i % 2 == 1) all.back().randomizeValues(); // the others' business only
  }
  std::vector<std::vector<float>> heard(static_cast<std::size_t>(count));
  std::vector<TestSound> sounds(static_cast<std::size_t>(count), TestSound(Random(1, "play")));
  std::vector<AudioRun<float>> audio;
  audio.reserve(all.size());
  for (const Effect& effect : all) audio.emplace_back(effect, kBlock);
  for (int block = 0; block < 16; ++block)
    for (std::size_t i = 0; i < all.size(); ++i) {
      audio[i].process(kBlock, std::ref(sounds[i]));
      for (int c = 0; c < audio[i].outputs(); ++c)
        heard[i].insert(heard[i].end(), audio[i].output(c), audio[i].output(c) + kBlock);
    }
  for (std::size_t i = 0; i < all.size() && repeatable; i += 2) {
    run.trying("effect " + std::to_string(i) + " of " + std::to_string(count));
    run.require(heard[i] == alone, "it does not sound as one alone");
  }
  while (all.size() > 1) {
    const auto gone = static_cast<std::size_t>(run.random().below(static_cast<int>(all.size())));
    std::swap(all[gone], all.back());
    all.pop_back();
    const auto other = static_cast<std::size_t>(run.random().below(static_cast<int>(all.size())));
    run.trying(std::to_string(all.size()) + " left");
    play<float>(all[other], kBlock, kBlock);
  }
}

void closedPlaying(CheckRun& run) {
  for (int i = run.rounds(3, 50); i > 0; --i) {
    const Effect effect(run);
    effect.start(kRate, kBlock);
    play<float>(effect, run.random().between(1, 4 * kBlock), kBlock);
  }
}

void notStarted(CheckRun& run) {
  const Effect effect(run);
  run.trying("played without rate, block size and on");
  play<float>(effect, 4 * kBlock, kBlock);
  run.trying("played after it was switched off");
  effect.start(kRate, kBlock);
  effect.mains(false);
  play<float>(effect, 4 * kBlock, kBlock);
}

void arrangements(CheckRun& run) {
  const Effect effect(run);
  TestSound sound(run.random());
  int heard = effect.record().numOutputs; // outputs of the arrangement in force
  const int most = std::max({effect.record().numInputs, effect.record().numOutputs, 1});
  for (int i = run.rounds(20, 1000); i > 0; --i) {
    sdk::SpeakerArrangement in{}, out{};
    for (sdk::SpeakerArrangement* one : {&in, &out}) {
      one->type = run.random().between(-2, 30);
      one->numChannels = run.random().chance(4) ? run.random().between(-5, 100)
                                                : run.random().between(1, std::min(most, 8));
    }
    run.trying("arrangement of " + std::to_string(in.numChannels) + " in, " +
               std::to_string(out.numChannels) + " out");
    effect.mains(false);
    const bool taken = effect.call(EffectOpcode::SetSpeakerArrangement, 0,
                                   std::bit_cast<std::intptr_t>(&in), &out) != 0;
    effect.start(kRate, kBlock);
    AudioRun<float> audio(effect, kBlock);
    if (taken) heard = std::clamp(out.numChannels, 0, audio.outputs());
    audio.listenTo(heard);
    for (int block = 0; block < 2; ++block) audio.process(kBlock, std::ref(sound));
  }
}

constexpr Check kChecks[] = {
    {"lifecycle", "order", 2, "rates, block sizes, on, off and blocks in any order", order},
    {"lifecycle", "odd-rates", 3, "rates and block sizes that are none", oddRates},
    {"lifecycle", "not-started", 2, "blocks before it is switched on and after it is off",
     notStarted},
    {"lifecycle", "arrangements", 3, "speaker arrangements of any kind", arrangements},
    {"lifecycle", "closed-playing", 2, "closed without having been switched off", closedPlaying},
    {"lifecycle", "instances", 3, "many at once do not hear of each other", instances},
    {"lifecycle", "leaks", 4, "lives in a row leave no memory, file or thread", leaks},
    {"lifecycle", "loads", 1, "the library loaded and unloaded again and again leaves no memory",
     loads},
};

} // namespace

std::span<const Check> lifecycleChecks() { return kChecks; }

} // namespace qlx::validate
