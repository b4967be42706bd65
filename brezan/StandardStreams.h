// SPDX-License-Identifier: ISC
#pragma once

#include <cstddef>
#include <span>
#include <streambuf>
#include <vector>

namespace qlx::tools {

/// Writes all of `bytes`, also into a pipe whose reader is slow. Answers 0 or the error's number.
/// Throws Interrupted.
int writeAll(int file, std::span<const char> bytes);

/// Takes over std::cout for its life, to remember why a write to standard output has failed: the
/// library's own stream forgets the reason.
class StandardOutput : public std::streambuf {
 public:
  StandardOutput();
  ~StandardOutput() override;
  StandardOutput(const StandardOutput&) = delete;
  StandardOutput& operator=(const StandardOutput&) = delete;

  /// Writes what is left; 0, or the number of the first error since the beginning.
  int finish();

 protected:
  int_type overflow(int_type c) override;
  int sync() override;

 private:
  std::streambuf* m_before;
  std::vector<char> m_memory;
  int m_error = 0;
};

/// A file descriptor from which all that comes through a pipe or a device can be read as from a
/// file: a copy in a temporary file without a name. The caller closes it. Throws std::system_error
/// and Interrupted.
int readAsFile(int file);

} // namespace qlx::tools
