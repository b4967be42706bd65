// SPDX-License-Identifier: ISC
#pragma once

#include "platform/FileSelector.h"
#include "presets/format/PresetData.h"
#include "presets/store/PersistentSettings.h"

#include <memory>
#include <optional>
#include <string>

namespace qlx::presets {

/// What the user wants to do with a file.
struct FileTask {
  platform::FileRequest::Style style = platform::FileRequest::Style::Open;
  Scope scope = Scope::Preset;
  bool otherOrder = false; ///< read in the byte order that the file does not announce
};

/// Asks the user for a preset or bank file without waiting for the answer. For the user-interface
/// thread.
class PresetFileDialog {
 public:
  /// Without a selector nothing can be asked.
  explicit PresetFileDialog(std::unique_ptr<platform::FileSelector> selector)
      : m_selector(std::move(selector)) {}

  /// Opens the dialog, starting at `locations`; does nothing while one is open.
  void ask(const FileTask& task, const FileLocations& locations, std::uintptr_t ownerWindow);

  struct Choice {
    FileTask task;
    std::string path; ///< full
  };

  /// The user's choice, once. It also moves `locations` and the process's current directory to
  /// where the file is.
  std::optional<Choice> poll(FileLocations& locations);

  /// The window goes away: so does the dialog.
  void dismiss();

 private:
  std::unique_ptr<platform::FileSelector> m_selector;
  std::optional<FileTask> m_task;
};

} // namespace qlx::presets
