// SPDX-License-Identifier: ISC
#pragma once

#include <cstdint>

namespace qlx::platform {

/// Whole-pixel rectangle; right and bottom are outside it.
struct PixelRect {
  int left = 0;
  int top = 0;
  int right = 0;
  int bottom = 0;

  constexpr int width() const { return right - left; }
  constexpr int height() const { return bottom - top; }
  constexpr bool empty() const { return right <= left || bottom <= top; }
  constexpr bool operator==(const PixelRect&) const = default;
};

/// The part that both rectangles cover; empty when they don't meet.
constexpr PixelRect intersection(const PixelRect& a, const PixelRect& b) {
  return {a.left > b.left ? a.left : b.left, a.top > b.top ? a.top : b.top,
          a.right < b.right ? a.right : b.right, a.bottom < b.bottom ? a.bottom : b.bottom};
}

/// Pixels in memory, owned by somebody else: 32-bit words 0xAARRGGBB, colours multiplied by alpha,
/// rows from the top, `width` words each.
struct PixelView {
  const std::uint32_t* pixels = nullptr;
  int width = 0;
  int height = 0;
};

} // namespace qlx::platform
