// SPDX-License-Identifier: ISC
#include "brezan/System.h"

#include <array>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <ctime>
#include <dlfcn.h>
#include <fcntl.h>
#include <fstream>
#include <sched.h>
#include <sstream>
#include <stdexcept>
#include <sys/ioctl.h>
#include <unistd.h>

namespace qlx::tools {

namespace fs = std::filesystem;

SharedObject::SharedObject(const fs::path& path)
    : m_handle(dlopen(fs::absolute(path).c_str(), RTLD_NOW | RTLD_LOCAL)) {
  if (m_handle == nullptr) throw std::runtime_error(std::string("cannot load: ") + dlerror());
}

SharedObject::~SharedObject() { dlclose(m_handle); }

void* SharedObject::symbol(const char* name) const { return dlsym(m_handle, name); }

fs::path executablePath() {
  std::error_code error;
  return fs::read_symlink("/proc/self/exe", error);
}

std::vector<fs::path> pluginFolders() {
  std::vector<fs::path> folders;
  if (const char* list = std::getenv("VST_PATH")) {
    std::istringstream parts(list);
    for (std::string part; std::getline(parts, part, ':');)
      if (!part.empty()) folders.emplace_back(part);
  }
  if (const char* home = std::getenv("HOME")) folders.emplace_back(fs::path(home) / ".vst");
  folders.emplace_back("/usr/local/lib/vst");
  folders.emplace_back("/usr/lib/vst");
  return folders;
}

std::string pluginFolderWords() {
  return "../lib/vst, $VST_PATH, ~/.vst, /usr/local/lib/vst, /usr/lib/vst";
}

std::string pluginFileName() { return "QLXBrezan.so"; }

std::optional<std::size_t> residentBytes() {
  std::ifstream pages("/proc/self/statm");
  std::size_t total = 0, resident = 0;
  if (!(pages >> total >> resident)) return std::nullopt;
  return resident * static_cast<std::size_t>(sysconf(_SC_PAGESIZE));
}

double threadCpuSeconds() {
  timespec time{};
  clock_gettime(CLOCK_THREAD_CPUTIME_ID, &time);
  return static_cast<double>(time.tv_sec) + 1e-9 * static_cast<double>(time.tv_nsec);
}

bool pinThread(int processor) {
  cpu_set_t usable;
  if (sched_getaffinity(0, sizeof usable, &usable) != 0) return false;
  for (int cpu = 0; cpu < CPU_SETSIZE; ++cpu) {
    if (!CPU_ISSET(cpu, &usable) || processor-- != 0) continue;
    cpu_set_t one;
    CPU_ZERO(&one);
    CPU_SET(cpu, &one);
    return sched_setaffinity(0, sizeof one, &one) == 0;
  }
  return false;
}

void setEnvironment(const std::string& name, const std::string& value) {
  setenv(name.c_str(), value.c_str(), 1);
}

void watchForInterrupts(void (*note)(int)) {
  for (const int number : std::array{SIGINT, SIGTERM, SIGHUP}) {
    struct sigaction before {};
    if (sigaction(number, nullptr, &before) != 0 || before.sa_handler == SIG_IGN) continue;
    struct sigaction action {};
    action.sa_handler = note;
    sigaction(number, &action, nullptr);
  }
  for (const int number : std::array{SIGPIPE, SIGXFSZ}) std::signal(number, SIG_IGN);
}

void prepareStandardStreams() {}

int openForReading(const fs::path& path) { return open(path.c_str(), O_RDONLY | O_CLOEXEC); }

int openTemporaryFile() {
  std::FILE* const file = std::tmpfile();
  if (file == nullptr) return -1;
  const int copy = dup(fileno(file));
  std::fclose(file);
  return copy;
}

bool errorStreamIsTerminal() {
  const char* kind = std::getenv("TERM");
  return isatty(STDERR_FILENO) == 1 && kind != nullptr && std::strcmp(kind, "dumb") != 0;
}

int errorStreamColumns() {
  winsize size{};
  return ioctl(STDERR_FILENO, TIOCGWINSZ, &size) == 0 && size.ws_col > 0 ? size.ws_col : 80;
}

} // namespace qlx::tools
