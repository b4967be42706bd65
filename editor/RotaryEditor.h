// SPDX-License-Identifier: ISC
#pragma once

#include "editor/EditorControls.h"
#include "editor/EffectReadout.h"
#include "editor/ParameterMirror.h"
#include "gui/controls/ContextMenu.h"
#include "platform/NativeWindow.h"
#include "presets/panel/CPresetSystemEditor.h"
#include "presets/panel/LoadBitmap.h"
#include "sdk/EditorMenu.h"
#include "sdk/VstTypes.h"

#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace qlx::editor {

/// The plug-in's window. It exists as long as its effect, open or not; see sdk::AEffGUIEditor for
/// threads.
class RotaryEditor final : public presets::CPresetSystemEditor {
 public:
  /// What the editor needs of the system that it runs on.
  struct Desktop {
    const platform::WindowSystem& windows; ///< outlives the editor
    std::shared_ptr<platform::SettingsStore> settings;
    std::unique_ptr<platform::FileSelector> files;         ///< null: a list in the window
    std::unique_ptr<platform::DocumentOpener> documents{}; ///< null: no documents
  };

  /// `effect` and `readout` outlive the editor.
  RotaryEditor(presets::CPresetSystemEffect& effect, const EffectReadout& readout, Desktop desktop);
  ~RotaryEditor() override;

  /// Makes the texts that the displays share with the host; outlives the editor. Without it those
  /// displays are empty.
  void setFormatter(plugin::ParameterFormatter* formatter) { m_formatter = formatter; }

  /// The open window's size, or the one that a window would have now.
  bool getRect(sdk::EditRectangle** rectangle) override;
  void setHostScale(double scale) override;
  /// False when there is no parent, or no window can be had in it. An open window is closed first.
  bool open(void* parent) override;
  /// Accepts a name that is being typed.
  void close() override;
  void idle() override;
  bool picture(const sdk::EditorPicture& request) override;
  std::string description() override;
  bool onKeyDown(const sdk::KeyCode& key) override;
  bool onKeyUp(const sdk::KeyCode& key) override;
  void setParameter(std::int32_t index, float value) override;

  void valueChanged(gui::CControl& control) override;
  void controlBeginEdit(gui::CControl& control) override;
  void controlEndEdit(gui::CControl& control) override;

 private:
  bool openIn(const platform::WindowSystem& windows, void* parent, double scale);
  double scaleToOpenWith() const;
  void setRectangle(double scale);
  void followScale();
  void followScreen(double scale);
  void openContextMenu(const gui::CView* view, const gui::CPoint& where);
  std::vector<gui::ContextMenu::Item> askHost(sdk::EditorMenu::Event event,
                                              std::int32_t chosen = 0);
  void showMenu(std::vector<gui::ContextMenu::Item> items);
  void hostItemChosen(std::int32_t item);
  void menuClosed();
  void watchHostMenu();
  void chooseScale(double scale);
  void dropWindow();
  void showMirrored();
  void showReadout();
  std::string parameterText(std::int32_t index) const;
  void toggleLever();
  void stepMidiChannel();

  const EffectReadout& m_readout;
  const platform::WindowSystem& m_windows;
  presets::KeptImages m_images = presets::keepImages();
  gui::CBitmapRef m_background;
  sdk::EditRectangle m_rectangle{};
  std::optional<double> m_hostScale;
  std::optional<double> m_screenScale; ///< of the screen that the window was on last
  std::optional<double> m_scaleToCome; ///< of the open window
  bool m_scaleIsScreens = false;       ///< the one to come was not chosen by the user
  plugin::ParameterFormatter* m_formatter = nullptr;
  ParameterMirror m_mirror;
  gui::ContextMenu* m_contextMenu = nullptr; ///< the frame's
  gui::CPoint m_menuPlace;
  sdk::EditorMenu m_hostMenu{};
  std::vector<gui::ContextMenu::Item> m_menuToCome;
  bool m_hostMenuOpen = false;                ///< items of the host are shown
  std::unique_ptr<EditorControls> m_controls; ///< null while the window is closed
};

} // namespace qlx::editor
