// SPDX-License-Identifier: ISC
#pragma once

#include "resources/artwork/Geometry.h"

#include <array>

/// Where the window's parts stand, in pixels of the 401 x 570 window.
namespace qlx::artwork::layout {

inline constexpr Box kWindow{0, 0, 401, 570};

inline constexpr Box kHornPanel{5, 5, 396, 126};
inline constexpr Box kCabinetPanel{5, 130, 322, 392};
inline constexpr Box kLeverPanel{326, 130, 396, 392};
inline constexpr Box kDrumPanel{5, 396, 396, 518};
inline constexpr Box kBottomBar{5, 522, 396, 552};
inline constexpr Box kPresetStrip{3, 553, 398, 569};
inline constexpr std::array<Box, 6> kPanels{kHornPanel, kCabinetPanel, kLeverPanel,
                                            kDrumPanel, kBottomBar,    kPresetStrip};

/// A knob, the text under it, and the stops that its ring marks: `marks` ticks spread over
/// low..high of the travel from -135 to +135 degrees.
struct KnobPlace {
  int tag;
  const char* caption;
  Box knob;
  Box display;
  int marks;
  double low;
  double high;
};

inline constexpr std::array<KnobPlace, 26> kKnobs{{
    {17, "SLOW", {20, 53, 64, 97}, {16, 102, 68, 113}, 11, 0.0, 1.0},
    {18, "FAST", {65, 53, 109, 97}, {61, 102, 113, 113}, 11, 0.0, 1.0},
    {19, "ACCEL", {134, 53, 178, 97}, {130, 102, 182, 113}, 11, 0.0, 1.0},
    {20, "DECEL", {179, 53, 223, 97}, {175, 102, 227, 113}, 11, 0.0, 1.0},
    {21, "DISTANCE", {248, 53, 292, 97}, {244, 102, 296, 113}, 11, 0.0, 1.0},
    {22, "HI-PASS", {293, 53, 337, 97}, {289, 102, 341, 113}, 11, 0.0, 1.0},
    {23, "GAIN", {338, 53, 382, 97}, {334, 102, 386, 113}, 11, 0.0, 1.0},
    {5, "MECH", {16, 202, 60, 246}, {12, 251, 64, 262}, 11, 0.0, 1.0},
    {6, "BOTTOM", {74, 202, 118, 246}, {70, 251, 122, 262}, 11, 0.0, 1.0},
    {7, "LO-MID", {119, 202, 163, 246}, {115, 251, 167, 262}, 11, 0.0, 1.0},
    {8, "PRESENCE", {164, 202, 208, 246}, {160, 251, 212, 262}, 11, 0.0, 1.0},
    {9, "TOP", {209, 202, 253, 246}, {205, 251, 257, 262}, 11, 0.0, 1.0},
    {10, "SETUP", {269, 202, 313, 246}, {265, 251, 317, 273}, 6, 0.2, 0.7},
    {11, "INPUT", {20, 303, 64, 347}, {16, 352, 68, 363}, 11, 0.0, 1.0},
    {12, "TYPE", {65, 303, 109, 347}, {61, 352, 113, 363}, 3, 0.4, 0.6},
    {13, "DRIVE", {110, 303, 154, 347}, {106, 352, 158, 363}, 11, 0.0, 1.0},
    {14, "SIZE", {178, 303, 222, 347}, {174, 352, 226, 363}, 5, 0.3, 0.7},
    {15, "COLOR", {222, 303, 266, 347}, {219, 352, 271, 363}, 11, 0.0, 1.0},
    {16, "AMOUNT", {268, 303, 312, 347}, {264, 352, 316, 363}, 11, 0.0, 1.0},
    {24, "SLOW", {20, 445, 64, 489}, {16, 494, 68, 505}, 11, 0.0, 1.0},
    {25, "FAST", {65, 445, 109, 489}, {61, 494, 113, 505}, 11, 0.0, 1.0},
    {26, "ACCEL", {134, 445, 178, 489}, {130, 494, 182, 505}, 11, 0.0, 1.0},
    {27, "DECEL", {179, 445, 223, 489}, {175, 494, 227, 505}, 11, 0.0, 1.0},
    {28, "DISTANCE", {248, 445, 292, 489}, {244, 494, 296, 505}, 11, 0.0, 1.0},
    {29, "LO-PASS", {293, 445, 337, 489}, {289, 494, 341, 505}, 11, 0.0, 1.0},
    {30, "GAIN", {338, 445, 382, 489}, {334, 494, 386, 505}, 11, 0.0, 1.0},
}};

inline constexpr Box kHornSlot{91, 12, 389, 24};
inline constexpr Box kDrumSlot{91, 404, 389, 416};
inline constexpr Box kNamePlate{12, 156, 187, 178};

inline constexpr Box kLever{330, 149, 385, 335};
inline constexpr Box kSpeed{330, 348, 357, 384};
inline constexpr Box kStop{359, 347, 385, 383};

inline constexpr Box kMidiChannel{6, 536, 36, 550};
inline constexpr Box kMidiRocker{38, 536, 69, 550};
inline constexpr Box kSustainLamp{68, 536, 130, 550};
inline constexpr Box kModulationLamp{129, 536, 185, 550};
inline constexpr Box kMode{195, 536, 335, 550};
inline constexpr Box kBypass{340, 536, 398, 550};

inline constexpr Box kSaveBank{4, 554, 16, 568};
inline constexpr Box kBankDefault{16, 556, 53, 566};
inline constexpr Box kLoadBank{54, 554, 66, 568};
inline constexpr Box kSavePreset{69, 554, 81, 568};
inline constexpr Box kPresetDefault{81, 556, 128, 566};
inline constexpr Box kLoadPreset{128, 554, 140, 568};
inline constexpr Box kName{146, 554, 262, 568};
inline constexpr Box kPresetMenu{263, 554, 275, 568};
inline constexpr Box kPresetRocker{278, 554, 309, 568};
inline constexpr Box kStoreA{311, 554, 323, 568};
inline constexpr Box kRecallA{333, 554, 345, 568};
inline constexpr Box kStoreB{349, 554, 361, 568};
inline constexpr Box kRecallB{371, 554, 383, 568};
inline constexpr Box kManual{384, 554, 400, 568};

} // namespace qlx::artwork::layout
