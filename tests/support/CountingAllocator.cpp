// SPDX-License-Identifier: ISC
#include "tests/support/CountingAllocator.h"

#include <atomic>
#include <cstdlib>
#include <new>

namespace {

std::atomic<int> g_allocations{0};

} // namespace

void* operator new(std::size_t size) {
  ++g_allocations;
  if (void* p = std::malloc(size)) return p;
  throw std::bad_alloc();
}
void* operator new(std::size_t size, const std::nothrow_t&) noexcept {
  ++g_allocations;
  return std::malloc(size);
}
void operator delete(void* p) noexcept { std::free(p); }
void operator delete(void* p, std::size_t) noexcept { std::free(p); }

namespace qlx::test {

AllocationCount::AllocationCount() : m_before(g_allocations) {}
int AllocationCount::value() const { return g_allocations - m_before; }

} // namespace qlx::test
