// SPDX-License-Identifier: ISC
#include "presets/panel/CPresetSystemEditor.h"

#include "gui/CControl.h"
#include "gui/CFrame.h"
#include "gui/dialogs/CFileSelector.h"
#include "platform/Files.h"
#include "presets/format/ClippedText.h"
#include "presets/panel/PresetPanelView.h"
#include "presets/store/CPresetSystemEffect.h"

#include <algorithm>
#include <cstdio>

namespace qlx::presets {
namespace {

static_assert(std::atomic<std::thread::id>::is_always_lock_free);

using Style = platform::FileRequest::Style;

/// Buttons report 1 for a plain press and 0.5 for the second function (a modifier key held).
constexpr float kSecondFunction = 0.5F;
constexpr float kPlainPressFrom = 0.75F;

void writeToStandardError(std::string_view line) {
  std::fwrite(line.data(), 1, line.size(), stderr);
  std::fputc('\n', stderr);
}

std::string nameOf(const PresetSlot& slot) { return std::string(slot.nameText()); }

} // namespace

CPresetSystemEditor::CPresetSystemEditor(CPresetSystemEffect& effect,
                                         std::shared_ptr<platform::SettingsStore> settings,
                                         std::unique_ptr<platform::FileSelector> files,
                                         std::unique_ptr<platform::DocumentOpener> documents)
    : AEffGUIEditor(&effect), m_store(effect),
      m_settings(std::move(settings)), m_locations{platform::currentDirectory(), {}, {}},
      m_dialog(
          std::make_unique<gui::CFileSelector>(std::move(files), [this] { return m_frame.get(); })),
      m_documents(std::move(documents)) {}

CPresetSystemEditor::~CPresetSystemEditor() { CPresetSystemEditor::saveFileLocations(); }

void CPresetSystemEditor::setFrame(std::shared_ptr<gui::CFrame> frame) {
  if (m_frame != nullptr) m_frame->getWindow().setListener(nullptr);
  m_frame = std::move(frame);
}

bool CPresetSystemEditor::open(void* /*parent*/) {
  if (m_frame == nullptr) return false;
  m_panelView = std::make_unique<PresetPanelView>(*m_frame, *this, m_store.getPresetSlots(),
                                                  m_store.getCurrentPreset());
  setPanel(m_panelView.get());
  return true;
}

void CPresetSystemEditor::close() {
  m_dialog.dismiss();
  if (m_documents != nullptr) m_documents->cancel();
  m_openingManual = false;
  setPanel(nullptr);
  m_panelView = nullptr;
}

void CPresetSystemEditor::idle() {
  if (panel() == nullptr) return;
  if (m_panelOutdated.exchange(false, std::memory_order_relaxed)) refreshPanel();
  if (const auto choice = m_dialog.poll(m_locations)) carryOut(*choice);
  pollUserManual();
  if (const auto frame = getFrame()) frame->idle();
}

void CPresetSystemEditor::setPanel(PresetPanel* panel) {
  m_panel = panel;
  m_panelOutdated.store(false,
                        std::memory_order_relaxed); // it was built from the slots as they are
  m_panelThread.store(panel != nullptr ? std::this_thread::get_id() : std::thread::id(),
                      std::memory_order_relaxed);
}

PresetPanel* CPresetSystemEditor::panel() {
  if (isWindowThread()) return m_panel;
  m_panelOutdated.store(true, std::memory_order_relaxed);
  return nullptr;
}

void CPresetSystemEditor::showPresetName(const std::string& name) {
  if (PresetPanel* const shown = panel()) {
    shown->setNameField(name);
    shown->setCurrentEntryTitle(std::string(cutText(name, kPresetNameBytes)));
  }
}

void CPresetSystemEditor::applyPresetName(const std::string& name) {
  showPresetName(name);
  m_store.renameCurrentPreset(name.c_str());
}

void CPresetSystemEditor::refreshPanel() {
  for (int i = 0; i < kNumPresetSlots; ++i) retitleEntry(i);
  showSlot(m_store.getCurrentPreset());
}

void CPresetSystemEditor::retitleEntry(int index) {
  if (PresetPanel* const shown = panel()) {
    shown->makeEntryCurrent(index);
    shown->setCurrentEntryTitle(nameOf(m_store.getPresetSlot(index)));
  }
}

void CPresetSystemEditor::showSlot(int index) {
  if (PresetPanel* const shown = panel()) {
    shown->makeEntryCurrent(index);
    shown->setNameField(nameOf(m_store.getPresetSlot(index)));
  }
}

void CPresetSystemEditor::loadStartupDefaults() {
  loadDefaultBank();
  m_store.selectPreset(0);
  loadDefaultPreset();
  loadFileLocations();
}

void CPresetSystemEditor::readLegacyBankImage(Bytes body, bool reversed, int recordCount,
                                              int valueCount) {
  const auto slots =
      readLegacyBank(body, reversed, recordCount, valueCount, m_store.loadedParameters());
  if (!slots) return;
  for (std::size_t i = 0; i < slots->size(); ++i) {
    m_store.updatePresetSlot(static_cast<int>(i), (*slots)[i]);
    retitleEntry(static_cast<int>(i));
  }
  showSlot(0);
  m_store.selectPreset(0);
}

void CPresetSystemEditor::readBankImage(Bytes records, const ImageHeader& header, bool reversed) {
  const auto present = m_store.getPresetSlots();
  const auto bank = readBankRecords(header, records, reversed, present, writeToStandardError);
  if (!bank) return;
  for (std::size_t i = 0; i < bank->slots.size(); ++i) {
    m_store.updatePresetSlot(static_cast<int>(i), bank->slots[i]);
    if (bank->slots[i].named) retitleEntry(static_cast<int>(i));
  }
  showSlot(bank->currentIndex);
  m_store.selectPreset(bank->currentIndex);
}

std::vector<std::uint8_t> CPresetSystemEditor::writeBankImage() {
  return makeBankImage(m_store.getPresetSlots(), m_store.getCurrentPreset(),
                       m_store.getPresetFileId(), m_store.savedParameters(), writeToStandardError);
}

void CPresetSystemEditor::readLegacyPresetImage(Bytes body, bool reversed, int valueCount) {
  if (const auto update =
          readLegacyPreset(body, reversed, valueCount, m_store.loadedParameters())) {
    takeIntoCurrentSlot(*update);
  }
}

void CPresetSystemEditor::readPresetImage(Bytes records, const ImageHeader& header, bool reversed) {
  if (const auto update = readPresetRecords(header, records, reversed)) {
    takeIntoCurrentSlot(*update);
  }
}

void CPresetSystemEditor::takeIntoCurrentSlot(const SlotUpdate& update) {
  const int current = m_store.getCurrentPreset();
  m_store.updatePresetSlot(current, update);
  retitleEntry(current);
  applyPresetName(nameOf(m_store.getPresetSlot(current)));
  m_store.selectPreset(current);
}

std::vector<std::uint8_t> CPresetSystemEditor::writePresetImage() {
  return makePresetImage(m_store.getPresetSlot(m_store.getCurrentPreset()),
                         m_store.getPresetFileId(), m_store.savedParameters());
}

bool CPresetSystemEditor::loadPresetData(Bytes bytes, Scope scope, bool otherOrder) {
  const auto data = openPresetData(bytes, m_store.getPresetFileId(), scope, otherOrder);
  if (!data) return false;
  if (const auto* image = std::get_if<RecordData>(&*data)) {
    if (scope == Scope::Preset) {
      readPresetImage(image->records, image->header, image->reversed);
    } else {
      readBankImage(image->records, image->header, image->reversed);
    }
  } else if (const auto* legacy = std::get_if<LegacyData>(&*data)) {
    if (scope == Scope::Preset) {
      readLegacyPresetImage(legacy->body, legacy->reversed, legacy->valueCount);
    } else {
      readLegacyBankImage(legacy->body, legacy->reversed, legacy->recordCount, legacy->valueCount);
    }
  }
  return true;
}

void CPresetSystemEditor::loadBankFile(bool reversed) {
  askForFile({Style::Open, Scope::Bank, reversed});
}

void CPresetSystemEditor::saveBankFile() { askForFile({Style::Save, Scope::Bank}); }

void CPresetSystemEditor::loadPresetFile(bool reversed) {
  askForFile({Style::Open, Scope::Preset, reversed});
}

void CPresetSystemEditor::savePresetFile() { askForFile({Style::Save, Scope::Preset}); }

void CPresetSystemEditor::askForFile(const FileTask& task) {
  if (const PresetPanel* const shown = panel()) {
    m_dialog.ask(task, m_locations, shown->nativeWindow());
  }
}

void CPresetSystemEditor::carryOut(const PresetFileDialog::Choice& choice) {
  const Scope scope = choice.task.scope;
  if (choice.task.style == Style::Save) {
    platform::replaceFile(choice.path,
                          scope == Scope::Preset ? writePresetImage() : writeBankImage());
    return;
  }
  const auto bytes = platform::readFile(choice.path, kMaxPresetFileBytes);
  if (!bytes || !loadPresetData(*bytes, scope, choice.task.otherOrder)) return;
  if (scope == Scope::Bank) {
    // A bank from a file starts at its first preset, whichever was current when it was saved.
    showSlot(0);
    m_store.selectPreset(0);
  }
  if (PresetPanel* const shown = panel()) shown->redrawFrame();
}

void CPresetSystemEditor::storeDefaultBank() {
  m_settings.writeImage(StoredImage::DefaultBank, writeBankImage());
}

void CPresetSystemEditor::clearDefaultBank() { m_settings.clearImage(StoredImage::DefaultBank); }

void CPresetSystemEditor::loadDefaultBank() {
  loadPresetData(m_settings.readImage(StoredImage::DefaultBank), Scope::Bank);
}

void CPresetSystemEditor::storeDefaultPreset() {
  m_settings.writeImage(StoredImage::DefaultPreset, writePresetImage());
}

void CPresetSystemEditor::clearDefaultPreset() {
  m_settings.clearImage(StoredImage::DefaultPreset);
}

void CPresetSystemEditor::loadDefaultPreset() {
  loadPresetData(m_settings.readImage(StoredImage::DefaultPreset), Scope::Preset);
}

void CPresetSystemEditor::storeMemoA() {
  m_settings.writeImage(StoredImage::MemoA, writePresetImage());
}

void CPresetSystemEditor::storeMemoB() {
  m_settings.writeImage(StoredImage::MemoB, writePresetImage());
}

void CPresetSystemEditor::recallMemoA() {
  loadPresetData(m_settings.readImage(StoredImage::MemoA), Scope::Preset);
}

void CPresetSystemEditor::recallMemoB() {
  loadPresetData(m_settings.readImage(StoredImage::MemoB), Scope::Preset);
}

void CPresetSystemEditor::saveFileLocations() { m_settings.writeLocations(m_locations); }

void CPresetSystemEditor::loadFileLocations() { m_locations = m_settings.readLocations(); }

// --- What the user does with the panel ---

void CPresetSystemEditor::acceptTypedName() {
  if (m_panelView == nullptr || !isWindowThread()) return;
  const auto frame = getFrame(); // the name field's, until it is through
  m_panelView->acceptName();
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
  case kLoadBankTag: loadBankFile(value == kSecondFunction); break;
  case kSaveBankTag: saveBankFile(); break;
  case kLoadPresetTag: loadPresetFile(value == kSecondFunction); break;
  case kSavePresetTag: savePresetFile(); break;
  case kDefaultBankTag:
    if (value >= kPlainPressFrom) {
      storeDefaultBank();
    } else {
      clearDefaultBank();
    }
    break;
  case kDefaultPresetTag:
    if (value >= kPlainPressFrom) {
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
