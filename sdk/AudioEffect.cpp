// SPDX-License-Identifier: ISC
#include "sdk/AudioEffect.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <limits>
#include <type_traits>

namespace qlx::sdk {

static_assert(std::atomic<float>::is_always_lock_free);
static_assert(std::atomic<std::int32_t>::is_always_lock_free);
static_assert(std::atomic<bool>::is_always_lock_free);

namespace {

AudioEffect* objectOf(EffectRecord* record) noexcept {
  return record == nullptr ? nullptr : static_cast<AudioEffect*>(record->object);
}

/// Runs one call of the host; what is thrown inside ends here.
template <typename Call>
auto guarded(EffectRecord* record, Call call) noexcept -> decltype(call(*objectOf(record))) {
  using Answer = decltype(call(*objectOf(record)));
  AudioEffect* const effect = objectOf(record);
  if constexpr (std::is_void_v<Answer>) {
    if (effect == nullptr) return;
    try {
      call(*effect);
    } catch (...) {
      return;
    }
  } else {
    if (effect == nullptr) return Answer{};
    try {
      return call(*effect);
    } catch (...) {
      return Answer{};
    }
  }
}

void destroy(EffectRecord* record) noexcept {
  guarded(record, [](AudioEffect& effect) { effect.close(); });
  // The object came from the entry point's allocation; the host has just given it back.
  delete objectOf(record);
}

std::intptr_t dispatcherEntry(EffectRecord* record, std::int32_t opcode, std::int32_t index,
                              std::intptr_t value, void* ptr, float opt) {
  if (static_cast<EffectOpcode>(opcode) == EffectOpcode::Close) {
    destroy(record);
    return 1;
  }
  return guarded(
      record, [&](AudioEffect& effect) { return effect.dispatch(opcode, index, value, ptr, opt); });
}

void setParameterEntry(EffectRecord* record, std::int32_t index, float value) {
  guarded(record, [&](AudioEffect& effect) { effect.setParameter(index, value); });
}

float getParameterEntry(EffectRecord* record, std::int32_t index) {
  return guarded(record, [&](AudioEffect& effect) { return effect.getParameter(index); });
}

void processReplacingEntry(EffectRecord* record, float** inputs, float** outputs,
                           std::int32_t frames) {
  if (inputs == nullptr || outputs == nullptr || frames <= 0) return;
  guarded(record, [&](AudioEffect& effect) { effect.processReplacing(inputs, outputs, frames); });
}

void processDoubleReplacingEntry(EffectRecord* record, double** inputs, double** outputs,
                                 std::int32_t frames) {
  if (inputs == nullptr || outputs == nullptr || frames <= 0) return;
  guarded(record,
          [&](AudioEffect& effect) { effect.processDoubleReplacing(inputs, outputs, frames); });
}

/// The obsolete accumulating form, on top of the replacing one. Runs in short pieces through the
/// stack, so that it too allocates nothing.
void processAddingEntry(EffectRecord* record, float** inputs, float** outputs,
                        std::int32_t frames) {
  constexpr std::int32_t kPieceFrames = 256;
  constexpr std::size_t kMaxChannels = 2;
  if (objectOf(record) == nullptr || inputs == nullptr || outputs == nullptr) return;
  const auto numInputs = static_cast<std::size_t>(std::max(record->numInputs, 0));
  const auto numOutputs = static_cast<std::size_t>(std::max(record->numOutputs, 0));
  if (numInputs > kMaxChannels || numOutputs > kMaxChannels) return;

  std::array<std::array<float, kPieceFrames>, kMaxChannels> wet{};
  for (std::int32_t start = 0; start < frames; start += kPieceFrames) {
    const std::int32_t piece = std::min(kPieceFrames, frames - start);
    std::array<float*, kMaxChannels> in{};
    std::array<float*, kMaxChannels> out{};
    for (std::size_t c = 0; c < numInputs; ++c)
      in[c] = inputs[c] == nullptr ? nullptr : inputs[c] + start;
    for (std::size_t c = 0; c < numOutputs; ++c) out[c] = wet[c].data();
    processReplacingEntry(record, in.data(), out.data(), piece);
    for (std::size_t c = 0; c < numOutputs; ++c) {
      if (outputs[c] == nullptr) continue;
      std::transform(out[c], out[c] + piece, outputs[c] + start, outputs[c] + start,
                     [](float a, float b) { return a + b; });
    }
  }
}

std::int32_t saturate(std::intptr_t value) noexcept {
  using Limits = std::numeric_limits<std::int32_t>;
  return static_cast<std::int32_t>(std::clamp<std::intptr_t>(value, Limits::min(), Limits::max()));
}

KeyCode keyOf(std::int32_t character, std::intptr_t virt, float modifiers) noexcept {
  KeyCode key{};
  key.character = character;
  if (virt >= 0 && virt <= 255) key.virt = static_cast<unsigned char>(virt);
  if (modifiers >= 0.0F && modifiers <= 255.0F) {
    key.modifiers = static_cast<unsigned char>(modifiers);
  }
  return key;
}

std::intptr_t answerDescription(AEffGUIEditor& editor, const EditorDescription& request) {
  if (request.byteSize != sizeof request) return 0;
  const std::string text = editor.description();
  if (request.room > 0 && request.text != nullptr)
    std::copy_n(text.data(), std::min(text.size(), static_cast<std::size_t>(request.room)),
                request.text);
  return static_cast<std::intptr_t>(text.size());
}

std::intptr_t answerVendor(AEffGUIEditor& editor, std::int32_t index, const void* ptr) {
  if (ptr == nullptr) return 0;
  if (index == kEditorDescriptionRequest)
    return answerDescription(editor, *static_cast<const EditorDescription*>(ptr));
  if (index != kEditorPictureRequest) return 0;
  const auto& request = *static_cast<const EditorPicture*>(ptr);
  return request.byteSize == sizeof(EditorPicture) && editor.picture(request) ? 1 : 0;
}

} // namespace

AudioEffect::AudioEffect(HostCallback host, std::int32_t numPrograms,
                         std::int32_t numParameters) noexcept
    : m_host(host) {
  m_record.magic = kEffectMagic;
  m_record.dispatcher = &dispatcherEntry;
  m_record.process = &processAddingEntry;
  m_record.setParameter = &setParameterEntry;
  m_record.getParameter = &getParameterEntry;
  m_record.numPrograms = numPrograms;
  m_record.numParams = numParameters;
  m_record.ioRatio = 1.0F;
  m_record.object = this;
  m_record.uniqueId = fourCharacters("NoEf");
  m_record.version = 1;
  m_record.processReplacing = &processReplacingEntry;
  m_record.processDoubleReplacing = &processDoubleReplacingEntry;
}

AudioEffect::~AudioEffect() { destroyEditor(); }

std::intptr_t AudioEffect::dispatch(std::int32_t opcode, std::int32_t index, std::intptr_t value,
                                    void* ptr, float opt) {
  auto* const text = static_cast<char*>(ptr);
  switch (static_cast<EffectOpcode>(opcode)) {
  case EffectOpcode::Open: open(); return 0;
  case EffectOpcode::SetProgram:
    if (value >= 0 && value < m_record.numPrograms) setProgram(static_cast<std::int32_t>(value));
    return 0;
  case EffectOpcode::GetProgram: return getProgram();
  case EffectOpcode::SetProgramName:
    if (text != nullptr) setProgramName(text);
    return 0;
  case EffectOpcode::GetProgramName:
    if (text != nullptr) getProgramName(text);
    return 0;
  case EffectOpcode::GetParameterLabel:
    if (text != nullptr) getParameterLabel(index, text);
    return 0;
  case EffectOpcode::GetParameterDisplay:
    if (text != nullptr) getParameterDisplay(index, text);
    return 0;
  case EffectOpcode::GetParameterName:
    if (text != nullptr) getParameterName(index, text);
    return 0;
  case EffectOpcode::SetSampleRate: setSampleRate(opt); return 0;
  case EffectOpcode::SetBlockSize: setBlockSize(saturate(value)); return 0;
  case EffectOpcode::MainsChanged:
    if (value == 0)
      suspend();
    else
      resume();
    return 0;
  case EffectOpcode::Identify: return kIdentifyAnswer;
  case EffectOpcode::GetChunk:
    return ptr == nullptr ? 0 : getChunk(static_cast<void**>(ptr), index != 0);
  case EffectOpcode::SetChunk:
    return setChunk(ptr, saturate(std::max<std::intptr_t>(value, 0)), index != 0);
  default: return dispatchEditor(opcode, index, value, ptr, opt);
  }
}

std::intptr_t AudioEffect::dispatchEditor(std::int32_t opcode, std::int32_t index,
                                          std::intptr_t value, void* ptr, float opt) {
  if (!m_editor) return 0;
  switch (static_cast<EffectOpcode>(opcode)) {
  case EffectOpcode::EditGetRectangle:
    return ptr != nullptr && m_editor->getRect(static_cast<EditRectangle**>(ptr)) ? 1 : 0;
  case EffectOpcode::EditOpen: return m_editor->open(ptr) ? 1 : 0;
  case EffectOpcode::EditClose: m_editor->close(); return 0;
  case EffectOpcode::EditIdle: m_editor->idle(); return 0;
  case EffectOpcode::EditKeyDown: return m_editor->onKeyDown(keyOf(index, value, opt)) ? 1 : 0;
  case EffectOpcode::EditKeyUp: return m_editor->onKeyUp(keyOf(index, value, opt)) ? 1 : 0;
  case EffectOpcode::VendorSpecific: return answerVendor(*m_editor, index, ptr);
  case EffectOpcode::SetEditKnobMode: return m_editor->setKnobMode(saturate(value)) ? 1 : 0;
  default: return 0;
  }
}

void AudioEffect::setParameter(std::int32_t /*index*/, float /*value*/) {}
float AudioEffect::getParameter(std::int32_t /*index*/) { return 0.0F; }

void AudioEffect::setParameterAutomated(std::int32_t index, float value) {
  setParameter(index, value);
  callHost(HostOpcode::Automate, index, 0, nullptr, value);
}

void AudioEffect::getParameterLabel(std::int32_t /*index*/, char* text) { *text = '\0'; }
void AudioEffect::getParameterDisplay(std::int32_t /*index*/, char* text) { *text = '\0'; }
void AudioEffect::getParameterName(std::int32_t /*index*/, char* text) { *text = '\0'; }

std::int32_t AudioEffect::getProgram() { return 0; }
void AudioEffect::setProgram(std::int32_t /*index*/) {}
void AudioEffect::setProgramName(const char* /*name*/) {}
void AudioEffect::getProgramName(char* text) { *text = '\0'; }

std::int32_t AudioEffect::getChunk(void** /*data*/, bool /*isPreset*/) { return 0; }
std::int32_t AudioEffect::setChunk(const void* /*data*/, std::int32_t /*byteSize*/,
                                   bool /*isPreset*/) {
  return 0;
}

void AudioEffect::setSampleRate(float hz) {
  if (std::isfinite(hz) && hz > 0.0F) m_sampleRate.store(hz, std::memory_order_relaxed);
}

void AudioEffect::setBlockSize(std::int32_t frames) {
  if (frames > 0) m_blockSize.store(frames, std::memory_order_relaxed);
}

void AudioEffect::setEditor(std::unique_ptr<AEffGUIEditor> editor) noexcept {
  m_editor = std::move(editor);
  if (m_editor) m_record.flags |= kHasEditor;
}

std::intptr_t AudioEffect::callHost(HostOpcode opcode, std::int32_t index, std::intptr_t value,
                                    void* ptr, float opt) {
  if (m_host == nullptr) return 0;
  if (opcode != HostOpcode::Version && !m_handedOver.load(std::memory_order_relaxed)) return 0;
  return m_host(&m_record, static_cast<std::int32_t>(opcode), index, value, ptr, opt);
}

} // namespace qlx::sdk
