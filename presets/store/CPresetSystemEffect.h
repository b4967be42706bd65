// SPDX-License-Identifier: ISC
#pragma once

#include "presets/format/LegacyPresetImage.h"
#include "presets/format/PresetBank.h"
#include "presets/format/PresetData.h"
#include "presets/store/ThreadMarks.h"
#include "sdk/AudioEffectX.h"

#include <array>
#include <atomic>
#include <cstdint>
#include <vector>

namespace qlx::presets {

class PresetStoreEditor;

/// The preset store of an effect: 32 slots of which one is current and follows every change of a
/// parameter. The host sees one program; all slots travel in its state chunk. Values may be stored
/// on any thread, the rest is for the host's user-interface thread.
class CPresetSystemEffect : public sdk::AudioEffectX {
 public:
  /// `host` may be null. All slots start with empty names and zeros.
  explicit CPresetSystemEffect(sdk::HostCallback host);

  std::int32_t getProgram() override { return 0; }
  void setProgram(std::int32_t /*index*/) override {}
  void setProgramName(const char* name) override;
  /// Writes 32 bytes.
  void getProgramName(char* text) override;
  bool getProgramNameIndexed(std::int32_t category, std::int32_t index, char* text) override;
  std::int32_t getChunk(void** data, bool isPreset) override;
  /// Answers 0, or -1 for data that is not ours, which changes nothing. The oldest chunks are the
  /// exception: a value outside 0..1 is answered with -1 after the slots before it have been taken.
  std::int32_t setChunk(const void* data, std::int32_t byteSize, bool isPreset) override;
  void setParameter(std::int32_t index, float value) override { storeParameter(index, value); }

  virtual std::int32_t getCurrentPreset() const;
  /// Makes slot `index` (0..31) current, applies its values that lie in 0..1 through setParameter
  /// and tells the host.
  virtual void selectPreset(std::int32_t index);
  /// Null only tells the host to look again.
  virtual void renameCurrentPreset(const char* name);
  /// Stands in front of everything that is saved, and tells by its byte order which machine wrote
  /// it.
  virtual std::uint32_t getPresetFileId() const;
  virtual void resetPresetToTemplate(std::int32_t index);
  virtual bool isParameterExcludedFromSave(std::int32_t parameter) const;
  virtual bool isParameterExcludedFromLoad(std::int32_t parameter) const;
  /// Slot 0 becomes the template; then the user's stored defaults are loaded.
  virtual void capturePresetTemplate();

  /// Writes a parameter's new value into the current slot. Any thread; indices of no preset
  /// parameter are ignored.
  void storeParameter(std::int32_t index, float value);
  /// The same for parameters that all presets share.
  void storeParameterInAllSlots(std::int32_t index, float value);
  /// Whether the calling thread is inside selectPreset: what it changes comes from the slot and
  /// need not go back to it. What other threads change meanwhile is stored as always. Any thread.
  bool isPresetLoading() const { return m_loading.holdsThisThread(); }
  /// Whether the calling thread is applying a slot's values, the part of selectPreset before the
  /// host is told. Any thread.
  bool isApplyingPreset() const { return m_applying.holdsThisThread(); }

  PresetSlot getPresetSlot(std::int32_t index) const { return m_presetSlots.slot(index); }
  void setPresetSlot(std::int32_t index, const PresetSlot& slot) {
    m_presetSlots.setSlot(index, slot);
  }
  std::array<PresetSlot, kNumPresetSlots> getPresetSlots() const;
  void updatePresetSlot(std::int32_t index, const SlotUpdate& update);

  ParameterSet savedParameters() const;
  ParameterSet loadedParameters() const;

 protected:
  /// Tells who writes and reads the images of chunks and defaults. The editor must outlive every
  /// call of the host's; this class doesn't touch it while it is being destroyed.
  void setPresetEditor(PresetStoreEditor* editor) { m_presetEditor = editor; }

 private:
  std::int32_t loadLegacyBankChunk(const LegacyChunkData& data);
  void applySlot(std::int32_t index);

  static constexpr std::size_t kChunkBytes =
      kChunkHeadBytes + imageBytes(kNumPresetSlots, kNumPresetParameters);

  PresetBank m_presetSlots;
  PresetSlot m_templatePreset;
  std::atomic<std::int32_t> m_currentPreset{0};
  ThreadMarks m_loading;
  ThreadMarks m_applying;
  std::vector<std::uint8_t> m_chunkBuffer; ///< what the host was last given
  PresetStoreEditor* m_presetEditor = nullptr;
};

} // namespace qlx::presets
