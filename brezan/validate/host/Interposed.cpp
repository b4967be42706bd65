// SPDX-License-Identifier: ISC
// Stands in for the C library's functions that allocate or lock, in the whole program with every
// library that it loads, so that calls on an audio thread can be seen. Each does what the C
// library's own does.
#include "brezan/validate/host/RealTimeWatch.h"

#include <atomic>
#include <cerrno>
#include <cstdlib>
#include <dlfcn.h>
#include <pthread.h>
#include <semaphore.h>

#define QLX_STANDS_IN __attribute__((visibility("default"))) // NOLINT: an attribute, not a value

using qlx::validate::noteStall;
using qlx::validate::Stall;

namespace {

/// The C library's own function. Looked up at the first call, which may come before any
/// constructor has run.
template <typename Function>
Function* own(std::atomic<void*>& known, const char* name) {
  void* found = known.load(std::memory_order_relaxed);
  if (found == nullptr) {
    found = ::dlsym(RTLD_NEXT, name);
    known.store(found, std::memory_order_relaxed);
  }
  return reinterpret_cast<Function*>(found);
}

constexpr const char* kRelease = "free";

} // namespace

extern "C" {

// The C library gives these names to its own.
void* __libc_malloc(std::size_t size);                          // NOLINT
void* __libc_calloc(std::size_t count, std::size_t size);       // NOLINT
void* __libc_realloc(void* memory, std::size_t size);           // NOLINT
void* __libc_memalign(std::size_t alignment, std::size_t size); // NOLINT
void __libc_free(void* memory);                                 // NOLINT

QLX_STANDS_IN void* malloc(std::size_t size) {
  noteStall(Stall::Allocation, "malloc");
  return __libc_malloc(size);
}
QLX_STANDS_IN void* calloc(std::size_t count, std::size_t size) {
  noteStall(Stall::Allocation, "calloc");
  return __libc_calloc(count, size);
}
QLX_STANDS_IN void* realloc(void* memory, std::size_t size) {
  noteStall(Stall::Allocation, "realloc");
  return __libc_realloc(memory, size);
}
QLX_STANDS_IN void* memalign(std::size_t alignment, std::size_t size) {
  noteStall(Stall::Allocation, "memalign");
  return __libc_memalign(alignment, size);
}
QLX_STANDS_IN void* aligned_alloc(std::size_t alignment, std::size_t size) {
  noteStall(Stall::Allocation, "aligned_alloc");
  return __libc_memalign(alignment, size);
}
QLX_STANDS_IN int posix_memalign(void** memory, std::size_t alignment, std::size_t size) {
  noteStall(Stall::Allocation, "posix_memalign");
  if (alignment < sizeof(void*) || (alignment & (alignment - 1)) != 0) return EINVAL;
  void* const got = __libc_memalign(alignment, size);
  if (got == nullptr) return ENOMEM;
  *memory = got;
  return 0;
}
QLX_STANDS_IN void free(void* memory) {
  if (memory != nullptr) noteStall(Stall::Allocation, kRelease);
  __libc_free(memory);
}

QLX_STANDS_IN int pthread_mutex_lock(pthread_mutex_t* mutex) {
  static std::atomic<void*> known{nullptr};
  noteStall(Stall::Lock, "pthread_mutex_lock");
  return own<decltype(pthread_mutex_lock)>(known, "pthread_mutex_lock")(mutex);
}
QLX_STANDS_IN int pthread_rwlock_rdlock(pthread_rwlock_t* lock) {
  static std::atomic<void*> known{nullptr};
  noteStall(Stall::Lock, "pthread_rwlock_rdlock");
  return own<decltype(pthread_rwlock_rdlock)>(known, "pthread_rwlock_rdlock")(lock);
}
QLX_STANDS_IN int pthread_rwlock_wrlock(pthread_rwlock_t* lock) {
  static std::atomic<void*> known{nullptr};
  noteStall(Stall::Lock, "pthread_rwlock_wrlock");
  return own<decltype(pthread_rwlock_wrlock)>(known, "pthread_rwlock_wrlock")(lock);
}
QLX_STANDS_IN int pthread_spin_lock(pthread_spinlock_t* lock) {
  static std::atomic<void*> known{nullptr};
  noteStall(Stall::Lock, "pthread_spin_lock");
  return own<decltype(pthread_spin_lock)>(known, "pthread_spin_lock")(lock);
}
QLX_STANDS_IN int sem_wait(sem_t* semaphore) {
  static std::atomic<void*> known{nullptr};
  noteStall(Stall::Lock, "sem_wait");
  return own<decltype(sem_wait)>(known, "sem_wait")(semaphore);
}
}
