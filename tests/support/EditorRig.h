// SPDX-License-Identifier: ISC
#pragma once

#include "editor/RotaryEditor.h"
#include "platform/offscreen/OffscreenWindow.h"
#include "plugin/parameters/ParameterFormatter.h"
#include "presets/store/CPresetSystemEffect.h"
#include "tests/support/MemorySettingsStore.h"
#include "tests/support/desktop/ScriptedDocumentOpener.h"
#include "tests/support/desktop/ScriptedFileSelector.h"

#include <array>
#include <atomic>
#include <cmath>
#include <functional>
#include <memory>
#include <string>
#include <vector>

namespace qlx::test {

/// An effect without sound: keeps its parameters, tells its editor, and writes down what reaches
/// the host: "(n" and ")n" around gestures, "n=v" with the value in thousandths.
class SilentEffect : public presets::CPresetSystemEffect, public editor::EffectReadout {
 public:
  SilentEffect() : CPresetSystemEffect(&host) { getRecord()->user = this; }
  using CPresetSystemEffect::setPresetEditor;

  void processReplacing(float** /*in*/, float** /*out*/, std::int32_t /*frames*/) override {}
  void processDoubleReplacing(double** /*in*/, double** /*out*/, std::int32_t /*n*/) override {}
  void setParameter(std::int32_t index, float value) override {
    if (index >= 0 && index < 36) {
      m_values[static_cast<std::size_t>(index)].store(value, std::memory_order_relaxed);
    }
    if (!isPresetLoading()) storeParameter(index, value);
    if (window != nullptr) window->setParameter(index, value);
  }
  float getParameter(std::int32_t index) override {
    return m_values.at(static_cast<std::size_t>(index)).load(std::memory_order_relaxed);
  }

  using Moment = std::chrono::steady_clock::time_point;
  double hornPhase(Moment /*now*/) const noexcept override { return horn; }
  double drumPhase(Moment /*now*/) const noexcept override { return drum; }
  bool speakersBypassed() const noexcept override { return bypassed; }
  float modWheelActivity() const noexcept override { return modulation; }
  double sustainState() const noexcept override { return sustain; }

  double horn = 0.0;
  double drum = 0.0;
  bool bypassed = false;
  float modulation = 0.0F;
  double sustain = 0.0;
  std::string log;
  bool makesRoom = true; ///< the host, for a window of another size
  std::function<void()> onAutomate = [] {};
  std::function<bool(sdk::EditorMenu&)> onMenu = [](sdk::EditorMenu&) { return false; };
  editor::RotaryEditor* window = nullptr;

 private:
  static std::intptr_t host(sdk::EffectRecord* record, std::int32_t opcode, std::int32_t index,
                            std::intptr_t value, void* ptr, float opt) {
    if (record == nullptr || record->user == nullptr) return 0;
    auto& effect = *static_cast<SilentEffect*>(record->user);
    const std::string number = std::to_string(index);
    const std::string gap = effect.log.empty() ? "" : " ";
    switch (static_cast<sdk::HostOpcode>(opcode)) {
    case sdk::HostOpcode::Automate:
      effect.log += gap + number + "=" + std::to_string(std::lround(opt * 1000.0F));
      effect.onAutomate();
      break;
    case sdk::HostOpcode::BeginEdit: effect.log += gap + "(" + number; break;
    case sdk::HostOpcode::EndEdit: effect.log += gap + ")" + number; break;
    case sdk::HostOpcode::SizeWindow:
      effect.log += gap + number + "x" + std::to_string(value);
      return effect.makesRoom ? 1 : 0;
    case sdk::HostOpcode::VendorSpecific:
      return index == sdk::kEditorMenuRequest && effect.onMenu(*static_cast<sdk::EditorMenu*>(ptr))
                 ? 1
                 : 0;
    default: break;
    }
    return 0;
  }

  std::array<std::atomic<float>, 36> m_values{};
};

/// One editor, on windows without a screen unless others are given.
class EditorRig {
 public:
  explicit EditorRig(const platform::WindowSystem* others = nullptr) {
    auto files = std::make_unique<ScriptedFileSelector>();
    auto documents = std::make_unique<ScriptedDocumentOpener>();
    selector = files.get();
    opener = documents.get();
    editor = std::make_unique<editor::RotaryEditor>(
        effect, effect,
        editor::RotaryEditor::Desktop{others == nullptr ? windows : *others, settings,
                                      std::move(files), std::move(documents)});
    editor->setFormatter(&formatter);
    effect.window = editor.get();
    effect.setPresetEditor(editor.get());
  }
  ~EditorRig() {
    effect.window = nullptr;
    effect.setPresetEditor(nullptr);
  }
  EditorRig(const EditorRig&) = delete;
  EditorRig& operator=(const EditorRig&) = delete;

  bool open() { return editor->open(reinterpret_cast<void*>(std::uintptr_t{7})); }
  platform::OffscreenWindow& window() const { return *windows.lastWindow(); }

  gui::CFrame& frame() const { return *editor->getFrame(); }

  /// What the window shows.
  std::vector<std::uint32_t> picture() const {
    const platform::PixelView view = window().picture();
    return {view.pixels, view.pixels + view.width * view.height};
  }

  // What a user does; carried out at the next idle.
  void mouse(platform::WindowEventType type, int x, int y,
             std::uint32_t button = platform::kPointerLeft, std::uint32_t modifiers = 0,
             bool doubleClick = false) {
    platform::WindowEvent event;
    event.type = type;
    event.x = x;
    event.y = y;
    event.button = button;
    event.buttons = type == platform::WindowEventType::kMouseUp ? 0 : button;
    event.modifiers = modifiers;
    event.doubleClick = doubleClick;
    event.distance = 1.0F;
    window().inject(event);
  }
  void press(int x, int y) { mouse(platform::WindowEventType::kMouseDown, x, y); }
  void release(int x, int y) { mouse(platform::WindowEventType::kMouseUp, x, y); }
  void click(int x, int y) {
    press(x, y);
    release(x, y);
    editor->idle();
  }
  void key(platform::VirtualKey key, std::string text = {}) {
    platform::WindowEvent event;
    event.type = platform::WindowEventType::kKeyDown;
    event.key = key;
    event.text = std::move(text);
    window().inject(event);
  }

  SilentEffect effect;
  platform::OffscreenWindowSystem windows;
  std::shared_ptr<MemorySettingsStore> settings = std::make_shared<MemorySettingsStore>();
  plugin::ParameterFormatter formatter;
  ScriptedFileSelector* selector = nullptr;
  ScriptedDocumentOpener* opener = nullptr;
  std::unique_ptr<editor::RotaryEditor> editor;
};

} // namespace qlx::test
