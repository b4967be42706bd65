// SPDX-License-Identifier: ISC
#include "brezan/validate/host/Effect.h"

#include "brezan/Table.h"

#include <algorithm>
#include <array>
#include <bit>
#include <string_view>

namespace qlx::validate {

using sdk::EffectOpcode;

Effect::Effect(CheckRun& run) : m_run(&run), m_record(create(run)) {
  if (m_record == nullptr) run.fail("the entry point returned no effect");
  call(EffectOpcode::Open);
}

sdk::EffectRecord* Effect::create(CheckRun& run) {
  const tools::SharedObject& library = run.library();
  void* symbol = library.symbol("VSTPluginMain");
  if (symbol == nullptr) symbol = library.symbol("main");
  if (symbol == nullptr) run.fail("the library has no entry point VSTPluginMain");
  run.entering(CallKind::Entry, 0, 0);
  sdk::EffectRecord* record = std::bit_cast<sdk::EntryFunction>(symbol)(&hostCallback);
  if (record == nullptr) return nullptr;
  run.require(record->magic == sdk::kEffectMagic, "the effect's record does not begin with 'VstP'");
  run.require(record->dispatcher != nullptr && record->setParameter != nullptr &&
                  record->getParameter != nullptr && record->processReplacing != nullptr,
              "a function of the effect's record is null");
  return record;
}

std::intptr_t Effect::callNumber(std::int32_t opcode, std::int32_t index, std::intptr_t value,
                                 void* ptr, float opt) const {
  m_run->entering(CallKind::Dispatcher, opcode, index);
  return m_record->dispatcher(m_record, opcode, index, value, ptr, opt);
}

void Effect::process(float** in, float** out, int frames) const {
  m_run->entering(CallKind::Process, 0, frames);
  m_record->processReplacing(m_record, in, out, frames);
}

void Effect::process(double** in, double** out, int frames) const {
  m_run->entering(CallKind::ProcessDouble, 0, frames);
  m_record->processDoubleReplacing(m_record, in, out, frames);
}

void Effect::set(int index, float value) const {
  m_run->entering(CallKind::Set, 0, index);
  m_record->setParameter(m_record, index, value);
}

float Effect::get(int index) const {
  m_run->entering(CallKind::Get, 0, index);
  return m_record->getParameter(m_record, index);
}

void Effect::close() {
  if (m_record != nullptr) call(EffectOpcode::Close);
  m_record = nullptr;
}

void Effect::start(double hz, int block) const {
  setRate(hz);
  setBlock(block);
  mains(true);
  call(EffectOpcode::StartProcess);
}

std::string Effect::text(EffectOpcode opcode, int index) const {
  std::array<char, 1024> buffer{};
  call(opcode, index, 0, buffer.data());
  buffer.back() = '\0';
  return buffer.data();
}

std::vector<char> Effect::state(StateKind kind) const {
  void* data = nullptr;
  const std::intptr_t size = call(EffectOpcode::GetChunk, static_cast<int>(kind), 0, &data);
  if (size <= 0 || data == nullptr) return {};
  const char* bytes = static_cast<const char*>(data);
  return {bytes, bytes + size};
}

std::intptr_t Effect::setState(const std::vector<char>& bytes, StateKind kind) const {
  std::vector<char> copy = bytes;
  return call(EffectOpcode::SetChunk, static_cast<int>(kind),
              static_cast<std::intptr_t>(copy.size()), copy.data());
}

std::vector<float> Effect::values() const {
  std::vector<float> all(static_cast<std::size_t>(std::max(parameters(), 0)));
  for (std::size_t i = 0; i < all.size(); ++i) all[i] = get(static_cast<int>(i));
  return all;
}

void Effect::randomizeValues() const {
  for (int i = 0; i < parameters(); ++i) set(i, m_run->random().value());
}

void Effect::requireValuesInRange() const {
  for (int i = 0; i < parameters(); ++i)
    if (const float value = get(i); !(value >= 0.0F && value <= 1.0F))
      m_run->fail("parameter " + std::to_string(i) + " has the value " +
                  tools::fixed(static_cast<double>(value), 6));
}

void scan(const Effect& effect) {
  for (const EffectOpcode text : {EffectOpcode::GetEffectName, EffectOpcode::GetVendorString,
                                  EffectOpcode::GetProductString, EffectOpcode::GetProgramName})
    (void)effect.text(text);
  for (const EffectOpcode number :
       {EffectOpcode::GetVendorVersion, EffectOpcode::GetVstVersion, EffectOpcode::GetPlugCategory,
        EffectOpcode::GetTailSize, EffectOpcode::GetProgram, EffectOpcode::GetNumMidiInputChannels,
        EffectOpcode::GetNumMidiOutputChannels})
    effect.call(number);
  for (const std::string_view ability :
       {"receiveVstEvents", "receiveVstMidiEvent", "sendVstEvents", "sendVstMidiEvent", "bypass",
        "offline", "1in1out", "1in2out", "2in1out", "2in2out", "midiProgramNames",
        "receiveVstTimeInfo", "noRealTime", "shellCategory"}) {
    std::string words(ability);
    effect.call(EffectOpcode::CanDo, 0, 0, words.data());
  }
  if (effect.has(sdk::kProgramChunks)) (void)effect.state();
  for (int i = 0; i < effect.parameters(); ++i) {
    (void)effect.text(EffectOpcode::GetParameterName, i);
    (void)effect.get(i);
  }
}

} // namespace qlx::validate
