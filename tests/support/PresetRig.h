// SPDX-License-Identifier: ISC
#pragma once

#include <algorithm>
#include <cstring>
#include <memory>

#include "presets/panel/CPresetSystemEditor.h"
#include "presets/store/CPresetSystemEffect.h"
#include "tests/support/MemorySettingsStore.h"
#include "tests/support/PresetBytesBuilder.h"
#include "tests/support/desktop/ScriptedFileSelector.h"

namespace qlx::test {

/// A panel that remembers what it shows.
struct RecordingPanel : presets::PresetPanel {
  std::string nameField;
  std::array<std::string, 32> titles;
  int current = 0;
  int redraws = 0;

  void setNameField(const std::string& name) override { nameField = name; }
  void makeEntryCurrent(int index) override { current = index; }
  void setCurrentEntryTitle(const std::string& title) override {
    titles.at(static_cast<std::size_t>(current)) = title;
  }
  void redrawFrame() override { ++redraws; }
  std::uintptr_t nativeWindow() const override { return 77; }
};

struct RigEditor : presets::CPresetSystemEditor {
  using CPresetSystemEditor::CPresetSystemEditor;
  using CPresetSystemEditor::setPanel;
};

/// An effect that does nothing with its parameters but keep them. As the real one it stores every
/// change, and stores Lever (2) in all slots.
class RigEffect : public presets::CPresetSystemEffect {
 public:
  explicit RigEffect(sdk::HostCallback host) : CPresetSystemEffect(host) {
    setUniqueId(sdk::fourCharacters("QbrZ"));
  }
  using CPresetSystemEffect::setPresetEditor;

  void processReplacing(float** /*in*/, float** /*out*/, std::int32_t /*frames*/) override {}
  void processDoubleReplacing(double** /*in*/, double** /*out*/, std::int32_t /*n*/) override {}
  void setParameter(std::int32_t index, float value) override {
    if (index < 0 || index >= 36) return;
    m_applied[static_cast<std::size_t>(index)].store(value, std::memory_order_relaxed);
    if (index == 2) {
      storeParameterInAllSlots(index, value);
    } else if (!isPresetLoading()) {
      storeParameter(index, value);
    }
  }
  float getParameter(std::int32_t index) override {
    return m_applied.at(static_cast<std::size_t>(index)).load(std::memory_order_relaxed);
  }

 private:
  std::array<std::atomic<float>, 36> m_applied{};
};

/// -0 is not 0 here, and a name's bytes behind its end count.
inline bool sameBits(const presets::PresetSlot& a, const presets::PresetSlot& b) {
  return std::memcmp(&a, &b, sizeof a) == 0;
}

/// Everything that a refused load must leave alone.
struct RigState {
  std::array<presets::PresetSlot, 32> slots;
  int currentPreset = 0;
  std::array<float, 36> applied{};
  std::string nameField;
  std::array<std::string, 32> titles;
  int currentEntry = 0;

  friend bool operator==(const RigState& a, const RigState& b) {
    return std::equal(a.slots.begin(), a.slots.end(), b.slots.begin(), sameBits) &&
           a.currentPreset == b.currentPreset && a.applied == b.applied &&
           a.nameField == b.nameField && a.titles == b.titles && a.currentEntry == b.currentEntry;
  }
};

/// One instance with its window open, its slots holding makeBank(1), preset 3 current and
/// makeSlot(900) as template.
class PresetRig {
 public:
  explicit PresetRig(
      std::shared_ptr<platform::SettingsStore> settings = std::make_shared<MemorySettingsStore>()) {
    auto dialog = std::make_unique<ScriptedFileSelector>();
    selector = dialog.get();
    editor = std::make_unique<RigEditor>(effect, std::move(settings), std::move(dialog));
    effect.setPresetEditor(editor.get());
    effect.setPresetSlot(0, makeSlot(900));
    effect.capturePresetTemplate();
    fill(makeBank(1), 3);
    editor->setPanel(&panel);
    editor->refreshPanel();
  }
  ~PresetRig() { effect.setPresetEditor(nullptr); }
  PresetRig(const PresetRig&) = delete;
  PresetRig& operator=(const PresetRig&) = delete;

  void fill(const std::array<presets::PresetSlot, 32>& slots, int current) {
    for (int i = 0; i < 32; ++i) effect.setPresetSlot(i, slots[static_cast<std::size_t>(i)]);
    effect.selectPreset(current);
  }

  /// Through the record, as a host does it. The bytes lie in a block of exactly their size.
  int setChunk(const std::vector<std::uint8_t>& bytes) {
    std::unique_ptr<std::uint8_t[]> data(new std::uint8_t[bytes.size()]);
    std::copy(bytes.begin(), bytes.end(), data.get());
    const auto answer = dispatch(sdk::EffectOpcode::SetChunk, 0,
                                 static_cast<std::intptr_t>(bytes.size()), data.get());
    hostBufferKept = std::equal(bytes.begin(), bytes.end(), data.get());
    return static_cast<int>(answer);
  }
  std::vector<std::uint8_t> getChunk() {
    void* data = nullptr;
    const auto size = dispatch(sdk::EffectOpcode::GetChunk, 0, 0, &data);
    const auto* bytes = static_cast<const std::uint8_t*>(data);
    return size > 0 ? std::vector<std::uint8_t>(bytes, bytes + size) : std::vector<std::uint8_t>();
  }
  std::intptr_t dispatch(sdk::EffectOpcode opcode, int index, std::intptr_t value, void* ptr) {
    auto* record = effect.getRecord();
    return record->dispatcher(record, static_cast<std::int32_t>(opcode), index, value, ptr, 0.0F);
  }

  presets::PresetSlot slot(int index) const { return effect.getPresetSlot(index); }
  RigState state() {
    RigState now{effect.getPresetSlots(),
                 effect.getCurrentPreset(),
                 {},
                 panel.nameField,
                 panel.titles,
                 panel.current};
    for (int p = 0; p < 36; ++p) now.applied[static_cast<std::size_t>(p)] = effect.getParameter(p);
    return now;
  }

  /// Whether current preset, effect and panel agree with the slots.
  bool inStep() {
    const RigState now = state();
    const auto& slot = now.slots[static_cast<std::size_t>(now.currentPreset)];
    for (std::size_t i = 0; i < 32; ++i) {
      if (now.titles[i] != now.slots[i].nameText()) return false;
    }
    return now.applied == slot.values && now.currentEntry == now.currentPreset &&
           now.nameField == slot.nameText();
  }

  static std::intptr_t host(sdk::EffectRecord* /*effect*/, std::int32_t opcode,
                            std::int32_t /*index*/, std::intptr_t /*value*/, void* /*ptr*/,
                            float /*opt*/) {
    return opcode == static_cast<std::int32_t>(sdk::HostOpcode::Version) ? 2400 : 0;
  }

  RecordingPanel panel;
  RigEffect effect{&host};
  ScriptedFileSelector* selector = nullptr;
  std::unique_ptr<RigEditor> editor;
  bool hostBufferKept = true;
};

} // namespace qlx::test
