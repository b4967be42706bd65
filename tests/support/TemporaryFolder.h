// SPDX-License-Identifier: ISC
#pragma once

#include <cstdint>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <random>
#include <span>
#include <string>
#include <vector>

namespace qlx::test {

/// A folder of its own for a test, gone afterwards.
class TemporaryFolder {
 public:
  TemporaryFolder() {
    std::random_device random;
    do {
      m_path = std::filesystem::temp_directory_path() / ("qlx-" + std::to_string(random()));
    } while (!std::filesystem::create_directory(m_path));
  }
  ~TemporaryFolder() {
    std::error_code ignored;
    std::filesystem::remove_all(m_path, ignored);
  }
  TemporaryFolder(const TemporaryFolder&) = delete;
  TemporaryFolder& operator=(const TemporaryFolder&) = delete;

  std::filesystem::path operator/(const std::string& name) const { return m_path / name; }
  const std::filesystem::path& path() const { return m_path; }

  /// Names in the folder, hidden ones too.
  std::size_t entries() const {
    return static_cast<std::size_t>(std::distance(std::filesystem::directory_iterator(m_path), {}));
  }

 private:
  std::filesystem::path m_path;
};

inline void writeBytes(const std::filesystem::path& path, std::span<const std::uint8_t> bytes) {
  std::ofstream(path, std::ios::binary)
      .write(reinterpret_cast<const char*>(bytes.data()),
             static_cast<std::streamsize>(bytes.size()));
}

inline std::vector<std::uint8_t> readBytes(const std::filesystem::path& path) {
  std::ifstream file(path, std::ios::binary);
  return {std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
}

} // namespace qlx::test
