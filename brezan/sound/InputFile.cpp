// SPDX-License-Identifier: ISC
#include "brezan/sound/InputFile.h"

#include <cerrno>
#include <cstring>
#include <stdexcept>

namespace qlx::tools {

std::ifstream openToRead(const std::string& path) {
  std::ifstream in(path, std::ios::binary);
  const int error = errno;
  if (!in) throw std::runtime_error("cannot read '" + path + "': " + std::strerror(error));
  if (in.peek() == std::ifstream::traits_type::eof())
    throw std::runtime_error("cannot read '" + path + "': it is empty, or a folder");
  return in;
}

} // namespace qlx::tools
