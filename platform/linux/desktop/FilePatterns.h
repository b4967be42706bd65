// SPDX-License-Identifier: ISC
#pragma once

#include "platform/FileSelector.h"

#include <algorithm>
#include <array>
#include <string>

namespace qlx::platform {

/// Name patterns of a type, with small letters and, as other systems write them, with capitals.
inline std::array<std::string, 2> filePatterns(const FileType& type) {
  std::string capitals = type.extension;
  std::transform(capitals.begin(), capitals.end(), capitals.begin(),
                 [](char c) { return c >= 'a' && c <= 'z' ? static_cast<char>(c - 32) : c; });
  return {"*." + type.extension, "*." + capitals};
}

} // namespace qlx::platform
