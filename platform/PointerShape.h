// SPDX-License-Identifier: ISC
#pragma once

#include <cstdint>

namespace qlx::platform {

/// What the pointer looks like over a window.
enum class PointerShape : std::uint8_t {
  kArrow,
  kUpDown, ///< a vertical double arrow: to be dragged up and down
  kHand,   ///< to be clicked
  kText,   ///< to be typed into
};

} // namespace qlx::platform
