// SPDX-License-Identifier: ISC
// Requests that no careful host would make, and some do.
#include "brezan/validate/checks/AudioRun.h"
#include "brezan/validate/host/OpcodeNames.h"

#include <algorithm>
#include <array>
#include <bit>
#include <cmath>
#include <limits>
#include <string>

namespace qlx::validate {

namespace {

using sdk::EffectOpcode;

constexpr char kCanary = '\x7E';
constexpr int kLowest = std::numeric_limits<std::int32_t>::min();
constexpr int kHighest = std::numeric_limits<std::int32_t>::max();

/// Requests that end the effect or need a display.
bool isLeftOut(int opcode) {
  const auto what = static_cast<EffectOpcode>(opcode);
  return what == EffectOpcode::Close || what == EffectOpcode::EditOpen;
}

/// The effect still does what it is for.
void requirePlaying(const Effect& effect) {
  effect.run().trying("sound afterwards");
  effect.requireValuesInRange();
  effect.mains(false);
  effect.start(48000.0, 256);
  play<float>(effect, 1024, 256);
}

void unknown(CheckRun& run) {
  const Effect effect(run);
  std::array<char, 4096> buffer{};
  const auto tryOne = [&](int opcode) {
    run.trying("opcode " + std::to_string(opcode));
    buffer.fill(kCanary);
    const auto answer =
        effect.callNumber(opcode, run.random().between(-2, 100), run.random().below(1000),
                          buffer.data(), run.random().value());
    run.require(answer == 0, "a request that there is not was answered");
    run.require(std::all_of(buffer.begin(), buffer.end(), [](char c) { return c == kCanary; }),
                "a request that there is not wrote into the buffer");
  };
  for (int opcode = -100; opcode < 0; ++opcode) tryOne(opcode);
  for (int opcode = kHighestOpcode + 1; opcode < 1000; ++opcode) tryOne(opcode);
  for (const int opcode : {kLowest, kLowest + 1, kHighest - 1, kHighest}) tryOne(opcode);
  for (int i = run.rounds(10, 10000); i > 0; --i)
    tryOne(run.random().between(kHighestOpcode + 1, kHighest - 1));
  requirePlaying(effect);
}

void nullPointers(CheckRun& run) {
  const Effect effect(run);
  const auto tryAll = [&](const char* when) {
    for (int opcode = 0; opcode <= kHighestOpcode; ++opcode)
      for (const int index : {0, 1})
        for (const std::intptr_t value : {0, 1, 100}) {
          // A request that points to its input arrangement by the value.
          const bool pointer = opcode == static_cast<int>(EffectOpcode::SetSpeakerArrangement) ||
                               opcode == static_cast<int>(EffectOpcode::GetSpeakerArrangement);
          if (isLeftOut(opcode) || (pointer && value != 0)) continue;
          run.trying(std::string("null instead of a pointer, ") + when);
          effect.callNumber(opcode, index, value, nullptr, 0.0F);
        }
  };
  tryAll("switched off");
  effect.start(48000.0, 256);
  tryAll("switched on");
  requirePlaying(effect);
}

/// Asks for a text by an index that there is not; whatever is written stays within hosts' buffers.
void askText(const Effect& effect, EffectOpcode opcode, int index, std::intptr_t value = 0) {
  std::array<char, 1024> buffer{};
  buffer.fill(kCanary);
  char* const begin = buffer.data() + 256;
  effect.call(opcode, index, value, begin);
  effect.run().require(
      std::all_of(buffer.begin(), buffer.begin() + 256, [](char c) { return c == kCanary; }) &&
          std::all_of(buffer.begin() + 512, buffer.end(), [](char c) { return c == kCanary; }),
      "bytes around the buffer were written");
}

void indices(CheckRun& run) {
  const Effect effect(run);
  effect.start(48000.0, 256);
  const std::vector<float> before = effect.values();
  std::vector<int> wrong = {-1,
                            kLowest,
                            kLowest + 1,
                            kHighest,
                            kHighest - 1,
                            effect.parameters(),
                            effect.parameters() + 1,
                            1 << 16,
                            -(1 << 16)};
  for (int i = run.rounds(10, 1000); i > 0; --i)
    wrong.push_back(run.random().between(effect.parameters(), kHighest - 1));
  for (const int index : wrong) {
    run.trying("index " + std::to_string(index));
    for (const EffectOpcode text :
         {EffectOpcode::GetParameterLabel, EffectOpcode::GetParameterDisplay,
          EffectOpcode::GetParameterName})
      askText(effect, text, index);
    askText(effect, EffectOpcode::GetProgramNameIndexed, index, -1);
    effect.call(EffectOpcode::CanBeAutomated, index);
    sdk::ParameterProperties properties{};
    effect.call(EffectOpcode::GetParameterProperties, index, 0, &properties);
    sdk::PinProperties pin{};
    effect.call(EffectOpcode::GetInputProperties, index, 0, &pin);
    effect.call(EffectOpcode::GetOutputProperties, index, 0, &pin);
    char number[] = "0.5";
    effect.call(EffectOpcode::StringToParameter, index, 0, number);
    effect.call(EffectOpcode::StringToParameter, index, 0, nullptr);
    effect.set(index, run.random().value());
    run.require(std::isfinite(effect.get(index)), "the value of no parameter is not finite");
  }
  run.require(effect.values() == before, "a parameter was changed by an index that is none");
  requirePlaying(effect);
}

void canDo(CheckRun& run) {
  const Effect effect(run);
  for (const std::string& words : {std::string(), std::string("no such ability"),
                                   std::string(10000, 'x'), std::string("\xFF\xFE%s%n%d")}) {
    run.trying("ability '" + words.substr(0, 20) + "'");
    std::string copy = words;
    run.require(effect.call(EffectOpcode::CanDo, 0, 0, copy.data()) <= 0,
                "an ability that there is not is claimed");
    run.require(copy == words, "the host's text was changed");
  }
}

void anything(CheckRun& run) {
  const Effect effect(run);
  effect.start(48000.0, 256);
  Random& random = run.random();
  AudioRun<float> audio(effect, 256);
  TestSound sound(random);
  std::vector<char> memory(1 << 16);
  sdk::SpeakerArrangement arrangement{};
  for (int i = run.rounds(300, 100000); i > 0; --i) {
    const int opcode = random.below(kHighestOpcode + 1);
    if (isLeftOut(opcode)) continue;
    std::fill(memory.begin(), memory.end(), '\0');
    std::intptr_t value = random.chance(2) ? random.between(-2, 300) : random.below(60000);
    void* ptr = random.chance(8) ? nullptr : static_cast<void*>(memory.data());
    if (opcode == static_cast<int>(EffectOpcode::SetSpeakerArrangement)) {
      arrangement.type = random.between(-2, 3);
      arrangement.numChannels = random.between(0, 2);
      value = std::bit_cast<std::intptr_t>(&arrangement);
    } else if (opcode == static_cast<int>(EffectOpcode::GetSpeakerArrangement)) {
      value = std::bit_cast<std::intptr_t>(memory.data() + 8);
    } else if (opcode == static_cast<int>(EffectOpcode::SetChunk)) {
      for (char& c : memory) c = random.byte();
    }
    run.trying("call " + std::to_string(i) + " from the end");
    effect.callNumber(opcode, random.between(-2, 40), value, ptr, random.value());
    if (random.chance(8)) audio.process(random.between(1, 256), std::ref(sound), false);
  }
  requirePlaying(effect);
}

constexpr Check kChecks[] = {
    {"calls", "unknown", 1, "requests that there are not: answer 0, nothing written", unknown},
    {"calls", "null", 1, "null where a pointer belongs, in every request", nullPointers},
    {"calls", "indices", 1, "indices of no parameter, pin or program", indices},
    {"calls", "can-do", 1, "abilities that there are not", canDo},
    {"calls", "anything", 4, "requests at random, with random numbers", anything},
};

} // namespace

std::span<const Check> callChecks() { return kChecks; }

} // namespace qlx::validate
