// SPDX-License-Identifier: ISC
#pragma once

#include "platform/PixelRect.h"

#include <cstdint>

namespace qlx::platform {

/// Pixels in memory, owned by somebody else: 32-bit words 0xAARRGGBB, colours multiplied by alpha,
/// rows from the top, `width` words each.
struct PixelView {
  const std::uint32_t* pixels = nullptr;
  int width = 0;
  int height = 0;
};

} // namespace qlx::platform
