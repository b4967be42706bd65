// SPDX-License-Identifier: ISC
#include "platform/Files.h"

#include <cerrno>
#include <climits>
#include <csignal>
#include <ctime>
#include <memory>
#include <string_view>

#include <dirent.h>
#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>

#include "platform/linux/files/FileDescriptor.h"

namespace qlx::platform {
namespace {

constexpr std::string_view kTemporaryPrefix = ".~saving-";
constexpr std::string_view kTemporarySuffix = ".part";

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

/// A new file under a hidden name beside the one to be replaced. It stays locked while its owner
/// lives, which is how others see that it is not left behind by a killed process. Goes with its
/// owner unless moved to its place.
class TemporaryFile {
 public:
  TemporaryFile(const std::string& directory, mode_t mode) {
    constexpr int kAttempts = 16;
    for (int i = 0; i < kAttempts && !m_file; ++i) {
      m_path = directory + makeName(i);
      FileDescriptor file(::open(m_path.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, mode));
      if (!file && errno != EEXIST) return;
      if (file && isOurs(file)) m_file = std::move(file);
    }
  }
  ~TemporaryFile() {
    if (m_file) ::unlink(m_path.c_str());
  }
  TemporaryFile(const TemporaryFile&) = delete;
  TemporaryFile& operator=(const TemporaryFile&) = delete;

  explicit operator bool() const noexcept { return static_cast<bool>(m_file); }

  /// Owner, group and permissions of the file to be replaced, as far as this user may set them.
  bool takeAttributes(const struct stat& of) {
    const bool sameOwner = of.st_uid == ::geteuid() && of.st_gid == ::getegid();
    const bool owned = sameOwner || ::fchown(m_file.get(), of.st_uid, of.st_gid) == 0 ||
                       ::fchown(m_file.get(), static_cast<uid_t>(-1), of.st_gid) == 0;
    return ::fchmod(m_file.get(), of.st_mode & (owned ? 07777U : 0777U)) == 0;
  }

  bool write(std::span<const std::uint8_t> bytes) {
    const FileSizeSignalGuard guard;
    while (!bytes.empty()) {
      const ssize_t written = ::write(m_file.get(), bytes.data(), bytes.size());
      if (written < 0 && errno == EINTR) continue;
      if (written <= 0) return false;
      bytes = bytes.subspan(static_cast<std::size_t>(written));
    }
    return ::fsync(m_file.get()) == 0;
  }

  bool moveTo(const std::string& path) {
    if (::rename(m_path.c_str(), path.c_str()) != 0) return false;
    m_file = FileDescriptor();
    return true;
  }

 private:
  static std::string makeName(int attempt) {
    timespec now{};
    ::clock_gettime(CLOCK_REALTIME, &now);
    const auto number = static_cast<unsigned long long>(now.tv_sec) * 1'000'000'000ULL +
                        static_cast<unsigned long long>(now.tv_nsec);
    return std::string(kTemporaryPrefix) + std::to_string(number) + '-' +
           std::to_string(::getpid()) + '-' + std::to_string(attempt) +
           std::string(kTemporarySuffix);
  }

  /// Locks the file. Between its creation and its lock somebody may have taken it for an abandoned
  /// one and removed it; on a file system without locks nobody can.
  static bool isOurs(const FileDescriptor& file) {
    if (::flock(file.get(), LOCK_EX | LOCK_NB) != 0) return errno != EWOULDBLOCK;
    struct stat status {};
    return ::fstat(file.get(), &status) == 0 && status.st_nlink > 0;
  }

  std::string m_path;
  FileDescriptor m_file;
};

struct FolderCloser {
  void operator()(DIR* folder) const noexcept { ::closedir(folder); }
};

/// Removes temporary files whose owner is no more.
void removeAbandoned(const std::string& directory) {
  const std::unique_ptr<DIR, FolderCloser> folder(::opendir(directory.c_str()));
  if (!folder) return;
  while (const dirent* const entry = ::readdir(folder.get())) {
    const std::string_view name = entry->d_name;
    if (!name.starts_with(kTemporaryPrefix) || !name.ends_with(kTemporarySuffix)) continue;
    const std::string path = directory + entry->d_name;
    const FileDescriptor file(::open(path.c_str(), O_RDWR | O_CLOEXEC | O_NOFOLLOW | O_NONBLOCK));
    if (file && ::flock(file.get(), LOCK_EX | LOCK_NB) == 0) ::unlink(path.c_str());
  }
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

  removeAbandoned(directory);
  TemporaryFile temporary(directory, exists ? 0600 : 0666);
  if (!temporary) return false;
  if (exists) static_cast<void>(temporary.takeAttributes(old));
  if (!temporary.write(bytes) || !temporary.moveTo(*target)) return false;
  flushDirectory(directory);
  return true;
}

} // namespace qlx::platform
