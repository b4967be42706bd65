// SPDX-License-Identifier: ISC
#pragma once

#include <filesystem>

namespace qlx::tools {

/// A file in the making beside its target. `commit` renames it over the target; without that its
/// end removes it, so that a failure leaves the old target as it was. Throws std::runtime_error
/// when the target's folder cannot be written.
class PendingFile {
 public:
  explicit PendingFile(std::filesystem::path target);
  ~PendingFile();
  PendingFile(const PendingFile&) = delete;
  PendingFile& operator=(const PendingFile&) = delete;

  const std::filesystem::path& path() const { return m_path; } ///< where to write meanwhile
  const std::filesystem::path& target() const { return m_target; }
  void commit();

 private:
  std::filesystem::path m_target;
  std::filesystem::path m_path;
  bool m_committed = false;
};

} // namespace qlx::tools
