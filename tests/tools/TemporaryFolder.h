#pragma once

#include <gtest/gtest.h>

#include <array>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <stdexcept>
#include <string>
#include <sys/wait.h>

namespace qlx::tests {

/// A folder of its own for one test, removed with it.
class TemporaryFolder {
 public:
  TemporaryFolder() {
    std::string name = (std::filesystem::temp_directory_path() / "brezan-test-XXXXXX").string();
    if (mkdtemp(name.data()) == nullptr) throw std::runtime_error("no temporary folder");
    m_path = name;
  }
  ~TemporaryFolder() { std::filesystem::remove_all(m_path); }
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

inline std::string contents(const std::filesystem::path& file) {
  std::ostringstream text;
  text << std::ifstream(file, std::ios::binary).rdbuf();
  return text.str();
}

inline void write(const std::filesystem::path& file, const std::string& text) {
  std::ofstream(file, std::ios::binary) << text;
}

struct Finished {
  int status;
  std::string output;
  std::string errors;
};

/// Runs a shell command; its streams are kept apart from the folder where the command may write.
inline Finished run(const std::string& command) {
  const TemporaryFolder streams;
  const std::string redirected = "( " + command + " ) </dev/null >" + (streams / "out").string() +
                                 " 2>" + (streams / "err").string();
  const int status = std::system(redirected.c_str());
  return {WIFEXITED(status) ? WEXITSTATUS(status) : -1, contents(streams / "out"),
          contents(streams / "err")};
}

} // namespace qlx::tests
