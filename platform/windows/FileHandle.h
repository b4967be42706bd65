// SPDX-License-Identifier: ISC
#pragma once

#include "platform/windows/Windows.h"

namespace qlx::platform {

/// An open file, closed with its owner.
class FileHandle {
 public:
  explicit FileHandle(HANDLE handle) : m_handle(handle) {}
  ~FileHandle() { close(); }
  FileHandle(const FileHandle&) = delete;
  FileHandle& operator=(const FileHandle&) = delete;

  explicit operator bool() const { return m_handle != INVALID_HANDLE_VALUE; }
  HANDLE get() const { return m_handle; }
  void close() {
    if (m_handle != INVALID_HANDLE_VALUE) CloseHandle(m_handle);
    m_handle = INVALID_HANDLE_VALUE;
  }

 private:
  HANDLE m_handle;
};

} // namespace qlx::platform
