// SPDX-License-Identifier: ISC
#include "gui/dialogs/FileListModel.h"

#include "gui/drawing/Utf8.h"

#include <algorithm>
#include <string_view>

namespace qlx::gui {

namespace {

std::u32string loweredText(const std::string& text) {
  std::u32string characters = fromUtf8(text);
  std::ranges::transform(characters, characters.begin(), lowered);
  return characters;
}

bool isDigit(char32_t character) { return character >= '0' && character <= '9'; }

/// Takes a run of digits, or a single other character, off the text.
std::u32string_view takePart(std::u32string_view& text) {
  std::size_t length = 0;
  while (length < text.size() && isDigit(text[length])) ++length;
  const std::u32string_view part = text.substr(0, std::max<std::size_t>(length, 1));
  text.remove_prefix(part.size());
  return part;
}

std::u32string_view withoutLeadingZeros(std::u32string_view digits) {
  return digits.substr(std::min(digits.find_first_not_of(U'0'), digits.size()));
}

/// Below 0 when `a` comes first: 2 before 10, capitals beside small letters.
int compareNames(std::u32string_view a, std::u32string_view b) {
  while (!a.empty() && !b.empty()) {
    std::u32string_view partOfA = takePart(a);
    std::u32string_view partOfB = takePart(b);
    if (isDigit(partOfA.front()) && isDigit(partOfB.front())) {
      partOfA = withoutLeadingZeros(partOfA);
      partOfB = withoutLeadingZeros(partOfB);
      if (partOfA.size() != partOfB.size()) return partOfA.size() < partOfB.size() ? -1 : 1;
    }
    if (const int order = partOfA.compare(partOfB); order != 0) return order;
  }
  return a.empty() ? (b.empty() ? 0 : -1) : 1;
}

bool comesBefore(const platform::FolderEntry& a, const platform::FolderEntry& b) {
  if (a.isFolder != b.isFolder) return a.isFolder;
  const int order = compareNames(loweredText(a.name), loweredText(b.name));
  return order != 0 ? order < 0 : a.name < b.name;
}

} // namespace

bool hasExtension(const std::string& name, const std::string& extension) {
  const std::string end = "." + extension;
  return name.size() > end.size() &&
         loweredText(name.substr(name.size() - end.size())) == loweredText(end);
}

bool FileListModel::isShown(const platform::FolderEntry& entry) const {
  return entry.isFolder || m_types.empty() ||
         std::ranges::any_of(m_types, [&entry](const platform::FileType& type) {
           return hasExtension(entry.name, type.extension);
         });
}

bool FileListModel::enter(const std::string& directory) {
  auto found = platform::listFolder(directory);
  if (!found) return false;
  std::erase_if(*found, [this](const auto& entry) { return !isShown(entry); });
  std::ranges::sort(*found, comesBefore);
  m_directory = platform::asDirectory(directory);
  m_entries = std::move(*found);
  m_selected = -1;
  return true;
}

bool FileListModel::goUp() {
  const auto [above, left] =
      platform::splitPath(m_directory.substr(0, m_directory.find_last_not_of("/\\") + 1));
  if (left.empty() || !enter(above)) return false;
  selectByName(left);
  return true;
}

void FileListModel::select(int index) { m_selected = index >= 0 && index < count() ? index : -1; }

void FileListModel::step(int by) {
  const int from = m_selected >= 0 ? m_selected + by : (by > 0 ? 0 : count() - 1);
  select(std::clamp(from, 0, std::max(0, count() - 1)));
}

bool FileListModel::selectByLetter(char32_t letter) {
  for (int i = 1; letter != 0 && i <= count(); ++i) {
    const int index = (m_selected + i) % count();
    if (firstLetter(m_entries[static_cast<std::size_t>(index)].name) != lowered(letter)) continue;
    m_selected = index;
    return true;
  }
  return false;
}

void FileListModel::selectByName(const std::string& name) {
  const auto place = std::ranges::find(m_entries, name, &platform::FolderEntry::name);
  select(static_cast<int>(place - m_entries.begin()));
}

const platform::FolderEntry* FileListModel::selectedEntry() const {
  return m_selected < 0 ? nullptr : &m_entries[static_cast<std::size_t>(m_selected)];
}

std::string FileListModel::pathOf(const std::string& typed) const {
  return platform::pathIn(m_directory, typed);
}

} // namespace qlx::gui
