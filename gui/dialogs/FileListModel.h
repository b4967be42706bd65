// SPDX-License-Identifier: ISC
#pragma once

#include "platform/FileSelector.h"
#include "platform/Files.h"

#include <string>
#include <vector>

namespace qlx::gui {

/// The folder that a list of files shows, and what is selected in it. Knows nothing of pixels.
class FileListModel {
 public:
  /// Of files, only those of these types are shown; without types, all.
  explicit FileListModel(std::vector<platform::FileType> types) : m_types(std::move(types)) {}

  /// Shows a folder, with nothing selected. False, and nothing changes, when it can't be read.
  bool enter(const std::string& directory);
  /// Shows the folder above with the one left selected. False at the top or when it can't be read.
  bool goUp();

  /// Full path with a trailing separator; empty before the first folder.
  const std::string& directory() const { return m_directory; }
  /// Folders first, each part by name.
  const std::vector<platform::FolderEntry>& entries() const { return m_entries; }
  int count() const { return static_cast<int>(m_entries.size()); }

  /// -1 for none.
  int selected() const { return m_selected; }
  /// Anything outside the entries selects none.
  void select(int index);
  /// Moves the selection, staying inside; from none to the first or last one.
  void step(int by);
  /// Selects the next entry that begins with the letter, round the end. False when there is none.
  bool selectByLetter(char32_t letter);
  /// Selects the entry of this name, if there is one.
  void selectByName(const std::string& name);
  /// The entry selected, or null.
  const platform::FolderEntry* selectedEntry() const;

  /// Full path of what the user typed, which may be relative to the folder shown.
  std::string pathOf(const std::string& typed) const;

  const std::vector<platform::FileType>& types() const { return m_types; }

 private:
  bool isShown(const platform::FolderEntry& entry) const;

  std::vector<platform::FileType> m_types;
  std::string m_directory;
  std::vector<platform::FolderEntry> m_entries;
  int m_selected = -1;
};

/// Whether a name ends in the extension, in capitals or not.
bool hasExtension(const std::string& name, const std::string& extension);

} // namespace qlx::gui
