// SPDX-License-Identifier: ISC
#include "brezan/System.h"

#include <io.h>
#include <stdexcept>

#ifndef NOMINMAX
#define NOMINMAX
#endif
#define WIN32_LEAN_AND_MEAN
#include <windows.h>

#include <psapi.h>

namespace qlx::tools {

namespace fs = std::filesystem;

SharedObject::SharedObject(const fs::path& path)
    : m_handle(LoadLibraryW(fs::absolute(path).c_str())) {
  if (m_handle == nullptr)
    throw std::runtime_error("cannot load: error " + std::to_string(GetLastError()));
}

SharedObject::~SharedObject() { FreeLibrary(static_cast<HMODULE>(m_handle)); }

void* SharedObject::symbol(const char* name) const {
  return reinterpret_cast<void*>(GetProcAddress(static_cast<HMODULE>(m_handle), name));
}

fs::path executablePath() {
  constexpr DWORD kLongestPath = 32768;
  std::wstring path(kLongestPath, L'\0');
  path.resize(GetModuleFileNameW(nullptr, path.data(), kLongestPath));
  return path;
}

std::vector<fs::path> pluginFolders() {
  std::vector<fs::path> folders;
  for (const wchar_t* const variable : {L"CommonProgramFiles", L"ProgramFiles"})
    if (const wchar_t* const base = _wgetenv(variable))
      folders.push_back(fs::path(base) / "VSTPlugins");
  return folders;
}

std::string pluginFileName() { return "QLXBrezan.dll"; }

std::optional<std::size_t> residentBytes() {
  PROCESS_MEMORY_COUNTERS counters{};
  if (K32GetProcessMemoryInfo(GetCurrentProcess(), &counters, sizeof counters) == 0)
    return std::nullopt;
  return counters.WorkingSetSize;
}

double threadCpuSeconds() {
  FILETIME created, ended, kernel, user;
  if (GetThreadTimes(GetCurrentThread(), &created, &ended, &kernel, &user) == 0) return 0.0;
  const auto ticks = [](const FILETIME& time) {
    return static_cast<double>(std::uint64_t{time.dwHighDateTime} << 32 | time.dwLowDateTime);
  };
  return 1e-7 * (ticks(kernel) + ticks(user)); // of 100 ns
}

bool pinThread(int processor) {
  DWORD_PTR usable = 0;
  DWORD_PTR ofSystem = 0;
  if (GetProcessAffinityMask(GetCurrentProcess(), &usable, &ofSystem) == 0) return false;
  for (; usable != 0; usable &= usable - 1)
    if (processor-- == 0)
      return SetThreadAffinityMask(GetCurrentThread(), usable & ~(usable - 1)) != 0;
  return false;
}

void setEnvironment(const std::string& name, const std::string& value) {
  SetEnvironmentVariableA(name.c_str(), value.c_str());
}

bool errorStreamIsTerminal() { return _isatty(_fileno(stderr)) != 0; }

int errorStreamColumns() {
  CONSOLE_SCREEN_BUFFER_INFO about{};
  constexpr int kUsual = 80;
  if (GetConsoleScreenBufferInfo(GetStdHandle(STD_ERROR_HANDLE), &about) == 0) return kUsual;
  return about.srWindow.Right - about.srWindow.Left + 1;
}

} // namespace qlx::tools
