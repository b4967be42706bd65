// SPDX-License-Identifier: ISC
#include "brezan/sound/PendingFile.h"

#include <fstream>
#include <random>
#include <stdexcept>

namespace qlx::tools {

namespace fs = std::filesystem;

PendingFile::PendingFile(fs::path target) : m_target(std::move(target)) {
  std::error_code error;
  // A link stays a link; what it points to is replaced.
  if (fs::is_symlink(m_target, error)) {
    if (const fs::path real = fs::weakly_canonical(m_target, error); !error) m_target = real;
  }
  if (fs::is_directory(m_target, error))
    throw std::runtime_error("'" + m_target.string() + "' is a folder");
  std::random_device random;
  m_path = m_target.parent_path() /
           ("." + m_target.filename().string() + "." + std::to_string(random()) + ".part");
  if (!std::ofstream(m_path, std::ios::binary))
    throw std::runtime_error("cannot write '" + m_target.string() + "'");
}

PendingFile::~PendingFile() {
  std::error_code error;
  if (!m_committed) fs::remove(m_path, error);
}

void PendingFile::commit() {
  std::error_code error;
  fs::rename(m_path, m_target, error);
  if (error)
    throw std::runtime_error("cannot write '" + m_target.string() + "': " + error.message());
  m_committed = true;
}

} // namespace qlx::tools
