// SPDX-License-Identifier: ISC
#pragma once

#include "gui/CPoint.h"
#include "gui/drawing/CBitmap.h"

namespace qlx::presets {

/// An image of the editor by its resource number; null when there is none. Each call makes a new
/// bitmap.
gui::CBitmapRef loadBitmap(int number);

/// The height of one frame of a strip; 0 without one.
inline gui::CCoord frameHeight(const gui::CBitmapRef& strip, int frames) {
  if (strip == nullptr) return 0.0;
  const auto height = strip->height() / frames;
  return static_cast<gui::CCoord>(height);
}

} // namespace qlx::presets
