// SPDX-License-Identifier: ISC
#include "platform/TemporaryFile.h"

#include "platform/windows/Utf16.h"
#include "platform/windows/Windows.h"

#include <atomic>
#include <string>

namespace qlx::platform {
namespace {

constexpr const wchar_t* kPrefix = L".~saving-";
constexpr const wchar_t* kSuffix = L".part";

std::wstring temporaryName() {
  static std::atomic<unsigned> count{0};
  return kPrefix + std::to_wstring(GetCurrentProcessId()) + L'-' +
         std::to_wstring(GetTickCount64()) + L'-' + std::to_wstring(count++) + kSuffix;
}

HANDLE asHandle(std::intptr_t number) { return reinterpret_cast<HANDLE>(number); }

} // namespace

// While it is open, nobody can remove it. The folder's rights are the file's, too.
TemporaryFile::TemporaryFile(const std::string& directory, bool /*secret*/) {
  std::string path = directory + toUtf8(temporaryName());
  const HANDLE file =
      CreateFileW(toUtf16(path).c_str(), GENERIC_WRITE, FILE_SHARE_READ | FILE_SHARE_WRITE, nullptr,
                  CREATE_NEW, FILE_ATTRIBUTE_NORMAL, nullptr);
  if (file == INVALID_HANDLE_VALUE) return;
  m_handle = reinterpret_cast<std::intptr_t>(file);
  m_path = std::move(path);
}

TemporaryFile::~TemporaryFile() {
  if (m_handle != -1) CloseHandle(asHandle(m_handle));
  if (!m_path.empty()) DeleteFileW(toUtf16(m_path).c_str());
}

bool TemporaryFile::moveTo(const std::string& target) {
  if (m_handle != -1) CloseHandle(asHandle(m_handle));
  m_handle = -1;
  const std::wstring from = toUtf16(m_path);
  const std::wstring to = toUtf16(target);
  // ReplaceFileW keeps the old file's rights, but wants that there is one.
  const bool replaced = GetFileAttributesW(to.c_str()) != INVALID_FILE_ATTRIBUTES &&
                        ReplaceFileW(to.c_str(), from.c_str(), nullptr, 0, nullptr, nullptr) != 0;
  if (!replaced && MoveFileExW(from.c_str(), to.c_str(),
                               MOVEFILE_REPLACE_EXISTING | MOVEFILE_WRITE_THROUGH) == 0)
    return false;
  m_path.clear();
  return true;
}

// Those that nobody has open and that have not been written for longer than a move takes.
void removeAbandonedFiles(const std::string& directory) {
  constexpr std::uint64_t kTicksPerMinute = 60ULL * 10'000'000ULL; // of 100 ns
  const auto ticks = [](const FILETIME& time) {
    return std::uint64_t{time.dwHighDateTime} << 32 | time.dwLowDateTime;
  };
  FILETIME now{};
  GetSystemTimeAsFileTime(&now);
  const std::wstring folder = toUtf16(directory);
  WIN32_FIND_DATAW found;
  const HANDLE search = FindFirstFileW((folder + kPrefix + L'*' + kSuffix).c_str(), &found);
  if (search == INVALID_HANDLE_VALUE) return;
  do {
    if (ticks(found.ftLastWriteTime) + kTicksPerMinute < ticks(now))
      DeleteFileW((folder + found.cFileName).c_str());
  } while (FindNextFileW(search, &found) != 0);
  FindClose(search);
}

} // namespace qlx::platform
