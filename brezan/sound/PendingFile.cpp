// SPDX-License-Identifier: ISC
#include "brezan/sound/PendingFile.h"

#include "brezan/Interrupt.h"
#include "brezan/StandardStreams.h"
#include "platform/TemporaryFile.h"

#include <array>
#include <cerrno>
#include <cstring>
#include <fcntl.h>
#include <memory>
#include <stdexcept>
#include <sys/stat.h>
#include <unistd.h>

namespace qlx::tools {

namespace fs = std::filesystem;

namespace {

constexpr int kMostLinks = 40; // as the system's own limit
constexpr mode_t kPermissions = 0777;

[[noreturn]] void cannotWrite(const fs::path& target, int error) {
  std::string reason = std::strerror(error);
  if (const fs::path folder = target.parent_path();
      error == ENOENT && !folder.empty() && !fs::exists(folder))
    reason = "there is no folder '" + folder.string() + "'";
  throw std::runtime_error("cannot write '" + target.string() + "': " + reason);
}

/// The file that a chain of links ends at, also where there is none yet.
fs::path behindLinks(fs::path path) {
  std::error_code error;
  for (int i = 0; i < kMostLinks && fs::is_symlink(path, error); ++i) {
    const fs::path next = fs::read_symlink(path, error);
    if (error) break;
    path = next.is_absolute() ? next : path.parent_path() / next;
  }
  if (fs::is_symlink(path, error)) cannotWrite(path, ELOOP);
  return path;
}

struct File {
  int number;
  explicit File(int opened) : number(opened) {}
  ~File() {
    if (number >= 0) ::close(number);
  }
  File(const File&) = delete;
  File& operator=(const File&) = delete;
};

int openAgain(const fs::path& path, int flags) {
  int file = -1;
  while ((file = ::open(path.c_str(), flags | O_CLOEXEC)) < 0 && errno == EINTR)
    throwIfInterrupted(); // a pipe waits for its reader
  return file;
}

} // namespace

bool isStandardOutput(const fs::path& target) {
  struct stat one {};
  struct stat other {};
  return target == "-" ||
         (::stat(target.c_str(), &one) == 0 && ::fstat(STDOUT_FILENO, &other) == 0 &&
          !S_ISCHR(one.st_mode) && one.st_dev == other.st_dev && one.st_ino == other.st_ino);
}

bool isStream(const fs::path& target) {
  std::error_code error;
  return isStandardOutput(target) || fs::is_other(target, error);
}

PendingFile::PendingFile(fs::path target) : m_target(std::move(target)) {
  struct stat old {};
  const bool exists = m_target != "-" && ::stat(m_target.c_str(), &old) == 0;
  if (exists && S_ISDIR(old.st_mode))
    throw std::runtime_error("'" + m_target.string() + "' is a folder");
  if (exists && ::access(m_target.c_str(), W_OK) != 0) cannotWrite(m_target, errno);
  m_through = isStream(m_target);
  if (!m_through) m_target = behindLinks(m_target);
  const fs::path folder = m_target.parent_path();
  if (exists && ::access(folder.empty() ? "." : folder.c_str(), W_OK) != 0) m_through = true;

  const fs::path made = m_through ? fs::temp_directory_path() : folder;
  const std::string directory = made.empty() ? "" : (made / "").string();
  platform::removeAbandonedFiles(directory);
  m_part = std::make_unique<platform::TemporaryFile>(directory, exists || m_through);
  if (!*m_part) cannotWrite(m_target, errno);
  if (!exists || m_through) return;
  if (::fchown(m_part->descriptor(), old.st_uid, old.st_gid) != 0)
    errno = 0; // the owner's right alone
  ::fchmod(m_part->descriptor(), old.st_mode & kPermissions);
}

PendingFile::~PendingFile() = default;

fs::path PendingFile::path() const { return m_part->path(); }

void PendingFile::copyThrough() const {
  const File from(openAgain(path(), O_RDONLY));
  const File to(isStandardOutput(m_target) ? ::dup(STDOUT_FILENO)
                                           : openAgain(m_target, O_WRONLY | O_TRUNC));
  if (from.number < 0 || to.number < 0) cannotWrite(m_target, errno);
  const auto bytes = std::make_unique<std::array<char, 1 << 16>>();
  for (;;) {
    const ssize_t got = ::read(from.number, bytes->data(), bytes->size());
    if (got < 0 && errno == EINTR) continue;
    if (got < 0) cannotWrite(m_target, errno);
    if (got == 0) return;
    throwIfInterrupted();
    if (const int error = writeAll(to.number, {bytes->data(), static_cast<std::size_t>(got)});
        error != 0)
      cannotWrite(m_target, error);
  }
}

void PendingFile::commit() {
  throwIfInterrupted();
  if (m_through) return copyThrough(); // the end removes the copy
  if (!m_part->moveTo(m_target)) cannotWrite(m_target, errno);
}

void writeFile(const fs::path& target, std::span<const char> bytes) {
  PendingFile pending(target);
  {
    const File file(openAgain(pending.path(), O_WRONLY | O_TRUNC));
    if (file.number < 0) cannotWrite(target, errno);
    if (const int error = writeAll(file.number, bytes); error != 0) cannotWrite(target, error);
    if (::fsync(file.number) != 0) cannotWrite(target, errno);
  }
  pending.commit();
}

} // namespace qlx::tools
