// SPDX-License-Identifier: ISC
#pragma once

#include <cstdint>
#include <string>

namespace qlx::presets {

/// The preset manager's strip of the open window, as the preset code sees it: a name field and a
/// menu with one entry a slot. For the thread that opened the window.
class PresetPanel {
 public:
  virtual ~PresetPanel() = default;

  virtual void setNameField(const std::string& name) = 0;
  virtual void makeEntryCurrent(int index) = 0;
  virtual void setCurrentEntryTitle(const std::string& title) = 0;

  /// Everything in the window may have changed.
  virtual void redrawFrame() = 0;

  /// The number of the window that dialogs stay in front of; 0 for none.
  virtual std::uintptr_t nativeWindow() const = 0;

 protected:
  PresetPanel() = default;
  PresetPanel(const PresetPanel&) = default;
  PresetPanel& operator=(const PresetPanel&) = default;
};

} // namespace qlx::presets
