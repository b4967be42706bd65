// SPDX-License-Identifier: ISC
#pragma once

#include "gui/CPoint.h"
#include "gui/drawing/CBitmap.h"

#include <memory>

namespace qlx::presets {

/// An image of the editor by its resource number; null when there is none. Any thread.
gui::CBitmapRef loadBitmap(int number);

/// While any of these lives, images that were loaded stay with all that has been decoded of them,
/// for every window of the process: a window that is opened again decodes nothing. Any thread.
using KeptImages = std::shared_ptr<void>;
KeptImages keepImages();

/// The height of one frame of a strip; 0 without one.
inline gui::CCoord frameHeight(const gui::CBitmapRef& strip, int frames) {
  if (strip == nullptr) return 0.0;
  const auto height = strip->height() / frames;
  return static_cast<gui::CCoord>(height);
}

} // namespace qlx::presets
