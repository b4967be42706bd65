// SPDX-License-Identifier: ISC
#include "platform/Files.h"
#include "platform/TemporaryFile.h"

#include <cerrno>
#include <climits>
#include <csignal>
#include <ctime>
#include <string_view>

#include <fcntl.h>
#include <sys/stat.h>

#include "platform/linux/files/FileDescriptor.h"

namespace qlx::platform {
namespace {

/// Where a write really goes: the end of a chain of links, which need not exist. Nothing for a
/// chain without end.
std::optional<std::string> followLinks(std::string path) {
  constexpr int kMaxLinks = 40; // as many as the kernel follows
  for (int i = 0; i < kMaxLinks; ++i) {
    char link[PATH_MAX];
    const ssize_t length = ::readlink(path.c_str(), link, sizeof link);
    if (length < 0) return path;
    const std::string_view to(link, static_cast<std::size_t>(length));
    path.resize(to.starts_with('/') ? 0 : path.rfind('/') + 1);
    path += to;
  }
  return std::nullopt;
}

/// A process at its file size limit gets a signal that ends it unless somebody waits for it; here a
/// failed write is enough, so the signal is kept from this thread and taken away again.
class FileSizeSignalGuard {
 public:
  FileSizeSignalGuard() noexcept {
    sigemptyset(&m_signal);
    sigaddset(&m_signal, SIGXFSZ);
    pthread_sigmask(SIG_BLOCK, &m_signal, &m_before);
  }
  ~FileSizeSignalGuard() {
    if (sigismember(&m_before, SIGXFSZ) == 1) return;
    const timespec now{};
    while (sigtimedwait(&m_signal, nullptr, &now) < 0 && errno == EINTR) {
    }
    pthread_sigmask(SIG_SETMASK, &m_before, nullptr);
  }
  FileSizeSignalGuard(const FileSizeSignalGuard&) = delete;
  FileSizeSignalGuard& operator=(const FileSizeSignalGuard&) = delete;

 private:
  sigset_t m_signal{};
  sigset_t m_before{};
};

/// Owner, group and permissions of the file to be replaced, as far as this user may set them.
bool takeAttributes(int file, const struct stat& of) {
  const bool sameOwner = of.st_uid == ::geteuid() && of.st_gid == ::getegid();
  const bool owned = sameOwner || ::fchown(file, of.st_uid, of.st_gid) == 0 ||
                     ::fchown(file, static_cast<uid_t>(-1), of.st_gid) == 0;
  return ::fchmod(file, of.st_mode & (owned ? 07777U : 0777U)) == 0;
}

bool write(int file, std::span<const std::uint8_t> bytes) {
  const FileSizeSignalGuard guard;
  while (!bytes.empty()) {
    const ssize_t written = ::write(file, bytes.data(), bytes.size());
    if (written < 0 && errno == EINTR) continue;
    if (written <= 0) return false;
    bytes = bytes.subspan(static_cast<std::size_t>(written));
  }
  return ::fsync(file) == 0;
}

void flushDirectory(const std::string& directory) {
  const FileDescriptor folder(::open(directory.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
  // The new content is in place already; a file system that can't flush folders keeps its own
  // promises.
  if (folder) static_cast<void>(::fsync(folder.get()));
}

} // namespace

bool replaceFile(const std::string& path, std::span<const std::uint8_t> bytes) {
  const auto target = followLinks(path);
  if (!target) return false;
  const auto [directory, name] = splitPath(*target);
  if (name.empty()) return false;

  struct stat old {};
  const bool exists = ::lstat(target->c_str(), &old) == 0;
  // A device or folder is no place for a preset, and a file that its owner protected stays.
  if (exists &&
      (!S_ISREG(old.st_mode) || ::faccessat(AT_FDCWD, target->c_str(), W_OK, AT_EACCESS) != 0)) {
    return false;
  }

  removeAbandonedFiles(directory);
  TemporaryFile temporary(directory, exists);
  if (!temporary) return false;
  if (exists) static_cast<void>(takeAttributes(temporary.descriptor(), old));
  if (!write(temporary.descriptor(), bytes) || !temporary.moveTo(*target)) return false;
  flushDirectory(directory);
  return true;
}

} // namespace qlx::platform
