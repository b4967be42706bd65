// SPDX-License-Identifier: ISC
#pragma once

#include "editor/CAnimKnob3.h"
#include "editor/DisplayConverters.h"
#include "gui/CRect.h"
#include "gui/controls/CParamDisplay.h"
#include "plugin/parameters/ParameterIndex.h"

#include <array>
#include <cstdint>

/// The editor's controls as tables, in the order in which they are built: later ones lie on top.
/// Rectangles are left, top, right, bottom in the window.
namespace qlx::editor {

/// Tags of controls that show no parameter.
enum EditorTag : std::int32_t {
  kHornMarkerTag = 142,
  kDrumMarkerTag = 143,
  kSustainLampTag = 144,
  kModulationLampTag = 145,
  kAboutTag = 147,
  kMidiChannelRockerTag = 148,
};

/// A text field under a knob; a second one that isn't there has no converter.
struct DisplayPlace {
  gui::CRect place;
  gui::CParamDisplayConverter converter = nullptr;
};

struct KnobPlace {
  std::int32_t tag;
  gui::CRect place;
  std::array<DisplayPlace, 2> displays;
  float defaultValue;
  float wheelStep;
  float dragFactor; ///< thousands of pixels for the whole range
  CAnimKnob3::Steps steps;
};

/// With Shift, of the wheel's step.
inline constexpr float kKnobWheelFineFactor = 0.2F;
inline constexpr int kKnobStrip = 2002;
inline constexpr int kKnobFrames = 101;

// clang-format off
inline constexpr KnobPlace kHornKnobs[] = {
    {plugin::kHSlowSpd, {20, 53, 64, 97}, {{{{16, 102, 68, 113}, formatRotorSpeed}}}, 0.1F, 0.01F, 0.4F, {}},
    {plugin::kHFastSpd, {65, 53, 109, 97}, {{{{61, 102, 113, 113}, formatRotorSpeed}}}, 0.6F, 0.01F, 0.4F, {}},
    {plugin::kHAccel, {134, 53, 178, 97}, {{{{130, 102, 182, 113}, formatRampTime}}}, 0.349485F, 0.05F, 0.25F, {}},
    {plugin::kHDecel, {179, 53, 223, 97}, {{{{175, 102, 227, 113}, formatRampTime}}}, 0.349485F, 0.05F, 0.25F, {}},
    {plugin::kHDistance, {248, 53, 292, 97}, {{{{244, 102, 296, 113}, formatDistance}}}, 0.5F, 0.05F, 0.25F, {}},
    {plugin::kHHPF, {293, 53, 337, 97}, {{{{289, 102, 341, 113}, formatHighPass}}}, 0.0F, 0.05F, 0.25F, {}},
    {plugin::kHGain, {338, 53, 382, 97}, {{{{334, 102, 386, 113}, formatLevelDb}}}, 0.5F, 0.05F, 0.25F, {}},
};

inline constexpr KnobPlace kOtherKnobs[] = {
    {plugin::kMech, {16, 202, 60, 246}, {{{{12, 251, 64, 262}, formatLevelDb}}}, 0.5F, 0.05F, 0.25F, {}},
    {plugin::kBottom, {74, 202, 118, 246}, {{{{70, 251, 122, 262}, formatEqGain}}}, 0.5F, 0.05F, 0.25F, {}},
    {plugin::kLoMid, {119, 202, 163, 246}, {{{{115, 251, 167, 262}, formatEqGain}}}, 0.5F, 0.05F, 0.25F, {}},
    {plugin::kPresence, {164, 202, 208, 246}, {{{{160, 251, 212, 262}, formatEqGain}}}, 0.5F, 0.05F, 0.25F, {}},
    {plugin::kTop, {209, 202, 253, 246}, {{{{205, 251, 257, 262}, formatEqGain}}}, 0.5F, 0.05F, 0.25F, {}},
    {plugin::kSetup, {269, 202, 313, 246}, {{{{265, 251, 317, 262}, formatMicSetup}, {{265, 262, 317, 273}, formatMicSetupDetail}}}, 0.25F, 0.1F, 0.18F, {6, 0.2F, 0.7F}},
    {plugin::kInput, {20, 303, 64, 347}, {{{{16, 352, 68, 363}, formatLevelDb}}}, 0.5F, 0.05F, 0.25F, {}},
    {plugin::kType, {65, 303, 109, 347}, {{{{61, 352, 113, 363}, formatAmpType}}}, 0.5F, 0.333334F, 0.125F, {3, 0.4F, 0.6F}},
    {plugin::kDrive, {110, 303, 154, 347}, {{{{106, 352, 158, 363}, formatDriveGain}}}, 0.5F, 0.05F, 0.25F, {}},
    {plugin::kSize, {178, 303, 222, 347}, {{{{174, 352, 226, 363}, formatRoomSize}}}, 0.5F, 0.2F, 0.25F, {5, 0.3F, 0.7F}},
    {plugin::kColor, {222, 303, 266, 347}, {{{{219, 352, 271, 363}, formatPercent}}}, 0.5F, 0.05F, 0.25F, {}},
    {plugin::kAmount, {268, 303, 312, 347}, {{{{264, 352, 316, 363}, formatLevelDb}}}, 0.5F, 0.05F, 0.25F, {}},
    {plugin::kDSlowSpd, {20, 445, 64, 489}, {{{{16, 494, 68, 505}, formatRotorSpeed}}}, 0.1F, 0.01F, 0.4F, {}},
    {plugin::kDFastSpd, {65, 445, 109, 489}, {{{{61, 494, 113, 505}, formatRotorSpeed}}}, 0.6F, 0.01F, 0.4F, {}},
    {plugin::kDAccel, {134, 445, 178, 489}, {{{{130, 494, 182, 505}, formatRampTime}}}, 0.650514F, 0.05F, 0.25F, {}},
    {plugin::kDDecel, {179, 445, 223, 489}, {{{{175, 494, 227, 505}, formatRampTime}}}, 0.650514F, 0.05F, 0.25F, {}},
    {plugin::kDDistance, {248, 445, 292, 489}, {{{{244, 494, 296, 505}, formatDistance}}}, 0.5F, 0.05F, 0.25F, {}},
    {plugin::kDLPF, {293, 445, 337, 489}, {{{{289, 494, 341, 505}, formatLowPass}}}, 1.0F, 0.05F, 0.25F, {}},
    {plugin::kDGain, {338, 445, 382, 489}, {{{{334, 494, 386, 505}, formatLevelDb}}}, 0.5F, 0.05F, 0.25F, {}},
};
// clang-format on

/// Everything but knobs.
struct ControlPlace {
  enum Kind : std::uint8_t { kOnOff, kKick, kLever, kMarker, kAbout, kRocker, kMovie };

  std::int32_t tag;
  Kind kind;
  gui::CRect place;
  int bitmap;
  int frames = 1;
  int handle = 0; ///< of a marker
};

// clang-format off
inline constexpr ControlPlace kLeverControls[] = {
    {plugin::kStop, ControlPlace::kOnOff, {359, 347, 385, 383}, 2003, 2},
    {plugin::kSpeed, ControlPlace::kKick, {330, 348, 357, 384}, 2004, 2},
    {plugin::kLever, ControlPlace::kLever, {330, 149, 385, 335}, 2005, 65},
};

inline constexpr ControlPlace kOtherControls[] = {
    {kHornMarkerTag, ControlPlace::kMarker, {91, 12, 389, 24}, 2008, 1, 2009},
    {kDrumMarkerTag, ControlPlace::kMarker, {91, 404, 389, 416}, 2013, 1, 2010},
    {kAboutTag, ControlPlace::kAbout, {12, 156, 187, 178}, 3999},
    {kMidiChannelRockerTag, ControlPlace::kRocker, {38, 536, 69, 550}, 19997, 5},
    {plugin::kMIDIchl, ControlPlace::kMovie, {6, 536, 36, 550}, 4005, 18},
    {plugin::kBypass, ControlPlace::kOnOff, {340, 536, 398, 550}, 4001, 2},
    {plugin::kCPUmode, ControlPlace::kOnOff, {195, 536, 335, 550}, 4002, 2},
    {kModulationLampTag, ControlPlace::kMovie, {129, 536, 185, 550}, 4003, 2},
    {kSustainLampTag, ControlPlace::kMovie, {68, 536, 130, 550}, 4004, 2},
};
// clang-format on

} // namespace qlx::editor
