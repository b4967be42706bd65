// SPDX-License-Identifier: ISC
#include "plugin/RotaryEffect.h"

#include "editor/RotaryEditor.h"
#include "platform/FlushToZero.h"
#include "platform/NativeWindow.h"
#include "platform/Version.h"
#include "plugin/FactoryPresets.h"
#include "plugin/parameters/ParameterIndex.h"
#include "plugin/parameters/ParameterLaws.h"
#include "presets/store/PersistentSettings.h"
#include "resources/NoiseRecordings.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <memory>
#include <string_view>
#include <utility>

namespace qlx::plugin {

static_assert(kNumHostParameters == presets::kNumPresetParameters);
static_assert(std::atomic<bool>::is_always_lock_free);

namespace {

constexpr std::string_view kEffectName = "QLX Brezan";
constexpr std::string_view kProductName = "QLX Brezan - rotary speaker emulator";
constexpr std::string_view kVendorName = "meridane.example";

constexpr std::array<std::string_view, 6> kAbilities = {
    "offline", "plugAsChannelInsert", "1in1out", "1in2out", "2in2out", "receiveVstMidiEvent"};

/// Into a host's buffer, which is known to be long enough.
void copyText(std::string_view text, char* buffer) {
  *std::copy(text.begin(), text.end(), buffer) = '\0';
}

/// Into a field of a record, cut where it has to be.
template <std::size_t size>
void copyField(std::string_view text, char (&field)[size]) {
  copyText(text.substr(0, size - 1), field);
}

bool describePin(std::int32_t index, std::string_view direction, sdk::PinProperties* properties) {
  if (index != 0 && index != 1) return false;
  const ShortText label = ShortText(kEffectName)
                              .append(" ")
                              .append(ShortText::whole(index + 1))
                              .append(" ")
                              .append(direction);
  label.copyTo(properties->label);
  properties->flags = sdk::kPinIsActive | sdk::kPinIsStereo;
  return true;
}

/// One or two channels, else 0.
std::int32_t channelsOf(const sdk::SpeakerArrangement* arrangement) {
  const std::int32_t channels = arrangement == nullptr ? 0 : arrangement->numChannels;
  return channels == 1 || channels == 2 ? channels : 0;
}

} // namespace

RotaryEffect::RotaryEffect(sdk::HostCallback host)
    : CPresetSystemEffect(host), m_midiLever(*this, kLever),
      m_parameters(*this, m_engine, m_midiLever),
      m_engine(resources::noiseRecordings(), m_parameters) {
  setUniqueId(kUniqueId);
  setNumInputs(2);
  setNumOutputs(2);
  setFlags(sdk::kCanReplacing | sdk::kCanDoubleReplacing);

  for (std::int32_t index = kReserved31; index <= kReserved34; ++index) {
    m_parameters.store(index, parameterRow(index)->defaultValue);
  }
  createEditor();
  applyParameterDefaults();
  fillFactoryPresets();
  capturePresetTemplate();
  selectPreset(0);
  m_engine.performAllPendingWork();
  suspend();
  switchOn();
  suspend();
}

void RotaryEffect::createEditor() {
  editor::RotaryEditor::Desktop desktop{platform::nativeWindowSystem(), presets::openUserSettings(),
                                        platform::desktopFileSelector(),
                                        platform::desktopDocumentOpener()};
  auto own = std::make_unique<editor::RotaryEditor>(*this, *this, std::move(desktop));
  own->setFormatter(&m_formatter);
  setPresetEditor(own.get());
  setEditor(std::move(own));
}

void RotaryEffect::applyParameterDefaults() {
  for (const std::int32_t index : parameterDefaultsOrder()) {
    setParameter(index, parameterRow(index)->defaultValue);
  }
}

void RotaryEffect::fillFactoryPresets() {
  const auto bank = factoryPresets();
  for (std::size_t i = 0; i < bank.size(); ++i) {
    setPresetSlot(static_cast<std::int32_t>(i), bank[i]);
  }
}

void RotaryEffect::suspend() { m_engine.switchOff(); }

void RotaryEffect::resume() {
  resources::unpackNoiseRecordings();
  switchOn();
}

void RotaryEffect::switchOn() {
  CPresetSystemEffect::resume();
  m_engine.switchOn();
}

void RotaryEffect::setSampleRate(float hz) {
  CPresetSystemEffect::setSampleRate(hz);
  m_engine.setHostRate(getSampleRate());
}

void RotaryEffect::processReplacing(float** inputs, float** outputs, std::int32_t frames) {
  processBlock(inputs, outputs, frames);
}

void RotaryEffect::processDoubleReplacing(double** inputs, double** outputs, std::int32_t frames) {
  processBlock(inputs, outputs, frames);
}

template <typename Sample>
void RotaryEffect::processBlock(Sample** inputs, Sample** outputs, std::int32_t frames) {
  // A host with one channel may hand over a single pointer: the layout decides before the pointer
  // is read.
  const bool secondInput =
      isInputConnected(1) && m_stereoInput.load(std::memory_order_relaxed) && inputs[1] != nullptr;
  const bool secondOutput = isOutputConnected(1) &&
                            m_stereoOutput.load(std::memory_order_relaxed) && outputs[1] != nullptr;
  const Sample* const in0 = inputs[0];
  Sample* const out0 = outputs[0];
  Sample* const out1 = secondOutput ? outputs[1] : nullptr;
  if (out0 == nullptr) return;
  if (in0 == nullptr) {
    std::fill_n(out0, frames, Sample{0});
    if (out1 != nullptr) std::fill_n(out1, frames, Sample{0});
    return;
  }

  const platform::FlushToZero flushToZero;
  m_midiLever.decay(frames, m_engine.hostRate());
  m_engine.process(in0, secondInput ? inputs[1] : in0, out0, out1, frames);
}

std::int32_t RotaryEffect::processEvents(const sdk::EventList* events) {
  return m_midiLever.processEvents(events);
}

// Filters are designed here and in setParameter, too, and must not depend on the host's modes.
std::intptr_t RotaryEffect::dispatch(std::int32_t opcode, std::int32_t index, std::intptr_t value,
                                     void* ptr, float opt) {
  const platform::FullPrecision fullPrecision;
  return CPresetSystemEffect::dispatch(opcode, index, value, ptr, opt);
}

void RotaryEffect::setParameter(std::int32_t index, float value) {
  if (std::isnan(value)) return;
  const platform::FullPrecision fullPrecision;
  const ParameterRow* const row = parameterRow(index);
  if (row != nullptr) {
    m_parameters.apply(*row, value);
    if (row->keeping == kInAllPresets) storeParameterInAllSlots(index, value);
  }
  if (!isPresetLoading()) storeParameter(index, value);
  if (sdk::AEffGUIEditor* const editor = getEditor()) editor->setParameter(index, value);
}

float RotaryEffect::getParameter(std::int32_t index) { return m_parameters.value(index); }

void RotaryEffect::getParameterLabel(std::int32_t index, char* text) {
  const ParameterRow* const row = parameterRow(index);
  copyText(row == nullptr ? " " : row->display.unit(m_parameters.value(index)), text);
}

void RotaryEffect::getParameterDisplay(std::int32_t index, char* text) {
  const ParameterRow* const row = parameterRow(index);
  const ShortText shown =
      row == nullptr ? ShortText() : row->display.text(m_parameters.value(index));
  shown.copyTo(text);
}

void RotaryEffect::getParameterName(std::int32_t index, char* text) {
  const ParameterRow* const row = parameterRow(index);
  copyText(row == nullptr ? "" : row->name, text);
}

bool RotaryEffect::canParameterBeAutomated(std::int32_t index) {
  return index >= 0 && index < kNumHostParameters;
}

bool RotaryEffect::getParameterProperties(std::int32_t index,
                                          sdk::ParameterProperties* properties) {
  const ParameterRow* const row = parameterRow(index);
  const ParameterSteps& steps = row == nullptr ? kFineSteps : row->steps;
  const std::string_view name = row == nullptr ? "" : row->name;
  properties->flags = sdk::kParameterUsesFloatStep | (steps.isSwitch ? sdk::kParameterIsSwitch : 0);
  properties->stepFloat = steps.step;
  properties->smallStepFloat = steps.smallStep;
  properties->largeStepFloat = steps.largeStep;
  copyField(name, properties->label);
  copyField(name, properties->shortLabel);
  return true;
}

bool RotaryEffect::getInputProperties(std::int32_t index, sdk::PinProperties* properties) {
  return describePin(index, "In", properties);
}

bool RotaryEffect::getOutputProperties(std::int32_t index, sdk::PinProperties* properties) {
  return describePin(index, "Out", properties);
}

bool RotaryEffect::setSpeakerArrangement(const sdk::SpeakerArrangement* input,
                                         const sdk::SpeakerArrangement* output) {
  const std::int32_t inputs = channelsOf(input);
  const std::int32_t outputs = channelsOf(output);
  const bool supported = inputs != 0 && outputs != 0;
  m_stereoInput.store(!supported || inputs == 2, std::memory_order_relaxed);
  m_stereoOutput.store(!supported || outputs == 2, std::memory_order_relaxed);
  return supported;
}

bool RotaryEffect::getEffectName(char* text) {
  copyText(kEffectName, text);
  return true;
}

bool RotaryEffect::getVendorString(char* text) {
  copyText(kVendorName, text);
  return true;
}

bool RotaryEffect::getProductString(char* text) {
  copyText(kProductName, text);
  return true;
}

std::int32_t RotaryEffect::getVendorVersion() { return platform::versionNumber(); }

std::int32_t RotaryEffect::canDo(const char* text) {
  return std::ranges::find(kAbilities, std::string_view(text)) != kAbilities.end() ? 1 : 0;
}

bool RotaryEffect::speakersBypassed() const noexcept {
  return steppedPosition(m_parameters.value(kBypassSpeakers), 1.0F) == 1;
}

} // namespace qlx::plugin
