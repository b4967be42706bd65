// SPDX-License-Identifier: ISC
#pragma once

#include "platform/PixelRect.h"

namespace qlx::artwork {

/// A place in layout pixels: x to the right, y down.
struct Point {
  double x = 0;
  double y = 0;
};

/// On whole layout pixels.
using platform::PixelRect;

} // namespace qlx::artwork
