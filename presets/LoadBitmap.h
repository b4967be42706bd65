#pragma once

#include "gui/CBitmap.h"
#include "gui/CPoint.h"

namespace qlx::presets {

/// Decodes an image of the editor by its resource number; null when there is none. Each call makes
/// a new bitmap.
gui::CBitmapRef loadBitmap(int number);

/// The height of one frame of a strip; 0 without one.
inline gui::CCoord frameHeight(const gui::CBitmapRef& strip, int frames) {
  return strip == nullptr ? 0.0 : static_cast<gui::CCoord>(strip->height() / frames);
}

} // namespace qlx::presets
