// SPDX-License-Identifier: ISC
#include "platform/TemporaryFile.h"

#include <cerrno>
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

constexpr std::string_view kPrefix = ".~saving-";
constexpr std::string_view kSuffix = ".part";

std::string makeName(int attempt) {
  timespec now{};
  ::clock_gettime(CLOCK_REALTIME, &now);
  const auto number = static_cast<unsigned long long>(now.tv_sec) * 1'000'000'000ULL +
                      static_cast<unsigned long long>(now.tv_nsec);
  return std::string(kPrefix) + std::to_string(number) + '-' + std::to_string(::getpid()) + '-' +
         std::to_string(attempt) + std::string(kSuffix);
}

/// Locks the file for as long as its owner lives, which is how others see that it was not left
/// behind. Between its creation and its lock somebody may have taken it for an abandoned one and
/// removed it; on a file system without locks nobody can.
bool isOurs(int file) {
  if (::flock(file, LOCK_EX | LOCK_NB) != 0) return errno != EWOULDBLOCK;
  struct stat status {};
  return ::fstat(file, &status) == 0 && status.st_nlink > 0;
}

struct FolderCloser {
  void operator()(DIR* folder) const noexcept { ::closedir(folder); }
};

} // namespace

TemporaryFile::TemporaryFile(const std::string& directory, bool secret) {
  constexpr int kAttempts = 16;
  for (int i = 0; i < kAttempts; ++i) {
    std::string path = directory + makeName(i);
    const int file =
        ::open(path.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, secret ? 0600 : 0666);
    if (file < 0 && errno != EEXIST) return;
    if (file < 0) continue;
    if (isOurs(file)) {
      m_handle = file;
      m_path = std::move(path);
      return;
    }
    ::close(file);
  }
}

TemporaryFile::~TemporaryFile() {
  if (!m_path.empty()) ::unlink(m_path.c_str());
  if (m_handle >= 0) ::close(descriptor());
}

bool TemporaryFile::moveTo(const std::string& target) {
  if (::rename(m_path.c_str(), target.c_str()) != 0) return false;
  m_path.clear();
  return true;
}

void removeAbandonedFiles(const std::string& directory) {
  const std::unique_ptr<DIR, FolderCloser> folder(
      ::opendir(directory.empty() ? "." : directory.c_str()));
  if (!folder) return;
  while (const dirent* const entry = ::readdir(folder.get())) {
    const std::string_view name = entry->d_name;
    if (!name.starts_with(kPrefix) || !name.ends_with(kSuffix)) continue;
    const std::string path = directory + entry->d_name;
    const FileDescriptor file(::open(path.c_str(), O_RDWR | O_CLOEXEC | O_NOFOLLOW | O_NONBLOCK));
    if (file && ::flock(file.get(), LOCK_EX | LOCK_NB) == 0) ::unlink(path.c_str());
  }
}

} // namespace qlx::platform
