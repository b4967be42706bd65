// SPDX-License-Identifier: ISC
#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <vector>

namespace qlx::platform {

/// Looks at windows of this desktop and works them from outside, whoever they belong to: for
/// pictures and trials. One thread at a time.
class WindowRobot {
 public:
  /// Opaque pixels 0xFFRRGGBB, rows from the top.
  struct Picture {
    int width = 0;
    int height = 0;
    std::vector<std::uint32_t> pixels;
  };

  virtual ~WindowRobot() = default;
  WindowRobot() = default;
  WindowRobot(const WindowRobot&) = delete;
  WindowRobot& operator=(const WindowRobot&) = delete;

  /// What the screen shows in the place of a window and `margin` pixels around it, as far as the
  /// screen goes. Nothing when there is no such window on the screen.
  virtual std::optional<Picture> picture(std::uintptr_t window, int margin) = 0;

  /// Presses and releases the left button at a place of the window, on the innermost window there.
  /// The user's own pointer stays where it is. False when there is no such window.
  virtual bool click(std::uintptr_t window, int x, int y) = 0;
};

/// Null when there is no display.
std::unique_ptr<WindowRobot> openWindowRobot();

} // namespace qlx::platform
