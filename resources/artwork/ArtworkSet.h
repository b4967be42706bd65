// SPDX-License-Identifier: ISC
#pragma once

#include "resources/artwork/drawing/Canvas.h"
#include "resources/artwork/drawing/Lettering.h"
#include "resources/artwork/drawing/Picture.h"

#include <span>

namespace qlx::artwork {

/// What a drawing works on: one frame of a strip, and the letters to set in it.
struct Frame {
  Canvas& canvas;
  const Lettering& lettering;
  int index;
};

/// One image of the editor: a number, the frame's size in layout pixels, how many frames stand
/// below each other in the strip, and who draws a frame.
struct Artwork {
  int number;
  int width;
  int frameHeight;
  int frames;
  void (*draw)(Frame&);
  const char* extension = ".png"; ///< of its file: ".png", or ".bmp" for an image without alpha
};

/// Every image of the editor, by ascending number.
std::span<const Artwork> artworkSet();

/// The image with this number; throws std::out_of_range when there is none.
const Artwork& artwork(int number);

/// Draws one frame, 0 to frames - 1, at `scale` times the layout's size.
Picture drawnFrame(const Artwork& artwork, const Lettering& lettering, int scale, int index);

/// Draws the whole strip at `scale` times the layout's size.
Picture drawn(const Artwork& artwork, const Lettering& lettering, int scale);

} // namespace qlx::artwork
