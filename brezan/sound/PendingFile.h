// SPDX-License-Identifier: ISC
#pragma once

#include <filesystem>
#include <memory>
#include <span>

namespace qlx::platform {
class TemporaryFile;
}

namespace qlx::tools {

/// A file in the making beside its target; what killed processes left of theirs is removed.
/// `commit` renames it over the target, with the permissions of the old one; without that its end
/// removes it, so that a failure leaves the old target as it was. A link stays a link, and what it
/// points to is replaced. What cannot be replaced (a pipe, a device, "-" for standard output, a
/// file in a folder without permission to write) is made in the folder for temporary files, and
/// `commit` writes it through. Throws std::runtime_error with the reason when the target cannot be
/// written.
class PendingFile {
 public:
  explicit PendingFile(std::filesystem::path target);
  ~PendingFile();
  PendingFile(const PendingFile&) = delete;
  PendingFile& operator=(const PendingFile&) = delete;

  std::filesystem::path path() const; ///< where to write meanwhile
  const std::filesystem::path& target() const { return m_target; }
  void commit(); ///< throws Interrupted, too

 private:
  void copyThrough() const;

  std::filesystem::path m_target;
  std::unique_ptr<platform::TemporaryFile> m_part;
  bool m_through = false;
};

/// True when a file of this name is standard output, so that words must go elsewhere.
bool isStandardOutput(const std::filesystem::path& target);

/// True when it is standard output, a pipe or a device, which need no extension.
bool isStream(const std::filesystem::path& target);

/// Makes `bytes` the whole content of a file, by way of a PendingFile, flushed to disk.
void writeFile(const std::filesystem::path& target, std::span<const char> bytes);

} // namespace qlx::tools
