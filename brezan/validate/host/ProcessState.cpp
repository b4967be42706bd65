// SPDX-License-Identifier: ISC
#include "brezan/validate/host/ProcessState.h"

#include <chrono>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <malloc.h>
#include <string>
#include <thread>

namespace qlx::validate {

namespace {

namespace fs = std::filesystem;

std::size_t entries(const char* folder) {
  std::error_code error;
  const fs::directory_iterator all(folder, error);
  return static_cast<std::size_t>(std::distance(begin(all), end(all)));
}

std::size_t threadCount() { return entries("/proc/self/task"); }

// A thread that has been joined may stay in the system's list for a moment: up to two seconds where
// the machine is busy.
std::size_t settledThreadCount() {
  std::size_t count = threadCount();
  for (int i = 0; i < 1000 && count > 1; ++i) {
    std::this_thread::sleep_for(std::chrono::milliseconds(2));
    count = threadCount();
  }
  return count;
}

} // namespace

ProcessState::ProcessState()
    : m_threads(settledThreadCount()), m_descriptors(entries("/proc/self/fd")) {
  std::error_code error;
  for (const auto& task : fs::directory_iterator("/proc/self/task", error)) {
    std::ifstream list(task.path() / "children");
    m_children +=
        static_cast<std::size_t>(std::distance(std::istream_iterator<std::string>(list), {}));
  }
  std::ifstream maps("/proc/self/maps");
  for (std::string line; std::getline(maps, line);) ++m_mappings;
  const auto heap = ::mallinfo2();
  m_heapBytes = heap.uordblks + heap.hblkhd;
}

} // namespace qlx::validate
