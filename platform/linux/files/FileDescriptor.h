// SPDX-License-Identifier: ISC
#pragma once

#include <unistd.h>

#include <utility>

namespace qlx::platform {

/// Owner of one open file descriptor.
class FileDescriptor {
 public:
  explicit FileDescriptor(int number = -1) noexcept : m_number(number) {}
  FileDescriptor(FileDescriptor&& other) noexcept : m_number(std::exchange(other.m_number, -1)) {}
  FileDescriptor& operator=(FileDescriptor&& other) noexcept {
    std::swap(m_number, other.m_number);
    return *this;
  }
  ~FileDescriptor() {
    if (m_number >= 0) ::close(m_number);
  }

  explicit operator bool() const noexcept { return m_number >= 0; }
  int get() const noexcept { return m_number; }

 private:
  int m_number;
};

} // namespace qlx::platform
