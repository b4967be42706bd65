// SPDX-License-Identifier: ISC
#include "brezan/validate/checks/AudioRun.h"

#include <array>
#include <atomic>
#include <cmath>
#include <limits>
#include <string>

namespace qlx::validate {

namespace {

constexpr std::size_t kDisplayRoom = 64; // of hosts in use, where the text is nominally 8

std::string parameterName(int index, float value) {
  return "parameter " + std::to_string(index) + " at " + std::to_string(value);
}

void defaults(CheckRun& run) {
  const Effect first(run);
  first.requireValuesInRange();
  const std::vector<float> values = first.values();
  first.randomizeValues();
  const Effect second(run);
  run.require(second.values() == values, "a second effect begins with other values");
}

void range(CheckRun& run) {
  constexpr float kRounding = 1e-6F;
  const Effect effect(run);
  for (int i = 0; i < effect.parameters(); ++i)
    for (int round = run.rounds(4, 200); round >= 0; --round) {
      const float value = round < 2 ? static_cast<float>(round) : run.random().value();
      run.trying(parameterName(i, value));
      effect.set(i, value);
      const float got = effect.get(i);
      run.require(got >= 0.0F && got <= 1.0F, "the value read back is not within 0 to 1");
      effect.set(i, got);
      run.require(std::abs(effect.get(i) - got) <= kRounding,
                  "the value read back is another one after it was set again");
    }
}

void outside(CheckRun& run) {
  const Effect effect(run);
  effect.start(48000.0, 256);
  constexpr float kInfinite = std::numeric_limits<float>::infinity();
  std::vector<float> wrong = {-1.0F,  2.0F,   -1e-6F,    1.0F + 1e-6F, 1e30F,
                              -1e30F, 1e-40F, kInfinite, -kInfinite,   std::nanf("")};
  for (int i = run.rounds(4, 200); i > 0; --i) wrong.push_back(run.random().anyFloat());
  for (int i = 0; i < effect.parameters(); ++i) {
    for (const float value : wrong) {
      run.trying(parameterName(i, value));
      effect.set(i, value);
      // It may keep what the host sets, but for what is no number.
      run.require(!std::isnan(effect.get(i)), "the value read back is NaN");
      run.require(effect.text(sdk::EffectOpcode::GetParameterDisplay, i).size() < kDisplayRoom,
                  "the display is too long for hosts' buffers");
      play<float>(effect, 64, 64);
    }
    effect.set(i, 0.5F);
    effect.requireValuesInRange();
    play<float>(effect, 1024, 256);
  }
}

/// Others may be told: those that the effect changes with the one that is set.
void echo(CheckRun& run) {
  std::atomic<int> set{-1};
  std::atomic<bool> echoed{false};
  setHost([&](const HostCall& call) {
    if (call.is(sdk::HostOpcode::Automate) && call.index == set) echoed = true;
    return usualAnswer(call);
  });
  const Effect effect(run);
  effect.start(48000.0, 256);
  for (int i = run.rounds(2, 50) * effect.parameters(); i > 0; --i) {
    set = run.random().below(effect.parameters());
    run.trying("parameter " + std::to_string(set));
    effect.set(set, run.random().value());
    if (i % 16 == 0) play<float>(effect, 256, 256);
    run.require(!echoed, "a value that the host has set is told back to it as automation");
  }
}

void strings(CheckRun& run) {
  const Effect effect(run);
  for (int i = 0; i < effect.parameters(); ++i) {
    const std::string shown = effect.text(sdk::EffectOpcode::GetParameterDisplay, i);
    std::vector<std::string> texts = {
        shown, "", "0", "-1e999", "nan", "%n%s", std::string(5000, '9')};
    for (int round = run.rounds(4, 200); round > 0; --round) {
      std::string& random = texts.emplace_back();
      for (int length = run.random().below(40); length > 0; --length)
        if (const char c = run.random().byte(); c != '\0') random += c;
    }
    for (std::string& text : texts) {
      run.trying("text '" + text.substr(0, 40) + "' for parameter " + std::to_string(i));
      effect.call(sdk::EffectOpcode::StringToParameter, i, 0, text.data());
      effect.requireValuesInRange();
    }
  }
}

/// Automation of everything between short blocks.
void moving(CheckRun& run) {
  const Effect effect(run);
  effect.start(48000.0, 256);
  AudioRun<float> audio(effect, 256);
  TestSound sound(run.random());
  if (effect.parameters() == 0) run.skip("it has no parameters");
  for (int i = run.rounds(200, 20000); i > 0; --i) {
    for (int k = run.random().below(4); k >= 0; --k)
      effect.set(run.random().below(effect.parameters()), run.random().value());
    audio.process(run.random().between(1, 256), std::ref(sound));
  }
}

constexpr Check kChecks[] = {
    {"parameters", "defaults", 1, "every new effect begins with the same values", defaults},
    {"parameters", "range", 1, "values stay within 0 to 1 and as they were read", range},
    {"parameters", "outside", 2, "values outside 0 to 1, infinite and NaN", outside},
    {"parameters", "echo", 2, "what the host sets is not told back as automation", echo},
    {"parameters", "strings", 3, "values given as text", strings},
    {"parameters", "moving", 3, "random automation between short blocks", moving},
};

} // namespace

std::span<const Check> parameterChecks() { return kChecks; }

} // namespace qlx::validate
