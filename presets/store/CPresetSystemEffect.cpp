// SPDX-License-Identifier: ISC
#include "presets/store/CPresetSystemEffect.h"

#include "presets/format/ClippedText.h"
#include "presets/store/PresetStoreEditor.h"

#include <algorithm>
#include <cstring>
#include <string>
#include <string_view>

namespace qlx::presets {
namespace {

static_assert(std::atomic<std::int32_t>::is_always_lock_free);

constexpr std::int32_t kLeverParameter = 2;
constexpr std::int32_t kStopParameter = 4;

/// The 24 bytes of a name and eight zeros, so that a full name ends too.
void writeName(const PresetSlot& slot, char* text) {
  constexpr std::size_t kZeros = 8;
  std::memcpy(text, slot.name.data(), kPresetNameBytes);
  std::memset(text + kPresetNameBytes, 0, kZeros);
}

} // namespace

CPresetSystemEffect::CPresetSystemEffect(sdk::HostCallback host)
    : AudioEffectX(host, 1, kNumPresetParameters), m_chunkBuffer(kChunkBytes) {
  setFlags(sdk::kProgramChunks);
}

void CPresetSystemEffect::setProgramName(const char* name) {
  // One byte more than a name holds tells whether the cut falls inside a character.
  const std::string_view head(name, std::find(name, name + kPresetNameBytes + 1, '\0'));
  const std::string text(cutText(head, kPresetNameBytes));
  PresetSlot slot;
  slot.setNameText(text);
  m_presetSlots.setName(getCurrentPreset(), slot.name);
  if (m_presetEditor != nullptr) m_presetEditor->showPresetName(text);
}

void CPresetSystemEffect::getProgramName(char* text) {
  writeName(getPresetSlot(getCurrentPreset()), text);
}

bool CPresetSystemEffect::getProgramNameIndexed(std::int32_t /*category*/, std::int32_t index,
                                                char* text) {
  if (!isPresetSlot(index)) return false;
  writeName(getPresetSlot(index), text);
  return true;
}

std::int32_t CPresetSystemEffect::getChunk(void** data, bool /*isPreset*/) {
  if (m_presetEditor == nullptr) return 0;
  const std::vector<std::uint8_t> image = m_presetEditor->writeBankImage();
  if (image.empty()) return 0;
  m_chunkBuffer.assign(kChunkBytes, 0);
  const auto head = makeChunkHead(getPresetFileId());
  std::copy(head.begin(), head.end(), m_chunkBuffer.begin());
  std::memcpy(m_chunkBuffer.data() + head.size(), image.data(), image.size());
  *data = m_chunkBuffer.data();
  return static_cast<std::int32_t>(head.size() + image.size());
}

std::int32_t CPresetSystemEffect::setChunk(const void* data, std::int32_t byteSize,
                                           bool /*isPreset*/) {
  if (data == nullptr || byteSize < 0) return -1;
  const Bytes chunk(static_cast<const std::uint8_t*>(data), static_cast<std::size_t>(byteSize));
  const auto found = openChunk(chunk, getPresetFileId());
  if (!found) return -1;
  if (const auto* legacy = std::get_if<LegacyChunkData>(&*found)) {
    return loadLegacyBankChunk(*legacy);
  }
  if (m_presetEditor != nullptr) {
    const auto& image = std::get<RecordData>(*found);
    m_presetEditor->readBankImage(image.records, image.header, image.reversed);
  }
  return 0;
}

std::int32_t CPresetSystemEffect::loadLegacyBankChunk(const LegacyChunkData& data) {
  const auto bank = readLegacyChunk(data.chunk, data.reversed, loadedParameters());
  if (!bank) return -1;
  for (std::size_t i = 0; i < bank->slots.size(); ++i) {
    updatePresetSlot(static_cast<std::int32_t>(i), bank->slots[i]);
  }
  if (bank->complete) selectPreset(bank->currentIndex);
  if (m_presetEditor != nullptr) m_presetEditor->refreshPanel();
  return bank->complete ? 0 : -1;
}

std::int32_t CPresetSystemEffect::getCurrentPreset() const {
  return m_currentPreset.load(std::memory_order_relaxed);
}

void CPresetSystemEffect::applySlot(std::int32_t index) {
  const ThreadMarks::Scope applying(m_applying);
  const float lever = m_presetSlots.value(index, kLeverParameter);
  const float stop = m_presetSlots.value(index, kStopParameter);
  for (std::int32_t p = 0; p < kNumPresetParameters; ++p) {
    // Lever and Stop belong together, so they are taken together. Of all others the newest counts:
    // another thread may have just stored it.
    const float value = p == kLeverParameter  ? lever
                        : p == kStopParameter ? stop
                                              : m_presetSlots.value(index, p);
    if (isNormalised(value)) setParameter(p, value);
  }
}

void CPresetSystemEffect::selectPreset(std::int32_t index) {
  const ThreadMarks::Scope loading(m_loading);
  m_currentPreset.store(index, std::memory_order_relaxed);
  applySlot(index);
  // Hosts take the gesture as the sign that the project has to be saved.
  updateDisplay();
  beginEdit(0);
  endEdit(0);
}

void CPresetSystemEffect::renameCurrentPreset(const char* name) {
  if (name != nullptr) {
    PresetSlot slot;
    slot.setNameText(name);
    m_presetSlots.setName(getCurrentPreset(), slot.name);
  }
  updateDisplay();
}

std::uint32_t CPresetSystemEffect::getPresetFileId() const {
  return static_cast<std::uint32_t>(getUniqueId());
}

void CPresetSystemEffect::resetPresetToTemplate(std::int32_t index) {
  setPresetSlot(index, m_templatePreset);
}

bool CPresetSystemEffect::isParameterExcludedFromSave(std::int32_t parameter) const {
  return !isPresetParameter(parameter);
}

bool CPresetSystemEffect::isParameterExcludedFromLoad(std::int32_t parameter) const {
  return !isPresetParameter(parameter);
}

void CPresetSystemEffect::capturePresetTemplate() {
  m_templatePreset = getPresetSlot(0);
  if (m_presetEditor != nullptr) m_presetEditor->loadStartupDefaults();
}

void CPresetSystemEffect::storeParameter(std::int32_t index, float value) {
  if (isPresetParameter(index)) m_presetSlots.setValue(getCurrentPreset(), index, value);
}

void CPresetSystemEffect::storeParameterInAllSlots(std::int32_t index, float value) {
  if (!isPresetParameter(index)) return;
  for (std::int32_t slot = 0; slot < kNumPresetSlots; ++slot) {
    m_presetSlots.setValue(slot, index, value);
  }
}

std::array<PresetSlot, kNumPresetSlots> CPresetSystemEffect::getPresetSlots() const {
  std::array<PresetSlot, kNumPresetSlots> slots;
  for (std::int32_t i = 0; i < kNumPresetSlots; ++i) {
    slots[static_cast<std::size_t>(i)] = getPresetSlot(i);
  }
  return slots;
}

void CPresetSystemEffect::updatePresetSlot(std::int32_t index, const SlotUpdate& update) {
  if (update.fromTemplate) resetPresetToTemplate(index);
  if (update.named) m_presetSlots.setName(index, update.slot.name);
  for (std::int32_t p = 0; p < kNumPresetParameters; ++p) {
    const auto parameter = static_cast<std::size_t>(p);
    if (update.changed[parameter]) {
      m_presetSlots.setValue(index, p, update.slot.values[parameter]);
    }
  }
}

ParameterSet CPresetSystemEffect::savedParameters() const {
  ParameterSet saved;
  for (std::int32_t p = 0; p < kNumPresetParameters; ++p) {
    saved.set(static_cast<std::size_t>(p), !isParameterExcludedFromSave(p));
  }
  return saved;
}

ParameterSet CPresetSystemEffect::loadedParameters() const {
  ParameterSet loaded;
  for (std::int32_t p = 0; p < kNumPresetParameters; ++p) {
    loaded.set(static_cast<std::size_t>(p), !isParameterExcludedFromLoad(p));
  }
  return loaded;
}

} // namespace qlx::presets
