// SPDX-License-Identifier: ISC
// The state chunk that hosts keep in their projects: complete, exact, and without harm when
// damaged.
#include "brezan/validate/Worker.h"
#include "brezan/validate/checks/AudioRun.h"

#include <algorithm>
#include <array>
#include <string>

namespace qlx::validate {

namespace {

using sdk::EffectOpcode;

constexpr std::array<StateKind, 2> kKinds = {StateKind::Bank, StateKind::Program};

std::string kindName(StateKind kind) { return kind == StateKind::Bank ? "bank" : "program"; }

void requireState(const Effect& effect) {
  if (!effect.has(sdk::kProgramChunks)) effect.run().skip("it has no state chunk");
}

/// A state with random values in it.
std::vector<char> randomState(const Effect& effect, StateKind kind) {
  effect.randomizeValues();
  std::vector<char> state = effect.state(kind);
  effect.run().require(!state.empty(), "there is no state");
  return state;
}

void roundTrip(CheckRun& run) {
  for (int i = run.rounds(2, 50); i > 0; --i)
    for (const StateKind kind : kKinds) {
      run.trying("state of a " + kindName(kind));
      const Effect first(run);
      requireState(first);
      const std::vector<char> state = randomState(first, kind);
      run.require(first.state(kind) == state, "the state differs from call to call");
      const Effect second(run);
      second.setState(state, kind);
      run.require(second.values() == first.values(), "the parameters came back with other values");
      run.require(second.state(kind) == state, "the state came back with other bytes");
    }
}

/// Hands over a state in memory that cannot be written to, ends at a page that nobody may touch and
/// is gone afterwards. Requires that a refusal changes nothing and that the effect plays on.
void handOver(const Effect& effect, const std::vector<char>& bytes, StateKind kind,
              AudioRun<float>& audio, TestSound& sound) {
  const std::vector<char> before = effect.state();
  std::intptr_t answer = 0;
  {
    const GuardedMemory memory(bytes.size());
    char* const data = memory.last(bytes.size());
    std::copy(bytes.begin(), bytes.end(), data);
    memory.allowWrites(false);
    answer = effect.call(EffectOpcode::SetChunk, static_cast<int>(kind),
                         static_cast<std::intptr_t>(bytes.size()), data);
  }
  effect.run().require(answer >= 0 || effect.state() == before,
                       "the state was refused and changed the effect all the same");
  effect.requireValuesInRange();
  audio.process(64, std::ref(sound));
}

using Damage = void (*)(std::vector<char>& state, Random& random, int round);

void damaged(CheckRun& run, const char* how, int rounds, Damage damage) {
  const Effect effect(run);
  requireState(effect);
  effect.start(48000.0, 64);
  AudioRun<float> audio(effect, 64);
  TestSound sound(run.random());
  for (int round = 0; round < rounds; ++round)
    for (const StateKind kind : kKinds) {
      std::vector<char> state = randomState(effect, kind);
      damage(state, run.random(), round);
      run.trying("state of a " + kindName(kind) + ", " + how + ", " + std::to_string(state.size()) +
                 " bytes");
      handOver(effect, state, kind, audio, sound);
    }
}

void borrowed(CheckRun& run) {
  damaged(run, "whole", run.rounds(2, 50), [](std::vector<char>&, Random&, int) {});
}

void truncated(CheckRun& run) {
  damaged(run, "cut short", run.rounds(20, 2000),
          [](std::vector<char>& state, Random& random, int round) {
            const auto size = static_cast<int>(state.size());
            // The first bytes one by one: there are the heads and counts.
            state.resize(static_cast<std::size_t>(round % 2 == 0 ? std::min(round / 2, size)
                                                                 : random.below(size)));
          });
}

void flipped(CheckRun& run) {
  damaged(run, "bits flipped", run.rounds(20, 2000),
          [](std::vector<char>& state, Random& random, int round) {
            for (int i = random.below(round % 4 == 0 ? 64 : 4); i >= 0; --i) {
              const int within = random.chance(2) ? static_cast<int>(state.size())
                                                  : std::min(256, static_cast<int>(state.size()));
              char& byte = state[static_cast<std::size_t>(random.below(within))];
              byte = static_cast<char>(byte ^ (1 << random.below(8)));
            }
          });
}

void reversed(CheckRun& run) {
  damaged(run, "reversed", 1,
          [](std::vector<char>& state, Random&, int) { std::reverse(state.begin(), state.end()); });
}

void randomBytes(CheckRun& run) {
  damaged(run, "random bytes", run.rounds(20, 2000),
          [](std::vector<char>& state, Random& random, int round) {
            // Every second one has the size of a right one.
            if (round % 2 == 0)
              state.resize(static_cast<std::size_t>(random.below(1 << random.below(17))));
            const std::size_t kept =
                random.chance(2) ? static_cast<std::size_t>(random.below(64)) : 0;
            for (std::size_t i = std::min(kept, state.size()); i < state.size(); ++i)
              state[i] = random.byte();
          });
}

void sizes(CheckRun& run) {
  const Effect effect(run);
  requireState(effect);
  std::vector<char> state = effect.state();
  for (const StateKind kind : kKinds)
    for (const std::intptr_t size :
         {std::intptr_t{0}, std::intptr_t{-1}, std::intptr_t{-1} << 40}) {
      run.trying("a size of " + std::to_string(size));
      const std::vector<float> before = effect.values();
      effect.call(EffectOpcode::SetChunk, static_cast<int>(kind), size, state.data());
      effect.call(EffectOpcode::SetChunk, static_cast<int>(kind), size, nullptr);
      run.require(effect.values() == before, "a state of no bytes changed parameters");
    }
  run.trying("null for a state of 1000 bytes");
  effect.call(EffectOpcode::SetChunk, 0, 1000, nullptr);
  effect.requireValuesInRange();
}

void otherThread(CheckRun& run) {
  const Effect effect(run);
  requireState(effect);
  effect.start(48000.0, 64);
  std::vector<char> kept = randomState(effect, StateKind::Bank);
  const int blocks = framesOf(run.seconds(), 48000.0) / 64;
  std::atomic<bool> first{false};
  Worker audio([&] {
    AudioRun<float> block(effect, 64);
    TestSound sound(Random(2, "audio"));
    for (int i = 0; i < blocks || !first; ++i) block.process(64, std::ref(sound));
  });
  do {
    effect.setState(kept);
    first = true;
    if (run.random().chance(4)) kept = randomState(effect, StateKind::Bank);
    run.require(!effect.state().empty(), "there is no state while another thread plays");
  } while (!audio.done());
  audio.join();
  effect.requireValuesInRange();
}

/// A host that reads and writes the state whenever the effect calls it.
void nested(CheckRun& run) {
  const Effect* inside = nullptr;
  std::vector<char> state;
  thread_local bool busy = false;
  setHost([&](const HostCall& call) {
    if (inside != nullptr && !busy && !call.is(sdk::HostOpcode::Version)) {
      busy = true;
      if (const std::vector<char> got = inside->state(); !got.empty()) state = got;
      if (!state.empty()) inside->setState(state);
      busy = false;
    }
    return usualAnswer(call);
  });
  const Effect effect(run);
  requireState(effect);
  inside = &effect;
  effect.start(48000.0, 64);
  AudioRun<float> audio(effect, 64);
  TestSound sound(run.random());
  for (int i = run.rounds(5, 200); i > 0; --i) {
    effect.setState(randomState(effect, StateKind::Bank));
    effect.call(EffectOpcode::SetProgram, 0, 0);
    audio.process(64, std::ref(sound));
    effect.requireValuesInRange();
  }
  inside = nullptr;
}

constexpr Check kChecks[] = {
    {"state", "round-trip", 1, "a state comes back with the same values and bytes", roundTrip},
    {"state", "borrowed", 2, "the host's memory is neither written nor kept", borrowed},
    {"state", "truncated", 2, "states cut short", truncated},
    {"state", "flipped", 3, "states with bits flipped", flipped},
    {"state", "reversed", 3, "states back to front", reversed},
    {"state", "random", 3, "random bytes as state", randomBytes},
    {"state", "sizes", 2, "states of no bytes and of less", sizes},
    {"state", "thread", 4, "read and written while another thread plays", otherThread},
    {"state", "nested", 4, "read and written from inside the effect's own calls", nested},
};

} // namespace

std::span<const Check> stateChecks() { return kChecks; }

} // namespace qlx::validate
