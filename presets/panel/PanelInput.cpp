// SPDX-License-Identifier: ISC
// What the user does with the preset panel.

#include "gui/CFrame.h"
#include "presets/format/ClippedText.h"
#include "presets/panel/CPresetSystemEditor.h"
#include "presets/panel/PresetPanelView.h"
#include "presets/store/CPresetSystemEffect.h"

#include <algorithm>

namespace qlx::presets {

namespace {

/// Buttons report 1 when they are pressed alone, and 0.5 for what they do besides.
constexpr float kBesides = 0.5F;
constexpr float kAloneFrom = 0.75F;

} // namespace

bool CPresetSystemEditor::open(void* /*parent*/) {
  if (m_frame == nullptr) return false;
  m_panelView = std::make_unique<PresetPanelView>(*m_frame, *this, m_store.getPresetSlots(),
                                                  m_store.getCurrentPreset());
  setPanel(m_panelView.get());
  return true;
}

void CPresetSystemEditor::acceptTypedName() {
  if (m_panelView == nullptr || !isWindowThread()) return;
  const auto frame = getFrame(); // the name field's, until it is through
  m_panelView->acceptName();
}

void CPresetSystemEditor::setFrame(std::shared_ptr<gui::CFrame> frame) {
  if (m_frame != nullptr) m_frame->getWindow().setListener(nullptr);
  m_frame = std::move(frame);
}

void CPresetSystemEditor::valueChanged(gui::CControl& control) {
  if (m_panelView == nullptr) return;
  const float value = control.getValue();
  switch (control.getTag()) {
  case kPresetNameTag:
    applyPresetName(std::string(cutText(m_panelView->nameField(), kPresetNameBytes)));
    break;
  case kPresetRockerTag: stepPreset(value); break;
  case kPresetMenuTag: {
    const auto index = static_cast<int>(value + 0.5F);
    // A copy: a host may change the presets while it is told.
    takePreset(index, std::string(m_panelView->entryTitle(index)));
    break;
  }
  case kLoadBankTag: loadBankFile(value == kBesides); break;
  case kSaveBankTag: saveBankFile(); break;
  case kLoadPresetTag: loadPresetFile(value == kBesides); break;
  case kSavePresetTag: savePresetFile(); break;
  case kDefaultBankTag:
    if (value >= kAloneFrom) {
      storeDefaultBank();
    } else {
      clearDefaultBank();
    }
    break;
  case kDefaultPresetTag:
    if (value >= kAloneFrom) {
      storeDefaultPreset();
    } else {
      clearDefaultPreset();
    }
    break;
  case kStoreMemoATag: storeMemoA(); break;
  case kStoreMemoBTag: storeMemoB(); break;
  case kRecallMemoATag: recallMemoA(); break;
  case kRecallMemoBTag: recallMemoB(); break;
  case kUserManualTag: openUserManual(); break;
  default: break;
  }
}

void CPresetSystemEditor::stepPreset(float direction) {
  if (direction == 0.0F) return;
  const int next = m_store.getCurrentPreset() + (direction > 0.0F ? 1 : -1);
  const int index = std::clamp(next, 0, kNumPresetSlots - 1);
  takePreset(index, std::string(m_store.getPresetSlot(index).nameText()));
}

void CPresetSystemEditor::takePreset(int index, const std::string& name) {
  if (PresetPanel* const shown = panel()) {
    shown->makeEntryCurrent(index);
    shown->setNameField(name);
  }
  m_store.selectPreset(index);
  m_store.renameCurrentPreset(name.c_str());
}

void CPresetSystemEditor::openUserManual() {
  const std::string path = m_settings.userManual();
  const std::uintptr_t owner = m_frame == nullptr ? 0 : m_frame->getWindow().handle();
  const bool asked = m_documents != nullptr && !path.empty() && m_documents->open(path, owner);
  if (!asked && !m_openingManual) reportManual(platform::DocumentOpener::Outcome::Failed);
  m_openingManual = m_openingManual || asked;
  if (m_panelView != nullptr) m_panelView->releaseManualButton();
}

void CPresetSystemEditor::pollUserManual() {
  if (!m_openingManual) return;
  if (const auto outcome = m_documents->poll()) {
    m_openingManual = false;
    reportManual(*outcome);
  }
}

void CPresetSystemEditor::reportManual(platform::DocumentOpener::Outcome outcome) {
  using Outcome = platform::DocumentOpener::Outcome;
  if (m_panelView == nullptr || outcome == Outcome::Opened) return;
  if (outcome == Outcome::NoProgram) {
    m_panelView->showMessage("Could not open manual file", "Make sure Acrobat Reader is installed");
  } else {
    m_panelView->showMessage("", "Could not open user manual");
  }
}

} // namespace qlx::presets
