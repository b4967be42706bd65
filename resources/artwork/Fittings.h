// SPDX-License-Identifier: ISC
#pragma once

#include "resources/artwork/ArtworkSet.h"
#include "resources/artwork/drawing/Canvas.h"
#include "resources/artwork/drawing/Lettering.h"

#include <functional>

/// Parts that many drawings share: wells, caps, lamps, printed letters, screws.
namespace qlx::artwork {

/// A rectangle in layout pixels with rounded corners.
struct Slab {
  double left;
  double top;
  double right;
  double bottom;
  double radius = 2.0;

  PixelRect box() const;
  Mask mask(const Canvas& canvas) const;
};

Slab slab(const PixelRect& box, double radius);

/// The set of small print.
LetterStyle captionStyle(double tracking = 0.05);
LetterStyle headingStyle(double tracking = 1.0);

/// Prints a mask in one colour with the dark edge of engraving one pixel below it.
void print(Canvas& canvas, const Mask& letters, const Colour& colour, double opacity = 1.0);

/// Sinks a display well into the panel: floor colour, shadow of its upper and left edge inside,
/// a lit lip at its lower edge.
void sinkWell(Canvas& canvas, const Mask& shape, const Colour& floor);

enum class CapState { Rest, Hover, Pressed };

/// A small push cap of bakelite that fills `place`, with its mark on top (in layout pixels of the
/// canvas). Hovered caps and their marks lighten; pressed ones sink and the mark lights up.
void pushCap(Canvas& canvas, const Slab& place, CapState state, const Mask& mark);

/// A round signal lamp in a dark bezel.
void signalLamp(Canvas& canvas, Point centre, double radius, bool on, const Colour& off,
                const Colour& lit);

/// A slotted brass screw head.
void screw(Canvas& canvas, Point centre, double radius, double slotDegrees);

/// A brass plate lying on what is there: its shadow, the brushed metal, a bevel all round.
/// The shine runs from top to bottom, 0 shade to 1 full light.
void layPlate(Canvas& canvas, const Slab& place, double shineTop, double shineBottom);

/// Cuts letters into brass: dark inside, the lower edge catching the light.
void engrave(Canvas& canvas, const Mask& letters);

} // namespace qlx::artwork
