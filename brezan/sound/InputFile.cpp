// SPDX-License-Identifier: ISC
#include "brezan/sound/InputFile.h"

#include <stdexcept>

namespace qlx::tools {

std::ifstream openToRead(const std::string& path) {
  std::ifstream in(path, std::ios::binary);
  if (!in || in.peek() == std::ifstream::traits_type::eof())
    throw std::runtime_error("cannot read '" + path + "', or it is empty");
  return in;
}

} // namespace qlx::tools
