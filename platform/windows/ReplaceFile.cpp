// SPDX-License-Identifier: ISC
#include "platform/Files.h"

#include "platform/TemporaryFile.h"
#include "platform/windows/FileHandle.h"
#include "platform/windows/Utf16.h"

#include <algorithm>

namespace qlx::platform {
namespace {

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

bool writeWhole(const std::wstring& path, std::span<const std::uint8_t> bytes) {
  const FileHandle file(CreateFileW(path.c_str(), GENERIC_WRITE, FILE_SHARE_READ | FILE_SHARE_WRITE,
                                    nullptr, OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL, nullptr));
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

  const std::string directory = toUtf8(target.substr(0, nameAt));
  removeAbandonedFiles(directory);
  TemporaryFile temporary(directory, false);
  return temporary && writeWhole(toUtf16(temporary.path()), bytes) &&
         temporary.moveTo(toUtf8(target));
}

} // namespace qlx::platform
