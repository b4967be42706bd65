#include "platform/Files.h"

#include <cerrno>
#include <climits>

#include <fcntl.h>
#include <sys/stat.h>

#include "platform/linux/FileDescriptor.h"

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

bool changeDirectory(const std::string& directory) { return ::chdir(directory.c_str()) == 0; }

SplitPath splitPath(const std::string& path) {
  const std::string whole = path.starts_with('/') ? path : currentDirectory() + path;
  const std::size_t nameAt = whole.rfind('/') + 1; // 0 where there is no separator at all
  return {whole.substr(0, nameAt), whole.substr(nameAt)};
}

} // namespace qlx::platform
