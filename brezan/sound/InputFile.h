// SPDX-License-Identifier: ISC
#pragma once

#include <fstream>
#include <string>

namespace qlx::tools {

/// A file opened for reading bytes. Throws std::runtime_error when it can't be read or is empty.
std::ifstream openToRead(const std::string& path);

} // namespace qlx::tools
