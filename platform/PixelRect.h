// SPDX-License-Identifier: ISC
#pragma once

namespace qlx::platform {

/// Whole-pixel rectangle; right and bottom are outside it.
struct PixelRect {
  int left = 0;
  int top = 0;
  int right = 0;
  int bottom = 0;

  constexpr int width() const { return right - left; }
  constexpr int height() const { return bottom - top; }
  constexpr double centreX() const { return 0.5 * (left + right); }
  constexpr double centreY() const { return 0.5 * (top + bottom); }
  constexpr bool empty() const { return right <= left || bottom <= top; }
  constexpr bool operator==(const PixelRect&) const = default;

  constexpr PixelRect grown(int by) const { return {left - by, top - by, right + by, bottom + by}; }
  constexpr PixelRect moved(int dx, int dy) const {
    return {left + dx, top + dy, right + dx, bottom + dy};
  }
};

/// The part that both rectangles cover; empty when they don't meet.
constexpr PixelRect intersection(const PixelRect& a, const PixelRect& b) {
  return {a.left > b.left ? a.left : b.left, a.top > b.top ? a.top : b.top,
          a.right < b.right ? a.right : b.right, a.bottom < b.bottom ? a.bottom : b.bottom};
}

} // namespace qlx::platform
