// SPDX-License-Identifier: ISC
#pragma once

namespace qlx::artwork {

/// A place in layout pixels: x to the right, y down.
struct Point {
  double x = 0;
  double y = 0;
};

/// A rectangle on whole layout pixels, right and bottom excluded.
struct Box {
  int left = 0;
  int top = 0;
  int right = 0;
  int bottom = 0;

  constexpr int width() const { return right - left; }
  constexpr int height() const { return bottom - top; }
  constexpr double centreX() const { return 0.5 * (left + right); }
  constexpr double centreY() const { return 0.5 * (top + bottom); }
  constexpr Box grown(int by) const { return {left - by, top - by, right + by, bottom + by}; }
  constexpr Box moved(int dx, int dy) const {
    return {left + dx, top + dy, right + dx, bottom + dy};
  }
};

} // namespace qlx::artwork
