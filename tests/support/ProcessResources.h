// SPDX-License-Identifier: ISC
#pragma once

#include <cstddef>
#include <filesystem>
#include <fstream>
#include <malloc.h>
#include <string>
#include <unistd.h>

/// What this process holds of the system, to see that nothing is left behind.
namespace qlx::test {

inline std::size_t openDescriptors() {
  const std::filesystem::directory_iterator all("/proc/self/fd");
  return static_cast<std::size_t>(std::distance(begin(all), end(all)));
}

/// Segments of shared memory that are its own.
inline std::size_t sharedSegments() {
  std::ifstream list("/proc/sysvipc/shm");
  const std::string own = std::to_string(getpid());
  std::size_t count = 0;
  for (std::string line; std::getline(list, line);)
    count += line.find(" " + own + " ") != std::string::npos ? 1U : 0U;
  return count;
}

/// Bytes on the heap, 0 where a sanitizer keeps it.
inline std::size_t heapBytes() {
  const auto info = mallinfo2();
  return info.uordblks + info.hblkhd;
}

} // namespace qlx::test
