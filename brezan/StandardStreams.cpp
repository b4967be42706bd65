// SPDX-License-Identifier: ISC
#include "brezan/StandardStreams.h"

#include "brezan/Interrupt.h"
#include "brezan/System.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <iostream>
#include <system_error>
#include <unistd.h>

namespace qlx::tools {

namespace {

/// How many bytes are read or written in one go; the type that counts them depends on the system.
unsigned portionOf(std::size_t bytes) {
  constexpr std::size_t kMost = std::size_t{1} << 20;
  return static_cast<unsigned>(std::min(bytes, kMost));
}

} // namespace

int writeAll(int file, std::span<const char> bytes) {
  while (!bytes.empty()) {
    const ssize_t written = ::write(file, bytes.data(), portionOf(bytes.size()));
    if (written < 0 && errno != EINTR) return errno;
    if (written < 0)
      throwIfInterrupted();
    else
      bytes = bytes.subspan(static_cast<std::size_t>(written));
  }
  return 0;
}

StandardOutput::StandardOutput() : m_before(std::cout.rdbuf()), m_memory(std::size_t{1} << 14) {
  setp(m_memory.data(), m_memory.data() + m_memory.size());
  std::cout.rdbuf(this);
}

StandardOutput::~StandardOutput() { std::cout.rdbuf(m_before); }

int StandardOutput::finish() {
  sync();
  return m_error;
}

int StandardOutput::sync() {
  const std::size_t count = static_cast<std::size_t>(pptr() - pbase());
  if (m_error == 0) m_error = writeAll(STDOUT_FILENO, {pbase(), count});
  setp(m_memory.data(), m_memory.data() + m_memory.size());
  return m_error == 0 ? 0 : -1;
}

StandardOutput::int_type StandardOutput::overflow(int_type c) {
  if (sync() != 0) return traits_type::eof();
  if (!traits_type::eq_int_type(c, traits_type::eof())) return sputc(traits_type::to_char_type(c));
  return traits_type::not_eof(c);
}

int readAsFile(int file) {
  const auto fail = [] { throw std::system_error(errno, std::generic_category()); };
  const int result = openTemporaryFile();
  if (result < 0) fail();
  std::array<char, 1 << 16> bytes{};
  for (;;) {
    const ssize_t got = ::read(file, bytes.data(), portionOf(bytes.size()));
    if (got < 0 && errno == EINTR) {
      throwIfInterrupted();
      continue;
    }
    if (got < 0) fail();
    if (got == 0) break;
    if (const int error = writeAll(result, std::span(bytes).first(static_cast<std::size_t>(got)));
        error != 0)
      throw std::system_error(error, std::generic_category());
  }
  ::lseek(result, 0, SEEK_SET);
  return result;
}

} // namespace qlx::tools
