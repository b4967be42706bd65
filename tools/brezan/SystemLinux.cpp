#include "tools/brezan/System.h"

#include <cstdlib>
#include <cstring>
#include <dlfcn.h>
#include <sstream>
#include <stdexcept>
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

std::string pluginFileName() { return "QLXBrezan.so"; }

bool errorStreamIsTerminal() {
  const char* kind = std::getenv("TERM");
  return isatty(STDERR_FILENO) == 1 && kind != nullptr && std::strcmp(kind, "dumb") != 0;
}

} // namespace qlx::tools
