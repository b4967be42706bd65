// SPDX-License-Identifier: ISC
#include "platform/Files.h"

#include "platform/windows/FileHandle.h"
#include "platform/windows/Utf16.h"

#include <algorithm>
#include <array>

namespace qlx::platform {
namespace {

bool isSeparator(char c) { return c == '\\' || c == '/'; }

std::string withSeparator(std::string directory) {
  if (!directory.empty() && !isSeparator(directory.back())) directory += '\\';
  return directory;
}

std::string absolute(const std::string& path) {
  const std::wstring wide = toUtf16(path);
  std::wstring whole(GetFullPathNameW(wide.c_str(), 0, nullptr, nullptr), L'\0');
  const auto units = static_cast<DWORD>(whole.size());
  whole.resize(std::min(units, GetFullPathNameW(wide.c_str(), units, whole.data(), nullptr)));
  return toUtf8(whole);
}

} // namespace

std::optional<std::vector<std::uint8_t>> readFile(const std::string& path, std::size_t maxBytes) {
  const FileHandle file(CreateFileW(toUtf16(path).c_str(), GENERIC_READ,
                                    FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE, nullptr,
                                    OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL, nullptr));
  LARGE_INTEGER size{};
  if (!file || GetFileType(file.get()) != FILE_TYPE_DISK || GetFileSizeEx(file.get(), &size) == 0 ||
      static_cast<unsigned long long>(size.QuadPart) > maxBytes)
    return std::nullopt;
  std::vector<std::uint8_t> bytes(static_cast<std::size_t>(size.QuadPart));
  std::size_t done = 0;
  while (done < bytes.size()) {
    constexpr std::size_t kMostAtOnce = std::size_t{1} << 20;
    const auto wanted = static_cast<DWORD>(std::min(kMostAtOnce, bytes.size() - done));
    DWORD got = 0;
    if (ReadFile(file.get(), bytes.data() + done, wanted, &got, nullptr) == 0) return std::nullopt;
    if (got == 0) break; // shortened meanwhile
    done += got;
  }
  bytes.resize(done);
  return bytes;
}

std::string currentDirectory() {
  std::wstring path(GetCurrentDirectoryW(0, nullptr), L'\0');
  const auto units = static_cast<DWORD>(path.size());
  path.resize(std::min(units, GetCurrentDirectoryW(units, path.data())));
  return withSeparator(toUtf8(path));
}

bool changeDirectory(const std::string& directory) {
  return SetCurrentDirectoryW(toUtf16(directory).c_str()) != 0;
}

std::string homeDirectory() {
  std::array<wchar_t, MAX_PATH + 1> path{};
  const DWORD length = GetEnvironmentVariableW(L"USERPROFILE", path.data(), path.size());
  const bool known = length > 0 && length < path.size();
  return known ? withSeparator(toUtf8({path.data(), length})) : "C:\\";
}

bool fileExists(const std::string& path) {
  return GetFileAttributesW(toUtf16(path).c_str()) != INVALID_FILE_ATTRIBUTES;
}

std::optional<std::vector<FolderEntry>> listFolder(const std::string& directory) {
  WIN32_FIND_DATAW found;
  const HANDLE search = FindFirstFileW((toUtf16(withSeparator(directory)) + L"*").c_str(), &found);
  if (search == INVALID_HANDLE_VALUE) return std::nullopt;
  std::vector<FolderEntry> entries;
  do {
    const std::wstring_view name(found.cFileName);
    const DWORD attributes = found.dwFileAttributes;
    if (name != L"." && name != L".." && (attributes & FILE_ATTRIBUTE_HIDDEN) == 0)
      entries.push_back({toUtf8(name), (attributes & FILE_ATTRIBUTE_DIRECTORY) != 0});
  } while (FindNextFileW(search, &found) != 0);
  FindClose(search);
  return entries;
}

SplitPath splitPath(const std::string& path) {
  const std::string whole = path.empty() ? currentDirectory() : absolute(path);
  const std::size_t nameAt = whole.find_last_of("\\/") + 1; // 0 where there is no separator at all
  return {whole.substr(0, nameAt), whole.substr(nameAt)};
}

std::string asDirectory(const std::string& path) {
  return path.empty() ? currentDirectory() : withSeparator(absolute(path));
}

std::string pathIn(const std::string& directory, const std::string& path) {
  const bool whole = !path.empty() && (isSeparator(path[0]) || (path.size() > 1 && path[1] == ':'));
  return whole ? path : directory + path;
}

} // namespace qlx::platform
