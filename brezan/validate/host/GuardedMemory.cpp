// SPDX-License-Identifier: ISC
#include "brezan/validate/host/GuardedMemory.h"

#include <new>
#include <sys/mman.h>
#include <unistd.h>
#include <utility>

namespace qlx::validate {

namespace {

std::size_t pageSize() { return static_cast<std::size_t>(::sysconf(_SC_PAGESIZE)); }

} // namespace

GuardedMemory::GuardedMemory(std::size_t bytes)
    : m_begin(nullptr), m_size((bytes / pageSize() + 1) * pageSize()) {
  const std::size_t guard = pageSize();
  void* const pages =
      ::mmap(nullptr, m_size + 2 * guard, PROT_NONE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
  if (pages == MAP_FAILED) throw std::bad_alloc();
  m_begin = static_cast<char*>(pages) + guard;
  allowWrites(true);
}

GuardedMemory::~GuardedMemory() {
  if (m_begin != nullptr) ::munmap(m_begin - pageSize(), m_size + 2 * pageSize());
}

GuardedMemory::GuardedMemory(GuardedMemory&& other) noexcept
    : m_begin(std::exchange(other.m_begin, nullptr)), m_size(other.m_size) {}

void GuardedMemory::allowWrites(bool allowed) const {
  if (::mprotect(m_begin, m_size, allowed ? PROT_READ | PROT_WRITE : PROT_READ) != 0)
    throw std::bad_alloc();
}

} // namespace qlx::validate
