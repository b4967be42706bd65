// SPDX-License-Identifier: ISC
#pragma once

#include "platform/PixelView.h"

#include <cstddef>
#include <cstdint>
#include <vector>

namespace qlx::gui {

/// Pixels in memory: 32-bit words 0xAARRGGBB, colours multiplied by alpha, rows from the top
/// without gaps.
struct PixelBuffer {
  PixelBuffer() = default;
  /// Transparent. Width and height from 0.
  PixelBuffer(int w, int h)
      : width(w), height(h), pixels(static_cast<std::size_t>(w) * static_cast<std::size_t>(h)) {}

  std::uint32_t* row(int y) {
    return pixels.data() + static_cast<std::size_t>(y) * static_cast<std::size_t>(width);
  }
  const std::uint32_t* row(int y) const {
    return pixels.data() + static_cast<std::size_t>(y) * static_cast<std::size_t>(width);
  }
  platform::PixelView view() const { return {pixels.data(), width, height}; }

  int width = 0;
  int height = 0;
  std::vector<std::uint32_t> pixels;
};

} // namespace qlx::gui
