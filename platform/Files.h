// SPDX-License-Identifier: ISC
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <vector>

/// Files and folders of the running system, by paths as its dialogs give them. Nothing here throws
/// but for memory; a failure is an answer.
namespace qlx::platform {

/// The whole of an ordinary file; nothing when it can't be read, is something else than a file or
/// is longer than `maxBytes`.
std::optional<std::vector<std::uint8_t>> readFile(const std::string& path, std::size_t maxBytes);

/// Makes `bytes` the content of the file, so that at every moment, also after a crash or a power
/// cut, there is the whole old or the whole new content: a temporary file beside it is written,
/// flushed to disk and renamed. A link stays and what it points at is replaced; permissions are
/// kept. Temporary files that killed processes left behind are removed on the way. False leaves
/// everything as it was.
bool replaceFile(const std::string& path, std::span<const std::uint8_t> bytes);

/// The process's current directory with a trailing separator; empty when it has none.
std::string currentDirectory();
bool changeDirectory(const std::string& directory);

/// The user's own folder with a trailing separator; the root of all folders when there is none.
std::string homeDirectory();

/// Whether there is anything by this name.
bool fileExists(const std::string& path);

struct FolderEntry {
  std::string name;
  bool isFolder = false; ///< or a link to one
};

/// What is in a folder, in no order, without what the system keeps out of its users' sight. Nothing
/// when it can't be read.
std::optional<std::vector<FolderEntry>> listFolder(const std::string& directory);

/// A path cut behind its last separator.
struct SplitPath {
  std::string directory; ///< absolute, with its trailing separator
  std::string name;
};

/// A path without a directory, or with a relative one, counts from the current directory.
SplitPath splitPath(const std::string& path);

/// A path as that of a folder: absolute, without detours, with its trailing separator.
std::string asDirectory(const std::string& path);

/// A path that counts from `directory` unless it is absolute.
std::string pathIn(const std::string& directory, const std::string& path);

} // namespace qlx::platform
