// SPDX-License-Identifier: ISC
#pragma once

#include "gui/CRect.h"
#include "gui/drawing/CBitmap.h"
#include "presets/format/PresetSlot.h"
#include "presets/panel/PresetPanel.h"

#include <array>
#include <cstdint>
#include <string>

namespace qlx::gui {
class CControlListener;
class CFrame;
class COptionMenu;
class ContextMenu;
} // namespace qlx::gui

namespace qlx::presets {

class CPSKickButton;
class CQLXTextEdit;

/// Tags of the panel's controls.
enum PanelTag : std::int32_t {
  kPresetNameTag = 149,
  kPresetRockerTag = 150,
  kLoadBankTag = 151,
  kSaveBankTag = 152,
  kLoadPresetTag = 153,
  kSavePresetTag = 154,
  kPresetMenuTag = 161,
  kDefaultBankTag = 162,
  kDefaultPresetTag = 163,
  kStoreMemoATag = 164,
  kStoreMemoBTag = 165,
  kRecallMemoATag = 166,
  kRecallMemoBTag = 167,
  kUserManualTag = 168,
};

/// The strip along the bottom of the window. Its controls belong to the frame, which outlives it.
class PresetPanelView final : public PresetPanel {
 public:
  /// Adds the controls on top of what the frame has. The name field and the menu show their parts
  /// of the frame's background.
  PresetPanelView(gui::CFrame& frame, gui::CControlListener& listener,
                  const std::array<PresetSlot, kNumPresetSlots>& slots, int current);

  void setNameField(const std::string& name) override;
  void makeEntryCurrent(int index) override;
  void setCurrentEntryTitle(const std::string& title) override;
  void redrawFrame() override;
  std::uintptr_t nativeWindow() const override;

  const std::string& nameField() const;
  /// `index` of a slot.
  const std::string& entryTitle(int index) const;
  /// Ends the typing of a name as Enter does.
  void acceptName();
  /// The press of the manual button is over.
  void releaseManualButton();
  /// A message over the window with a button to close it. Nothing while another one is shown.
  void showMessage(const std::string& title, const std::string& text);

 private:
  void offerDefaults(CPSKickButton& button, const std::string& what);

  gui::CFrame& m_frame;
  CQLXTextEdit* m_nameField = nullptr;
  gui::COptionMenu* m_menu = nullptr;
  CPSKickButton* m_manualButton = nullptr;
  gui::ContextMenu* m_choice = nullptr;
};

} // namespace qlx::presets
