// SPDX-License-Identifier: ISC
#pragma once

#include "gui/CControl.h"
#include "gui/drawing/CBitmap.h"
#include "gui/drawing/CDrawContext.h"

#include <memory>

namespace qlx::test {

/// A strip whose frames are plain, frame n in the colour 0xFF000000 + n.
inline gui::CBitmapRef numberedStrip(int width, int frameHeight, int frames) {
  gui::PixelBuffer pixels(width, frameHeight * frames);
  for (int y = 0; y < pixels.height; ++y) {
    for (int x = 0; x < width; ++x) {
      pixels.row(y)[x] = 0xFF000000U + static_cast<std::uint32_t>(y / frameHeight);
    }
  }
  return std::make_shared<gui::CBitmap>(std::move(pixels));
}

/// What the control draws, on a transparent ground of 500 x 500.
inline gui::PixelBuffer pictureOf(gui::CControl& control) {
  gui::PixelBuffer pixels(500, 500);
  gui::CDrawContext context(pixels, nullptr);
  control.draw(context);
  return pixels;
}

/// Number of the frame that a control on a numbered strip draws, if it fills its rectangle with it;
/// -1 for anything else.
inline int frameShownBy(gui::CControl& control) {
  const gui::PixelBuffer pixels = pictureOf(control);
  const auto place = control.getViewSize().nearestPixels();
  const std::uint32_t colour = pixels.row(place.top)[place.left];
  for (int y = 0; y < pixels.height; ++y) {
    for (int x = 0; x < pixels.width; ++x) {
      const bool inside = x >= place.left && x < place.right && y >= place.top && y < place.bottom;
      if (pixels.row(y)[x] != (inside ? colour : 0U)) return -1;
    }
  }
  return static_cast<int>(colour & 0xFFFFFFU);
}

} // namespace qlx::test
