// SPDX-License-Identifier: ISC
#include "platform/Files.h"

#include <cerrno>
#include <climits>
#include <cstdlib>
#include <filesystem>
#include <system_error>

#include <fcntl.h>
#include <sys/stat.h>

#include "platform/linux/files/FileDescriptor.h"

namespace qlx::platform {

std::optional<std::vector<std::uint8_t>> readFile(const std::string& path, std::size_t maxBytes) {
  // Without O_NONBLOCK a named pipe would hold the caller until somebody writes into it.
  const FileDescriptor file(::open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NOCTTY | O_NONBLOCK));
  struct stat status {};
  if (!file || ::fstat(file.get(), &status) != 0 || !S_ISREG(status.st_mode)) return std::nullopt;
  const auto size = static_cast<std::size_t>(status.st_size);
  if (size > maxBytes) return std::nullopt;
  std::vector<std::uint8_t> bytes(size);
  std::size_t done = 0;
  while (done < size) {
    const ssize_t got = ::read(file.get(), bytes.data() + done, size - done);
    if (got < 0 && errno == EINTR) continue;
    if (got < 0) return std::nullopt;
    if (got == 0) break; // shortened meanwhile
    done += static_cast<std::size_t>(got);
  }
  bytes.resize(done);
  return bytes;
}

std::string currentDirectory() {
  char path[PATH_MAX];
  if (::getcwd(path, sizeof path) == nullptr || path[0] != '/') return {};
  std::string directory = path;
  if (directory.back() != '/') directory += '/';
  return directory;
}

std::string homeDirectory() {
  const char* const home = std::getenv("HOME");
  std::string directory = home != nullptr && *home == '/' ? home : "/";
  if (directory.back() != '/') directory += '/';
  return directory;
}

bool fileExists(const std::string& path) {
  struct stat status {};
  return ::lstat(path.c_str(), &status) == 0;
}

std::optional<std::vector<FolderEntry>> listFolder(const std::string& directory) {
  std::error_code error;
  std::filesystem::directory_iterator at(directory, error);
  std::vector<FolderEntry> entries;
  for (; !error && at != std::filesystem::directory_iterator(); at.increment(error)) {
    std::string name = at->path().filename().string();
    std::error_code unknown; // a link that leads nowhere is a file
    if (!name.starts_with('.')) entries.push_back({std::move(name), at->is_directory(unknown)});
  }
  if (error) return std::nullopt;
  return entries;
}

bool changeDirectory(const std::string& directory) { return ::chdir(directory.c_str()) == 0; }

SplitPath splitPath(const std::string& path) {
  const std::string whole = path.starts_with('/') ? path : currentDirectory() + path;
  const std::size_t nameAt = whole.rfind('/') + 1; // 0 where there is no separator at all
  return {whole.substr(0, nameAt), whole.substr(nameAt)};
}

std::string asDirectory(const std::string& path) {
  const std::filesystem::path whole(path.starts_with('/') ? path : currentDirectory() + path);
  return (whole / "").lexically_normal().string();
}

std::string pathIn(const std::string& directory, const std::string& path) {
  return path.starts_with('/') ? path : directory + path;
}

} // namespace qlx::platform
