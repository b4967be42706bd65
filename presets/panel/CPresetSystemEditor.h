// SPDX-License-Identifier: ISC
#pragma once

#include "gui/CControlListener.h"
#include "platform/DocumentOpener.h"
#include "platform/FileSelector.h"
#include "platform/SettingsStore.h"
#include "presets/panel/PresetFileDialog.h"
#include "presets/panel/PresetPanel.h"
#include "presets/store/PersistentSettings.h"
#include "presets/store/PresetStoreEditor.h"
#include "sdk/AEffGUIEditor.h"

#include <atomic>
#include <memory>
#include <string>
#include <thread>
#include <vector>

namespace qlx::gui {
class CFrame;
} // namespace qlx::gui

namespace qlx::presets {

class CPresetSystemEffect;
class PresetPanelView;

/// The editor's half of the preset system: images of the store's slots, files, stored settings, and
/// the preset manager panel kept in step. Works with the window closed; only the file dialogs need
/// it open. For the host's user-interface thread, but a host that hands over state on another
/// thread gets a panel that follows at the next idle.
class CPresetSystemEditor : public sdk::AEffGUIEditor,
                            public gui::CControlListener,
                            public PresetStoreEditor {
 public:
  /// @param effect the store; outlives the editor except while this is being destroyed
  /// @param settings shared by instances in one process at will
  /// @param files null: files are chosen from a list inside the window
  /// @param documents null: no documents can be opened on this system
  CPresetSystemEditor(CPresetSystemEffect& effect,
                      std::shared_ptr<platform::SettingsStore> settings,
                      std::unique_ptr<platform::FileSelector> files,
                      std::unique_ptr<platform::DocumentOpener> documents = nullptr);
  /// Saves the file locations; doesn't touch the effect.
  ~CPresetSystemEditor() override;

  /// Builds the panel on top of what the frame has; false without a frame.
  bool open(void* parent) override;
  /// Forgets the panel, whose controls the frame releases. Closes a file dialog that is open; it
  /// then gives no answer.
  void close() override;
  /// Handles what happened to the window, carries out what the user chose in a file dialog, and
  /// redraws what has changed.
  void idle() override;
  /// Does what the panel's control with this tag is there for; nothing for other tags.
  void valueChanged(gui::CControl& control) override;

  /// Shows `name` in the name field and as the title of the menu's current entry; the store doesn't
  /// change.
  void showPresetName(const std::string& name) override;

  /// The user's default bank and preset over the store's slots, and the file locations; ends on
  /// preset 0.
  void loadStartupDefaults() override;

  // Readers of image bodies, bounded by the spans, and writers. A bank reader selects the bank's
  // current preset, a preset reader fills the current slot and selects it. A refused body changes
  // nothing.
  virtual void readLegacyBankImage(Bytes body, bool reversed, int recordCount, int valueCount);
  void readBankImage(Bytes records, const ImageHeader& header, bool reversed) override;
  std::vector<std::uint8_t> writeBankImage() override;
  virtual void readLegacyPresetImage(Bytes body, bool reversed, int valueCount);
  virtual void readPresetImage(Bytes records, const ImageHeader& header, bool reversed);
  virtual std::vector<std::uint8_t> writePresetImage();

  // The file commands open a dialog and return; the file is read or written when the user has
  // chosen one. `reversed` asks for the byte order that the file does not announce.
  virtual void loadBankFile(bool reversed);
  virtual void saveBankFile();

  virtual void storeDefaultBank();
  virtual void clearDefaultBank();
  virtual void loadDefaultBank();

  virtual void loadPresetFile(bool reversed);
  virtual void savePresetFile();

  virtual void storeDefaultPreset();
  virtual void clearDefaultPreset();
  virtual void loadDefaultPreset();
  virtual void storeMemoA();
  virtual void storeMemoB();
  virtual void recallMemoA();
  virtual void recallMemoB();
  virtual void saveFileLocations();
  virtual void loadFileLocations();

  /// Name of the current preset, in panel and store.
  void applyPresetName(const std::string& name);

  /// Takes all titles, the current entry and the name field from the store.
  void refreshPanel() override;

  /// The open window's frame, or null. Whoever sends it events holds it: a host may close the
  /// window from inside a call that they lead to.
  std::shared_ptr<gui::CFrame> getFrame() const { return m_frame; }

  const FileLocations& fileLocations() const { return m_locations; }
  const PersistentSettings& settings() const { return m_settings; }

  /// Reads what a file or stored setting holds into the current slot or all slots. False for bytes
  /// that are not ours.
  bool loadPresetData(Bytes bytes, Scope scope, bool otherOrder = false);

 protected:
  /// The panel of the window that has been opened on this thread; null before it goes away.
  void setPanel(PresetPanel* panel);

  CPresetSystemEffect& presetStore() const { return m_store; }
  PersistentSettings& storedSettings() { return m_settings; }

  /// One that is taken away in the middle of its own events lives on until they are handled,
  /// without getting more of them.
  void setFrame(std::shared_ptr<gui::CFrame> frame);

  /// Takes over a name that is being typed. The host hears of it and may close the window
  /// meanwhile.
  void acceptTypedName();

  /// Whether this is the thread that opened the window that is open.
  bool isWindowThread() const {
    return m_panelThread.load(std::memory_order_relaxed) == std::this_thread::get_id();
  }

 private:
  /// The panel, if this is the thread that may touch it.
  PresetPanel* panel();
  void retitleEntry(int index);
  /// Makes the entry current and shows its slot's name in the name field.
  void showSlot(int index);
  void takeIntoCurrentSlot(const SlotUpdate& update);
  void askForFile(const FileTask& task);
  void carryOut(const PresetFileDialog::Choice& choice);
  void stepPreset(float direction);
  /// Makes a preset current that goes by this name in the panel.
  void takePreset(int index, const std::string& name);
  void openUserManual();
  void pollUserManual();
  void reportManual(platform::DocumentOpener::Outcome outcome);

  CPresetSystemEffect& m_store;
  PersistentSettings m_settings;
  FileLocations m_locations;
  PresetFileDialog m_dialog;
  std::unique_ptr<platform::DocumentOpener> m_documents;
  bool m_openingManual = false;

  std::shared_ptr<gui::CFrame> m_frame;
  std::unique_ptr<PresetPanelView> m_panelView;
  PresetPanel* m_panel = nullptr; ///< belongs to m_panelThread
  std::atomic<std::thread::id> m_panelThread;
  std::atomic<bool> m_panelOutdated{false};
};

} // namespace qlx::presets
