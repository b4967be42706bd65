// SPDX-License-Identifier: ISC
#include "brezan/validate/checks/AudioRun.h"

#include <algorithm>
#include <array>
#include <limits>
#include <string>

namespace qlx::validate {

namespace {

using sdk::EffectOpcode;

int programsOf(const Effect& effect) {
  const int count = effect.record().numPrograms;
  if (count == 0) effect.run().skip("it has no programs");
  return count;
}

void select(const Effect& effect, int program) {
  effect.call(EffectOpcode::BeginSetProgram);
  effect.call(EffectOpcode::SetProgram, 0, program);
  effect.call(EffectOpcode::EndSetProgram);
}

void selecting(CheckRun& run) {
  const Effect effect(run);
  const int count = programsOf(effect);
  for (int i = 0; i < count; ++i) {
    run.trying("program " + std::to_string(i));
    select(effect, i);
    run.require(effect.call(EffectOpcode::GetProgram) == i, "it is not the current one");
    effect.requireValuesInRange();
  }
}

void outside(CheckRun& run) {
  const Effect effect(run);
  const int count = programsOf(effect);
  select(effect, count - 1);
  const auto before = effect.call(EffectOpcode::GetProgram);
  for (const int number : {-1, count, count + 1, 1 << 16, std::numeric_limits<int>::max(),
                           std::numeric_limits<int>::min()}) {
    run.trying("program " + std::to_string(number) + " of " + std::to_string(count));
    select(effect, number);
    run.require(effect.call(EffectOpcode::GetProgram) == before, "the current program is another");
    (void)effect.text(EffectOpcode::GetProgramName);
    effect.requireValuesInRange();
  }
}

void names(CheckRun& run) {
  const Effect effect(run);
  programsOf(effect);
  const auto give = [&](std::string name) {
    run.trying("name of " + std::to_string(name.size()) + " bytes");
    const std::string given = name;
    effect.call(EffectOpcode::SetProgramName, 0, 0, name.data());
    run.require(name == given, "the host's text was changed");
    std::string got = effect.text(EffectOpcode::GetProgramName);
    run.require(got.size() < 64, "the name given back has 64 bytes or more");
    return got;
  };
  const std::string before = effect.text(EffectOpcode::GetProgramName);
  const std::string got = give("Brass 7");
  run.require(got == "Brass 7" || got == before, "the name given back is neither old nor new");
  for (const int length : {0, 23, 24, 25, 31, 32, 33, 64, 255, 256, 1000, 100000})
    give(std::string(static_cast<std::size_t>(length), 'n'));
  for (int i = run.rounds(5, 500); i > 0; --i) {
    std::string name;
    for (int length = run.random().below(100); length > 0; --length)
      name += static_cast<char>(run.random().between(1, 255));
    give(name);
  }
}

void playing(CheckRun& run) {
  const Effect effect(run);
  const int count = programsOf(effect);
  effect.start(48000.0, 256);
  AudioRun<float> audio(effect, 256);
  TestSound sound(run.random());
  for (int i = run.rounds(50, 2000); i > 0; --i) {
    select(effect, run.random().below(count));
    audio.process(run.random().between(1, 256), std::ref(sound));
    effect.randomizeValues();
    audio.process(run.random().between(1, 256), std::ref(sound));
  }
}

constexpr Check kChecks[] = {
    {"programs", "select", 1, "each program can be made the current one", selecting},
    {"programs", "outside", 2, "numbers of no program change nothing", outside},
    {"programs", "names", 2, "names of any length", names},
    {"programs", "playing", 3, "programs change while sound is played", playing},
};

} // namespace

std::span<const Check> programChecks() { return kChecks; }

} // namespace qlx::validate
