// SPDX-License-Identifier: ISC
#pragma once

#include "sdk/AudioEffectX.h"

#include <cstring>
#include <functional>
#include <memory>
#include <stdexcept>
#include <string>
#include <vector>

namespace qlx::test {
using namespace sdk;

/// What a host hears: requests by opcode with index and opt value.
struct HostCall {
  std::int32_t opcode;
  std::int32_t index;
  float opt;
  friend bool operator==(const HostCall&, const HostCall&) = default;
};

/// A host that remembers; only one test at a time uses it.
struct RecordingHost {
  static inline std::vector<HostCall> calls{};
  static inline std::function<std::intptr_t(EffectRecord*, std::int32_t)> answer{};

  static void reset() {
    calls.clear();
    answer = nullptr;
  }
  static std::intptr_t callback(EffectRecord* effect, std::int32_t opcode, std::int32_t index,
                                std::intptr_t /*value*/, void* /*ptr*/, float opt) {
    calls.push_back({opcode, index, opt});
    return answer ? answer(effect, opcode) : 0;
  }
};

/// An effect that notes its calls in one line each and doubles its input.
class ProbeEffect : public AudioEffectX {
 public:
  explicit ProbeEffect(bool* destroyed = nullptr, HostCallback host = &RecordingHost::callback)
      : AudioEffectX(host, 1, 3), m_destroyed(destroyed) {
    setNumInputs(2);
    setNumOutputs(2);
  }
  ~ProbeEffect() override {
    if (m_destroyed != nullptr) *m_destroyed = true;
  }

  using AudioEffect::setEditor;
  using AudioEffectX::isInputConnected;
  using AudioEffectX::isOutputConnected;

  std::vector<std::string> notes;
  bool throwing = false;
  float values[3] = {};

  void note(std::string text) {
    notes.push_back(std::move(text));
    if (throwing) throw std::runtime_error("probe");
  }

  void open() override { note("open"); }
  void close() override { note("close"); }
  void suspend() override { note("suspend"); }
  void resume() override {
    note("resume");
    AudioEffectX::resume();
  }
  void setProgram(std::int32_t index) override { note("setProgram " + std::to_string(index)); }
  void setProgramName(const char* name) override { note(std::string("setProgramName ") + name); }
  void getProgramName(char* text) override { std::strcpy(text, "program"); }
  void setParameter(std::int32_t index, float value) override {
    note("setParameter " + std::to_string(index));
    if (index >= 0 && index < 3) values[index] = value;
  }
  float getParameter(std::int32_t index) override {
    if (throwing) throw std::runtime_error("probe");
    return index >= 0 && index < 3 ? values[index] : 0.0F;
  }
  std::int32_t getChunk(void** data, bool isPreset) override {
    note(isPreset ? "getChunk preset" : "getChunk bank");
    *data = values;
    return sizeof values;
  }
  std::int32_t setChunk(const void* data, std::int32_t byteSize, bool /*isPreset*/) override {
    note((data == nullptr ? "setChunk null " : "setChunk ") + std::to_string(byteSize));
    return -1;
  }
  std::int32_t canDo(const char* text) override {
    return std::string(text) == "receiveVstMidiEvent" ? 1 : 0;
  }
  bool setSpeakerArrangement(const SpeakerArrangement* in, const SpeakerArrangement* out) override {
    return in != nullptr && out != nullptr;
  }
  std::int32_t processEvents(const EventList* events) override {
    return events == nullptr ? -1 : 1;
  }

  void processReplacing(float** in, float** out, std::int32_t frames) override {
    process(in, out, frames);
  }
  void processDoubleReplacing(double** in, double** out, std::int32_t frames) override {
    process(in, out, frames);
  }

 private:
  template <typename Sample>
  void process(Sample** in, Sample** out, std::int32_t frames) {
    note("process " + std::to_string(frames));
    for (std::int32_t i = 0; i < frames; ++i) {
      for (int c = 0; c < 2; ++c) out[c][i] = 2 * in[c][i];
    }
  }

  bool* m_destroyed;
};

} // namespace qlx::test
