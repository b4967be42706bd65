// SPDX-License-Identifier: ISC
#pragma once

#include <cstdint>
#include <string>

namespace qlx::platform {

/// A new, empty file of this process beside one that it is to replace, under a hidden name that
/// removeAbandonedFiles knows. It goes with its owner unless it was moved. Nothing here throws but
/// for memory.
class TemporaryFile {
 public:
  /// In `directory`, a path with its trailing separator or empty. `secret`: for this user alone, as
  /// the file to be replaced may be; else as the process makes files.
  TemporaryFile(const std::string& directory, bool secret);
  ~TemporaryFile();
  TemporaryFile(const TemporaryFile&) = delete;
  TemporaryFile& operator=(const TemporaryFile&) = delete;

  /// False when the folder takes no new file; errno or GetLastError tells why.
  explicit operator bool() const noexcept { return !m_path.empty(); }
  const std::string& path() const noexcept { return m_path; }

  /// Takes the place of `target`, if there is one; false leaves both as they were.
  bool moveTo(const std::string& target);

  /// Open for writing.
  int descriptor() const noexcept { return static_cast<int>(m_handle); }

 private:
  std::string m_path; ///< empty once moved
  std::intptr_t m_handle = -1;
};

/// Removes the temporary files in a folder whose owners were killed.
void removeAbandonedFiles(const std::string& directory);

} // namespace qlx::platform
