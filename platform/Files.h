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

/// A path cut behind its last separator.
struct SplitPath {
  std::string directory; ///< absolute, with its trailing separator
  std::string name;
};

/// A path without a directory, or with a relative one, counts from the current directory.
SplitPath splitPath(const std::string& path);

} // namespace qlx::platform
