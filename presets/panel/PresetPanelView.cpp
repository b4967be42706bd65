// SPDX-License-Identifier: ISC
#include "presets/panel/PresetPanelView.h"

#include "gui/CFrame.h"
#include "gui/controls/COptionMenu.h"
#include "gui/dialogs/CMessageBox.h"
#include "presets/panel/CPSKickButton.h"
#include "presets/panel/CPSRockerSwitch.h"
#include "presets/panel/CQLXTextEdit.h"
#include "presets/panel/CSaveLoadButton.h"
#include "presets/panel/LoadBitmap.h"

namespace qlx::presets {

namespace {

enum ButtonKind : std::uint8_t { kRocker, kSaveLoad, kKick, kDoubleKick };

struct Button {
  std::int32_t tag;
  ButtonKind kind;
  gui::CRect place;
  int bitmap;
};

// Later ones lie on top.
// clang-format off
constexpr Button kButtons[] = {
    {kPresetRockerTag, kRocker, {278, 554, 309, 568}, 19997},
    {kLoadBankTag, kSaveLoad, {54, 554, 66, 568}, 19993},
    {kSaveBankTag, kSaveLoad, {4, 554, 16, 568}, 19994},
    {kDefaultBankTag, kDoubleKick, {16, 556, 53, 566}, 19990},
    {kLoadPresetTag, kSaveLoad, {128, 554, 140, 568}, 19998},
    {kSavePresetTag, kSaveLoad, {69, 554, 81, 568}, 19999},
    {kDefaultPresetTag, kDoubleKick, {81, 556, 128, 566}, 19899},
    {kRecallMemoATag, kKick, {333, 554, 345, 568}, 19991},
    {kStoreMemoATag, kKick, {311, 554, 323, 568}, 19995},
    {kRecallMemoBTag, kKick, {371, 554, 383, 568}, 19992},
    {kStoreMemoBTag, kKick, {349, 554, 361, 568}, 19996},
    {kUserManualTag, kKick, {384, 554, 400, 568}, 989},
};
// clang-format on

constexpr gui::CCoord kNameLeft = 146.0;
constexpr gui::CCoord kNameRight = 262.0;
constexpr gui::CCoord kMiddle = 561.0; ///< of the strip
constexpr gui::CRect kMenuPlace{263, 554, 275, 568};
constexpr int kMenuEntriesPerColumn = 8;
constexpr int kButtonFrames = 3;
constexpr int kRockerFrames = 5;

std::unique_ptr<gui::CControl> makeButton(const Button& button, gui::CControlListener& listener) {
  const gui::CBitmapRef strip = loadBitmap(button.bitmap);
  const gui::CCoord height =
      frameHeight(strip, button.kind == kRocker ? kRockerFrames : kButtonFrames);
  switch (button.kind) {
  case kRocker:
    return std::make_unique<CPSRockerSwitch>(button.place, &listener, button.tag, height, strip);
  case kSaveLoad:
    return std::make_unique<CSaveLoadButton>(button.place, &listener, button.tag, height, strip);
  case kKick:
  case kDoubleKick: break;
  }
  const auto press =
      button.kind == kKick ? CPSKickButton::Press::kSingle : CPSKickButton::Press::kDouble;
  return std::make_unique<CPSKickButton>(button.place, &listener, button.tag, height, strip, press);
}

std::unique_ptr<gui::COptionMenu> makeMenu(gui::CControlListener& listener,
                                           const gui::CBitmapRef& background,
                                           const std::array<PresetSlot, kNumPresetSlots>& slots) {
  auto menu = std::make_unique<gui::COptionMenu>(kMenuPlace, &listener, kPresetMenuTag, background,
                                                 gui::kNoTextStyle | gui::kNoDrawStyle |
                                                     gui::kPopupStyle | gui::kCheckStyle);
  menu->setNbItemsPerColumn(kMenuEntriesPerColumn);
  for (const PresetSlot& slot : slots) menu->addEntry(slot.nameText());
  return menu;
}

} // namespace

PresetPanelView::PresetPanelView(gui::CFrame& frame, gui::CControlListener& listener,
                                 const std::array<PresetSlot, kNumPresetSlots>& slots, int current)
    : m_frame(frame) {
  const std::string_view name = slots[static_cast<std::size_t>(current)].nameText();
  m_nameField = &frame.addView(std::make_unique<CQLXTextEdit>(
      kNameLeft, kNameRight, kMiddle, &listener, kPresetNameTag, name, frame.getBackground()));
  m_menu = &frame.addView(makeMenu(listener, frame.getBackground(), slots));
  m_menu->setCurrent(current);
  for (const Button& button : kButtons) {
    gui::CControl& control = frame.addView(makeButton(button, listener));
    if (button.tag == kUserManualTag) m_manualButton = dynamic_cast<CPSKickButton*>(&control);
  }
}

void PresetPanelView::setNameField(const std::string& name) { m_nameField->setText(name); }

void PresetPanelView::makeEntryCurrent(int index) { m_menu->setCurrent(index); }

void PresetPanelView::setCurrentEntryTitle(const std::string& title) {
  m_menu->setEntryTitle(m_menu->getCurrentIndex(), title);
}

void PresetPanelView::redrawFrame() { m_frame.invalidAll(); }

std::uintptr_t PresetPanelView::nativeWindow() const { return m_frame.getWindow().handle(); }

const std::string& PresetPanelView::nameField() const { return m_nameField->getText(); }

const std::string& PresetPanelView::entryTitle(int index) const { return m_menu->getEntry(index); }

void PresetPanelView::acceptName() { m_nameField->endTextEdit(true); }

void PresetPanelView::releaseManualButton() { m_manualButton->release(); }

void PresetPanelView::showMessage(const std::string& title, const std::string& text) {
  gui::CMessageBox::show(m_frame, title, text, {"OK"}, [](int /*button*/) {});
}

} // namespace qlx::presets
