// SPDX-License-Identifier: ISC
#include "brezan/System.h"

#include <atomic>
#include <cerrno>
#include <csignal>
#include <cstdio>
#include <fcntl.h>
#include <io.h>
#include <stdexcept>
#include <utility>

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
  for (const auto& [variable, name] :
       {std::pair{L"CommonProgramFiles", "VST2"}, std::pair{L"ProgramFiles", "VSTPlugins"}})
    if (const wchar_t* const base = _wgetenv(variable)) folders.push_back(fs::path(base) / name);
  return folders;
}

std::string pluginFolderWords() {
  return "%CommonProgramFiles%\\VST2 and %ProgramFiles%\\VSTPlugins";
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

namespace {

std::atomic<void (*)(int)> noteInterrupt{nullptr};

BOOL WINAPI onConsoleEvent(DWORD event) {
  const bool byKey = event == CTRL_C_EVENT || event == CTRL_BREAK_EVENT;
  noteInterrupt.load()(byKey ? SIGINT : SIGTERM);
  // The process would end with this call; it has some seconds to end by itself.
  if (!byKey) Sleep(INFINITE);
  return TRUE;
}

} // namespace

void watchForInterrupts(void (*note)(int)) {
  noteInterrupt = note;
  SetConsoleCtrlHandler(onConsoleEvent, TRUE);
}

void prepareStandardStreams() {
  for (std::FILE* const stream : {stdin, stdout, stderr}) _setmode(_fileno(stream), _O_BINARY);
  SetConsoleOutputCP(CP_UTF8);
}

int openForReading(const fs::path& path) {
  return _wopen(path.c_str(), _O_RDONLY | _O_BINARY | _O_NOINHERIT);
}

int openTemporaryFile() {
  std::wstring folder(MAX_PATH + 1, L'\0');
  std::wstring path(MAX_PATH + 1, L'\0');
  if (GetTempPathW(static_cast<DWORD>(folder.size()), folder.data()) == 0 ||
      GetTempFileNameW(folder.c_str(), L"qlx", 0, path.data()) == 0) {
    errno = EACCES;
    return -1;
  }
  return _wopen(path.c_str(), _O_RDWR | _O_BINARY | _O_TEMPORARY | _O_NOINHERIT);
}

// The bar is redrawn by terminal sequences, which old consoles do not know.
bool errorStreamIsTerminal() {
  const HANDLE console = GetStdHandle(STD_ERROR_HANDLE);
  DWORD mode = 0;
  return GetConsoleMode(console, &mode) != 0 &&
         SetConsoleMode(console, mode | ENABLE_VIRTUAL_TERMINAL_PROCESSING) != 0;
}

int errorStreamColumns() {
  CONSOLE_SCREEN_BUFFER_INFO about{};
  constexpr int kUsual = 80;
  if (GetConsoleScreenBufferInfo(GetStdHandle(STD_ERROR_HANDLE), &about) == 0) return kUsual;
  return about.srWindow.Right - about.srWindow.Left + 1;
}

} // namespace qlx::tools
