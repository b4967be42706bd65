// SPDX-License-Identifier: ISC
#include "sdk/AudioEffectX.h"

#include <bit>

namespace qlx::sdk {

namespace {

/// Hosts without arrangements send small numbers where a pointer belongs.
const SpeakerArrangement* arrangementAt(std::intptr_t address) noexcept {
  constexpr std::intptr_t kFirstPage = 4096;
  if (address > -kFirstPage && address < kFirstPage) return nullptr;
  return std::bit_cast<const SpeakerArrangement*>(address);
}

} // namespace

std::intptr_t AudioEffectX::dispatch(std::int32_t opcode, std::int32_t index, std::intptr_t value,
                                     void* ptr, float opt) {
  auto* const text = static_cast<char*>(ptr);
  switch (static_cast<EffectOpcode>(opcode)) {
  case EffectOpcode::ProcessEvents: return processEvents(static_cast<const EventList*>(ptr));
  case EffectOpcode::CanBeAutomated: return canParameterBeAutomated(index) ? 1 : 0;
  case EffectOpcode::StringToParameter: return string2parameter(index, text) ? 1 : 0;
  case EffectOpcode::GetProgramNameIndexed:
    return text != nullptr && getProgramNameIndexed(static_cast<std::int32_t>(value), index, text)
               ? 1
               : 0;
  case EffectOpcode::GetInputProperties:
    return ptr != nullptr && getInputProperties(index, static_cast<PinProperties*>(ptr)) ? 1 : 0;
  case EffectOpcode::GetOutputProperties:
    return ptr != nullptr && getOutputProperties(index, static_cast<PinProperties*>(ptr)) ? 1 : 0;
  case EffectOpcode::GetPlugCategory: return getPlugCategory();
  case EffectOpcode::SetSpeakerArrangement:
    return setSpeakerArrangement(arrangementAt(value), static_cast<const SpeakerArrangement*>(ptr))
               ? 1
               : 0;
  case EffectOpcode::SetBypass: return setBypass(value != 0) ? 1 : 0;
  case EffectOpcode::GetEffectName: return text != nullptr && getEffectName(text) ? 1 : 0;
  case EffectOpcode::GetVendorString: return text != nullptr && getVendorString(text) ? 1 : 0;
  case EffectOpcode::GetProductString: return text != nullptr && getProductString(text) ? 1 : 0;
  case EffectOpcode::GetVendorVersion: return getVendorVersion();
  case EffectOpcode::CanDo: return text == nullptr ? 0 : canDo(text);
  case EffectOpcode::GetTailSize: return getTailSize();
  case EffectOpcode::GetParameterProperties:
    return ptr != nullptr && getParameterProperties(index, static_cast<ParameterProperties*>(ptr))
               ? 1
               : 0;
  case EffectOpcode::GetVstVersion: return getVstVersion();
  default: return AudioEffect::dispatch(opcode, index, value, ptr, opt);
  }
}

void AudioEffectX::resume() {
  AudioEffect::resume();
  if (canDo("receiveVstMidiEvent") == 1) callHost(HostOpcode::WantMidi, 0, 1);
}

std::int32_t AudioEffectX::processEvents(const EventList* /*events*/) { return 0; }

bool AudioEffectX::canParameterBeAutomated(std::int32_t /*index*/) { return true; }
bool AudioEffectX::getParameterProperties(std::int32_t /*index*/,
                                          ParameterProperties* /*properties*/) {
  return false;
}
bool AudioEffectX::string2parameter(std::int32_t /*index*/, const char* /*text*/) { return false; }
bool AudioEffectX::getProgramNameIndexed(std::int32_t /*category*/, std::int32_t /*index*/,
                                         char* /*text*/) {
  return false;
}

bool AudioEffectX::getInputProperties(std::int32_t /*index*/, PinProperties* /*properties*/) {
  return false;
}
bool AudioEffectX::getOutputProperties(std::int32_t /*index*/, PinProperties* /*properties*/) {
  return false;
}
bool AudioEffectX::setSpeakerArrangement(const SpeakerArrangement* /*input*/,
                                         const SpeakerArrangement* /*output*/) {
  return false;
}
bool AudioEffectX::setBypass(bool /*onOff*/) { return false; }

bool AudioEffectX::getEffectName(char* /*text*/) { return false; }
bool AudioEffectX::getVendorString(char* /*text*/) { return false; }
bool AudioEffectX::getProductString(char* /*text*/) { return false; }
std::int32_t AudioEffectX::getVendorVersion() { return 0; }
std::int32_t AudioEffectX::getVstVersion() { return kVstVersion; }
std::int32_t AudioEffectX::getPlugCategory() { return kCategoryEffect; }
std::int32_t AudioEffectX::canDo(const char* /*text*/) { return 0; }
std::int32_t AudioEffectX::getTailSize() { return 0; }

void AudioEffectX::beginEdit(std::int32_t index) { callHost(HostOpcode::BeginEdit, index); }
void AudioEffectX::endEdit(std::int32_t index) { callHost(HostOpcode::EndEdit, index); }
bool AudioEffectX::sizeWindow(std::int32_t width, std::int32_t height) {
  return callHost(HostOpcode::SizeWindow, width, height) != 0;
}
bool AudioEffectX::askEditorMenu(EditorMenu& menu) {
  return callHost(HostOpcode::VendorSpecific, kEditorMenuRequest, 0, &menu) == 1;
}
void AudioEffectX::updateDisplay() { callHost(HostOpcode::UpdateDisplay); }

bool AudioEffectX::isInputConnected(std::int32_t pin) {
  return callHost(HostOpcode::PinConnected, pin, 0) == 0;
}
bool AudioEffectX::isOutputConnected(std::int32_t pin) {
  return callHost(HostOpcode::PinConnected, pin, 1) == 0;
}

} // namespace qlx::sdk
