// SPDX-License-Identifier: ISC
// A small effect with every feature of the interface that the command-line host uses, simple enough
// to predict each sample: out = in x gain + ring; the second output adds the lever's value.
#include "sdk/VstTypes.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdio>
#include <cstring>
#include <memory>

namespace {

using namespace qlx::sdk;

enum Parameter { kGain, kMode, kLever, kUnnamed, kRing, kParameters };
constexpr const char* kNames[kParameters] = {"Gain", "Mode", "Lever", "", "Ring"};
constexpr const char* kModes[] = {"Red", "Green", "BlueSky"};
constexpr std::size_t kIndexOffset = 25;

struct Preset {
  const char* name;
  std::array<float, kParameters> values;
};
constexpr Preset kPresets[] = {{"Plain", {0.5F, 0, 0, 0, 0}},
                               {"Half Level", {0.25F, 0.5F, 0, 0, 0}},
                               {"Endless", {0.5F, 0, 0.5F, 0, 0}}};

struct TestEffect {
  EffectRecord record{};
  std::array<float, kParameters> values = kPresets[0].values;
  std::array<char, 64> chunk{};
  std::int32_t preset = 0;
  bool monoIn = false;
  bool monoOut = false;
  bool running = false;
  double ring = 0.0;
};

TestEffect& self(EffectRecord* record) { return *static_cast<TestEffect*>(record->object); }

void display(const TestEffect& effect, int index, char* text) {
  const auto v = static_cast<double>(effect.values[static_cast<std::size_t>(index)]);
  if (index == kGain && v == 0.0)
    std::strcpy(text, "-oo");
  else if (index == kGain)
    std::snprintf(text, 16, "%.1f", 20.0 * std::log10(2.0 * v));
  else if (index == kMode)
    std::strcpy(text, kModes[static_cast<int>(2.0 * v + 0.5)]);
  else if (index == kLever && (v == 0.0 || v == 1.0))
    std::strcpy(text, v == 0.0 ? "Chorale" : "Tremolo");
  else
    std::snprintf(text, 16, "%.0f", 100.0 * v);
}

void choose(TestEffect& effect, std::int32_t preset) {
  effect.preset = preset;
  effect.values = kPresets[preset].values;
}

std::intptr_t setChunk(TestEffect& effect, std::intptr_t size, const void* data) {
  std::int32_t preset = 0;
  if (size != static_cast<std::intptr_t>(effect.chunk.size())) return -1;
  std::memcpy(&preset, static_cast<const char*>(data) + kIndexOffset, sizeof preset);
  if (preset < 0 || preset >= static_cast<std::int32_t>(std::size(kPresets))) return -1;
  choose(effect, preset);
  return 0;
}

std::intptr_t arrangement(TestEffect& effect, std::intptr_t in, const void* out) {
  SpeakerArrangement input{};
  SpeakerArrangement output{};
  std::memcpy(&input, reinterpret_cast<const void*>(in), sizeof input);
  std::memcpy(&output, out, sizeof output);
  effect.monoIn = input.numChannels == 1;
  effect.monoOut = output.numChannels == 1;
  return 1;
}

void events(TestEffect& effect, const EventList& list) {
  for (std::int32_t i = 0; i < list.numEvents; ++i) {
    const void* pointer = nullptr;
    std::memcpy(&pointer, reinterpret_cast<const char*>(&list) + 16 + 8 * i, sizeof pointer);
    MidiEvent event{};
    std::memcpy(&event, pointer, sizeof event);
    if (event.type == kMidiEventType && event.midiData[1] == 64)
      effect.values[kLever] = event.midiData[2] >= 64 ? 1.0F : 0.0F;
  }
}

std::intptr_t dispatch(EffectRecord* record, std::int32_t opcode, std::int32_t index,
                       std::intptr_t value, void* ptr, float /*opt*/) {
  TestEffect& effect = self(record);
  const auto copy = [ptr](const char* text) -> std::intptr_t {
    std::strcpy(static_cast<char*>(ptr), text);
    return 1;
  };
  switch (static_cast<EffectOpcode>(opcode)) {
  case EffectOpcode::Close: delete &effect; return 1;
  case EffectOpcode::GetParameterName: return copy(kNames[index]);
  case EffectOpcode::GetParameterLabel: return copy(index == kGain ? "dB" : " ");
  case EffectOpcode::GetParameterDisplay: display(effect, index, static_cast<char*>(ptr)); return 1;
  case EffectOpcode::MainsChanged: effect.running = value != 0; return 0;
  case EffectOpcode::GetChunk:
    effect.chunk.fill(0);
    std::memcpy(effect.chunk.data() + kIndexOffset, &effect.preset, sizeof effect.preset);
    *static_cast<void**>(ptr) = effect.chunk.data();
    return static_cast<std::intptr_t>(effect.chunk.size());
  case EffectOpcode::SetChunk: return setChunk(effect, value, ptr);
  case EffectOpcode::ProcessEvents: events(effect, *static_cast<EventList*>(ptr)); return 1;
  case EffectOpcode::GetProgramNameIndexed:
    return index < static_cast<std::int32_t>(std::size(kPresets)) ? copy(kPresets[index].name) : 0;
  case EffectOpcode::SetSpeakerArrangement: return arrangement(effect, value, ptr);
  case EffectOpcode::GetEffectName: return copy("Test Effect");
  default: return 0;
  }
}

template <typename Sample>
void process(EffectRecord* record, Sample** in, Sample** out, std::int32_t frames) {
  TestEffect& effect = self(record);
  const auto value = [&effect](Parameter p) { return static_cast<double>(effect.values[p]); };
  for (std::int32_t i = 0; i < frames; ++i) {
    const auto left = static_cast<double>(in[0][i]);
    const auto right = effect.monoIn ? left : static_cast<double>(in[1][i]);
    effect.ring = 0.999 * effect.ring + value(kRing) * left;
    const double gain = effect.running ? 2.0 * value(kGain) : 0.0;
    out[0][i] = static_cast<Sample>(gain * left + effect.ring);
    if (!effect.monoOut) out[1][i] = static_cast<Sample>(gain * right + value(kLever));
  }
}

} // namespace

extern "C" __attribute__((visibility("default"))) EffectRecord* VSTPluginMain(HostCallback host) {
  if (host(nullptr, static_cast<std::int32_t>(HostOpcode::Version), 0, 0, nullptr, 0) == 0)
    return nullptr;
  auto effect = std::make_unique<TestEffect>();
  EffectRecord& r = effect->record;
  r.magic = kEffectMagic;
  r.dispatcher = dispatch;
  r.setParameter = [](EffectRecord* e, std::int32_t index, float value) {
    self(e).values[static_cast<std::size_t>(index)] = value;
  };
  r.getParameter = [](EffectRecord* e, std::int32_t index) {
    return self(e).values[static_cast<std::size_t>(index)];
  };
  r.numPrograms = 1;
  r.numParams = kParameters;
  r.numInputs = r.numOutputs = 2;
  r.flags = kCanReplacing | kCanDoubleReplacing | kProgramChunks;
  r.object = effect.get();
  r.processReplacing = process<float>;
  r.processDoubleReplacing = process<double>;
  return &effect.release()->record;
}
