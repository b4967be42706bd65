// SPDX-License-Identifier: ISC
#include "platform/Files.h"

#include "platform/windows/FileHandle.h"
#include "platform/windows/Utf16.h"

#include <algorithm>
#include <atomic>

namespace qlx::platform {
namespace {

constexpr const wchar_t* kTemporaryPrefix = L".~saving-";
constexpr const wchar_t* kTemporarySuffix = L".part";

/// What a chain of links leads to; the path itself when there is nothing by that name.
std::wstring followLinks(const std::wstring& path) {
  const FileHandle file(CreateFileW(path.c_str(), 0,
                                    FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE, nullptr,
                                    OPEN_EXISTING, FILE_FLAG_BACKUP_SEMANTICS, nullptr));
  constexpr DWORD kLongestPath = 32768;
  std::wstring end(kLongestPath, L'\0');
  const DWORD length =
      file ? GetFinalPathNameByHandleW(file.get(), end.data(), kLongestPath, 0) : 0;
  if (length == 0 || length >= kLongestPath) return path;
  end.resize(length);
  return end;
}

/// Whether nobody keeps others from removing the file.
bool canBeRemoved(const std::wstring& path) {
  return static_cast<bool>(FileHandle(
      CreateFileW(path.c_str(), DELETE, FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE,
                  nullptr, OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL, nullptr)));
}

std::wstring temporaryName() {
  static std::atomic<unsigned> count{0};
  return kTemporaryPrefix + std::to_wstring(GetCurrentProcessId()) + L'-' +
         std::to_wstring(GetTickCount64()) + L'-' + std::to_wstring(count++) + kTemporarySuffix;
}

/// Removes temporary files of processes that are no more: those that nobody has open and that have
/// not been written for longer than a save takes.
void removeAbandoned(const std::wstring& directory) {
  constexpr std::uint64_t kTicksPerMinute = 60ULL * 10'000'000ULL; // of 100 ns
  const auto ticks = [](const FILETIME& time) {
    return std::uint64_t{time.dwHighDateTime} << 32 | time.dwLowDateTime;
  };
  FILETIME now{};
  GetSystemTimeAsFileTime(&now);
  WIN32_FIND_DATAW found;
  const HANDLE search =
      FindFirstFileW((directory + kTemporaryPrefix + L'*' + kTemporarySuffix).c_str(), &found);
  if (search == INVALID_HANDLE_VALUE) return;
  do {
    if (ticks(found.ftLastWriteTime) + kTicksPerMinute < ticks(now))
      DeleteFileW((directory + found.cFileName).c_str());
  } while (FindNextFileW(search, &found) != 0);
  FindClose(search);
}

bool writeWhole(const std::wstring& path, std::span<const std::uint8_t> bytes) {
  const FileHandle file(CreateFileW(path.c_str(), GENERIC_WRITE, 0, nullptr, CREATE_NEW,
                                    FILE_ATTRIBUTE_NORMAL, nullptr));
  if (!file) return false;
  while (!bytes.empty()) {
    constexpr std::size_t kMostAtOnce = std::size_t{1} << 20;
    DWORD written = 0;
    const auto wanted = static_cast<DWORD>(std::min(kMostAtOnce, bytes.size()));
    if (WriteFile(file.get(), bytes.data(), wanted, &written, nullptr) == 0 || written == 0)
      return false;
    bytes = bytes.subspan(written);
  }
  return FlushFileBuffers(file.get()) != 0;
}

} // namespace

bool replaceFile(const std::string& path, std::span<const std::uint8_t> bytes) {
  const std::wstring target = followLinks(toUtf16(path));
  const std::size_t nameAt = target.find_last_of(L"\\/") + 1;
  const DWORD attributes = GetFileAttributesW(target.c_str());
  const bool exists = attributes != INVALID_FILE_ATTRIBUTES;
  constexpr DWORD kNotToBeReplaced = FILE_ATTRIBUTE_DIRECTORY | FILE_ATTRIBUTE_READONLY;
  if (target.size() == nameAt) return false;
  if (exists && ((attributes & kNotToBeReplaced) != 0 || !canBeRemoved(target))) return false;

  const std::wstring directory = target.substr(0, nameAt);
  removeAbandoned(directory);
  const std::wstring temporary = directory + temporaryName();
  // ReplaceFileW keeps the old file's rights, but wants that there is one.
  const bool moved = writeWhole(temporary, bytes) &&
                     ((exists && ReplaceFileW(target.c_str(), temporary.c_str(), nullptr, 0,
                                              nullptr, nullptr) != 0) ||
                      MoveFileExW(temporary.c_str(), target.c_str(),
                                  MOVEFILE_REPLACE_EXISTING | MOVEFILE_WRITE_THROUGH) != 0);
  if (!moved) DeleteFileW(temporary.c_str());
  return moved;
}

} // namespace qlx::platform
