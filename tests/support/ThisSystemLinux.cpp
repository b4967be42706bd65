// SPDX-License-Identifier: ISC
#include "tests/support/ThisSystem.h"

#include <cstdlib>
#include <dlfcn.h>
#include <new>
#include <sys/mman.h>
#include <unistd.h>

namespace qlx::test {

void keepSettingsIn(const std::filesystem::path& folder) {
  ::setenv("XDG_CONFIG_HOME", folder.c_str(), 1);
}

bool settingsWereWritten() {
  const char* const folder = std::getenv("XDG_CONFIG_HOME");
  return folder != nullptr && std::filesystem::exists(folder) && !std::filesystem::is_empty(folder);
}

void forgetDisplay() { unsetenv("DISPLAY"); }

void keepDocumentsIn(const std::filesystem::path& folder) {
  ::setenv("XDG_DATA_HOME", folder.c_str(), 1);
  ::setenv("XDG_DATA_DIRS", folder.c_str(), 1);
}

bool isLoaded(const std::filesystem::path& library) {
  void* const handle = ::dlopen(library.c_str(), RTLD_NOW | RTLD_NOLOAD);
  if (handle != nullptr) ::dlclose(handle);
  return handle != nullptr;
}

std::filesystem::path device() { return "/dev/zero"; }

GuardedPage::GuardedPage()
    : m_pages(nullptr), m_size(static_cast<std::size_t>(::sysconf(_SC_PAGESIZE))) {
  void* const pages =
      ::mmap(nullptr, 2 * m_size, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
  if (pages == MAP_FAILED) throw std::bad_alloc();
  m_pages = static_cast<char*>(pages);
  if (::mprotect(m_pages + m_size, m_size, PROT_NONE) != 0) throw std::bad_alloc();
}

GuardedPage::~GuardedPage() { ::munmap(m_pages, 2 * m_size); }

} // namespace qlx::test
