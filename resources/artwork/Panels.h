// SPDX-License-Identifier: ISC
#pragma once

#include "resources/artwork/Fittings.h"
#include "resources/artwork/Layout.h"

/// The pieces of the window's background, laid on top of each other by drawWindow.
namespace qlx::artwork {

/// Walnut bars round and between the steel panels, and the panels let into them.
void drawCarcass(Canvas& canvas);

/// For each knob: the seat, the ticks of its stops, the caption above, the well below.
void drawKnobPlaces(Frame& frame);

/// Brass rules over the knobs that belong together, with the sections' names.
void drawGroups(Frame& frame);

/// The slots of the two rotor windows with name and emblem to their left.
void drawRotorWindows(Frame& frame);

/// The engraved plate over the about area, and the vents beside it.
void drawNamePlate(Frame& frame);
void drawVents(Frame& frame);

/// What surrounds the lever and its two keys.
void drawLeverField(Frame& frame);

/// The seats of the bottom bar's controls.
void drawBottomBar(Frame& frame);

/// The preset strip: troughs of the buttons, the paper of the name field, the menu's cap.
void drawPresetStrip(Frame& frame);

/// A brass rule from x to x at row y, its ends turned down, broken by a name in the middle when
/// there is one. `tracking` is the space between its letters.
void drawRule(Frame& frame, int left, int right, int y, const char* name, double tracking);

} // namespace qlx::artwork
