// SPDX-License-Identifier: ISC
#pragma once

#include "resources/artwork/drawing/Geometry.h"
#include "resources/images/WindowLayout.h"

#include <array>

/// What the drawings add to the rectangles of the window.
namespace qlx::artwork::layout {

using namespace resources::layout;

inline constexpr std::array<PixelRect, 6> kPanels{kHornPanel, kCabinetPanel, kLeverPanel,
                                                  kDrumPanel, kBottomBar,    kPresetStrip};

/// A knob, the text under it, and the stops that its ring marks: `marks` ticks spread over
/// low..high of the travel from -135 to +135 degrees.
struct KnobPlace {
  int tag;
  const char* caption;
  PixelRect knob;
  PixelRect display; ///< all lines of it
  int marks;
  double low;
  double high;
};

/// Ticks of a knob without steps.
inline constexpr int kPlainMarks = 11;

constexpr KnobPlace knobPlace(int tag, const char* caption, const Knob& place,
                              int marks = kPlainMarks, double low = 0.0, double high = 1.0) {
  return {tag, caption, place.knob, place.display, marks, low, high};
}

/// A knob whose text has a second line.
constexpr Knob withSecondLine(const Knob& place, const PixelRect& line) {
  return {place.knob, {place.display.left, place.display.top, line.right, line.bottom}};
}

inline constexpr std::array<KnobPlace, 26> kKnobs{{
    knobPlace(17, "SLOW", kHornSlow),
    knobPlace(18, "FAST", kHornFast),
    knobPlace(19, "ACCEL", kHornAccel),
    knobPlace(20, "DECEL", kHornDecel),
    knobPlace(21, "DISTANCE", kHornDistance),
    knobPlace(22, "HI-PASS", kHornHighPass),
    knobPlace(23, "GAIN", kHornGain),
    knobPlace(5, "MECH", kMech),
    knobPlace(6, "BOTTOM", kBottom),
    knobPlace(7, "LO-MID", kLoMid),
    knobPlace(8, "PRESENCE", kPresence),
    knobPlace(9, "TOP", kTop),
    knobPlace(10, "SETUP", withSecondLine(kSetup, kSetupDetail), 6, 0.2, 0.7),
    knobPlace(11, "INPUT", kInput),
    knobPlace(12, "TYPE", kType, 3, 0.4, 0.6),
    knobPlace(13, "DRIVE", kDrive),
    knobPlace(14, "SIZE", kSize, 5, 0.3, 0.7),
    knobPlace(15, "COLOR", kColor),
    knobPlace(16, "AMOUNT", kAmount),
    knobPlace(24, "SLOW", kDrumSlow),
    knobPlace(25, "FAST", kDrumFast),
    knobPlace(26, "ACCEL", kDrumAccel),
    knobPlace(27, "DECEL", kDrumDecel),
    knobPlace(28, "DISTANCE", kDrumDistance),
    knobPlace(29, "LO-PASS", kDrumLowPass),
    knobPlace(30, "GAIN", kDrumGain),
}};

} // namespace qlx::artwork::layout
