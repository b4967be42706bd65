// SPDX-License-Identifier: ISC
#include "presets/panel/PresetPanelView.h"

#include "gui/CFrame.h"
#include "gui/controls/COptionMenu.h"
#include "gui/controls/ContextMenu.h"
#include "gui/dialogs/CMessageBox.h"
#include "platform/MessageBox.h"
#include "presets/panel/CPSKickButton.h"
#include "presets/panel/CPSRockerSwitch.h"
#include "presets/panel/CQLXTextEdit.h"
#include "presets/panel/CSaveLoadButton.h"
#include "presets/panel/LoadBitmap.h"
#include "resources/images/WindowLayout.h"

namespace qlx::presets {

namespace {

namespace layout = resources::layout;

enum ButtonKind : std::uint8_t { kRocker, kSaveLoad, kKick, kDoubleKick };

struct Button {
  std::int32_t tag;
  const char* name;
  ButtonKind kind;
  layout::PixelRect place;
  int bitmap;
};

// Later ones lie on top.
// clang-format off
constexpr Button kButtons[] = {
    {kPresetRockerTag, "Previous and next preset", kRocker, layout::kPresetRocker, 19997},
    {kLoadBankTag, "Load bank", kSaveLoad, layout::kLoadBank, 19993},
    {kSaveBankTag, "Save bank", kSaveLoad, layout::kSaveBank, 19994},
    {kDefaultBankTag, "Store default bank", kDoubleKick, layout::kBankDefault, 19990},
    {kLoadPresetTag, "Load preset", kSaveLoad, layout::kLoadPreset, 19998},
    {kSavePresetTag, "Save preset", kSaveLoad, layout::kSavePreset, 19999},
    {kDefaultPresetTag, "Store default preset", kDoubleKick, layout::kPresetDefault, 19899},
    {kRecallMemoATag, "Recall memory A", kKick, layout::kRecallA, 19991},
    {kStoreMemoATag, "Store memory A", kKick, layout::kStoreA, 19995},
    {kRecallMemoBTag, "Recall memory B", kKick, layout::kRecallB, 19992},
    {kStoreMemoBTag, "Store memory B", kKick, layout::kStoreB, 19996},
    {kUserManualTag, "Manual", kKick, layout::kManual, 989},
};
// clang-format on

constexpr int kMenuEntriesPerColumn = 8;
constexpr int kButtonFrames = 3;
constexpr int kRockerFrames = 5;

std::unique_ptr<gui::CControl> makeButton(const Button& button, gui::CControlListener& listener) {
  const gui::CRect place = gui::CRect::of(button.place);
  const gui::CBitmapRef strip = loadBitmap(button.bitmap);
  const gui::CCoord height =
      frameHeight(strip, button.kind == kRocker ? kRockerFrames : kButtonFrames);
  switch (button.kind) {
  case kRocker:
    return std::make_unique<CPSRockerSwitch>(place, &listener, button.tag, height, strip);
  case kSaveLoad:
    return std::make_unique<CSaveLoadButton>(place, &listener, button.tag, height, strip);
  case kKick:
  case kDoubleKick: break;
  }
  const auto press =
      button.kind == kKick ? CPSKickButton::Press::kSingle : CPSKickButton::Press::kDouble;
  return std::make_unique<CPSKickButton>(place, &listener, button.tag, height, strip, press);
}

std::unique_ptr<gui::COptionMenu> makeMenu(gui::CControlListener& listener,
                                           const gui::CBitmapRef& background,
                                           const std::array<PresetSlot, kNumPresetSlots>& slots) {
  auto menu = std::make_unique<gui::COptionMenu>(
      gui::CRect::of(layout::kPresetMenu), &listener, kPresetMenuTag, background,
      gui::kNoTextStyle | gui::kNoDrawStyle | gui::kPopupStyle | gui::kCheckStyle);
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
      layout::kName.left, layout::kName.right, layout::kName.centreY(), &listener, kPresetNameTag,
      name, frame.getBackground()));
  m_nameField->setName("Preset name");
  m_menu = &frame.addView(makeMenu(listener, frame.getBackground(), slots));
  m_menu->setName("Preset menu");
  m_menu->setCurrent(current);
  m_choice = &frame.addView(std::make_unique<gui::ContextMenu>());
  for (const Button& button : kButtons) {
    gui::CControl& control = frame.addView(makeButton(button, listener));
    control.setName(button.name);
    auto* const kick = dynamic_cast<CPSKickButton*>(&control);
    if (button.tag == kUserManualTag) m_manualButton = kick;
    const std::string what = button.tag == kDefaultBankTag ? "bank" : "preset";
    if (button.kind == kDoubleKick)
      kick->onChoiceWanted([this, kick, what] { offerDefaults(*kick, what); });
  }
}

void PresetPanelView::offerDefaults(CPSKickButton& button, const std::string& what) {
  const gui::CRect place = button.getViewSize();
  m_choice->openAt({place.left, place.bottom},
                   {{"Store as default " + what, false, [&button] { button.doublePress(false); }},
                    {"Clear default " + what, false, [&button] { button.doublePress(true); }}});
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
  if (platform::showMessageBox(nativeWindow(), title, text)) return;
  gui::CMessageBox::show(m_frame, title, text, {"OK"}, [](int /*button*/) {});
}

} // namespace qlx::presets
