// SPDX-License-Identifier: ISC
#pragma once

#include <cstddef>

namespace qlx::validate {

/// What this process holds of the system, counted at construction.
class ProcessState {
 public:
  ProcessState();
  std::size_t threads() const { return m_threads; }
  std::size_t children() const { return m_children; } ///< processes started by any thread
  std::size_t descriptors() const { return m_descriptors; }
  std::size_t mappings() const { return m_mappings; }   ///< areas of memory
  std::size_t heapBytes() const { return m_heapBytes; } ///< in use; 0 where a sanitizer keeps it

 private:
  std::size_t m_threads = 0;
  std::size_t m_children = 0;
  std::size_t m_descriptors = 0;
  std::size_t m_mappings = 0;
  std::size_t m_heapBytes = 0;
};

} // namespace qlx::validate
