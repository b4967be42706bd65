// SPDX-License-Identifier: ISC
#pragma once

#include "editor/DisplayConverters.h"
#include "editor/controls/CAnimKnob3.h"
#include "gui/controls/CParamDisplay.h"
#include "plugin/parameters/ParameterIndex.h"
#include "resources/images/WindowLayout.h"

#include <cstdint>

/// The editor's controls as tables, in the order in which they are built: later ones lie on top.
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

namespace layout = resources::layout;

struct KnobPlace {
  std::int32_t tag;
  const char* name;
  layout::Knob place;
  gui::CParamDisplayConverter converter; ///< of the text under the knob
  float defaultValue;
  float wheelStep;
  float dragFactor; ///< thousands of pixels for the whole range
  CAnimKnob3::Steps steps;
  gui::CParamDisplayConverter detailConverter = nullptr; ///< of the text in layout::kSetupDetail
};

/// With Shift, of the wheel's step.
inline constexpr float kKnobWheelFineFactor = 0.2F;
inline constexpr int kKnobStrip = 2002;
inline constexpr int kKnobFrames = 101;

// clang-format off
inline constexpr KnobPlace kHornKnobs[] = {
    {plugin::kHSlowSpd, "Horn slow speed", layout::kHornSlow, formatRotorSpeed, 0.1F, 0.01F, 0.4F, {}},
    {plugin::kHFastSpd, "Horn fast speed", layout::kHornFast, formatRotorSpeed, 0.6F, 0.01F, 0.4F, {}},
    {plugin::kHAccel, "Horn acceleration time", layout::kHornAccel, formatRampTime, 0.349485F, 0.05F, 0.25F, {}},
    {plugin::kHDecel, "Horn deceleration time", layout::kHornDecel, formatRampTime, 0.349485F, 0.05F, 0.25F, {}},
    {plugin::kHDistance, "Horn microphone distance", layout::kHornDistance, formatDistance, 0.5F, 0.05F, 0.25F, {}},
    {plugin::kHHPF, "Horn high-pass frequency", layout::kHornHighPass, formatHighPass, 0.0F, 0.05F, 0.25F, {}},
    {plugin::kHGain, "Horn level", layout::kHornGain, formatLevelDb, 0.5F, 0.05F, 0.25F, {}},
};

inline constexpr KnobPlace kOtherKnobs[] = {
    {plugin::kMech, "Motor noise", layout::kMech, formatLevelDb, 0.5F, 0.05F, 0.25F, {}},
    {plugin::kBottom, "Bottom", layout::kBottom, formatEqGain, 0.5F, 0.05F, 0.25F, {}},
    {plugin::kLoMid, "Low middle", layout::kLoMid, formatEqGain, 0.5F, 0.05F, 0.25F, {}},
    {plugin::kPresence, "Presence", layout::kPresence, formatEqGain, 0.5F, 0.05F, 0.25F, {}},
    {plugin::kTop, "Top", layout::kTop, formatEqGain, 0.5F, 0.05F, 0.25F, {}},
    {plugin::kSetup, "Microphone setup", layout::kSetup, formatMicSetup, 0.25F, 0.1F, 0.18F, {6, 0.2F, 0.7F}, formatMicSetupDetail},
    {plugin::kInput, "Input level", layout::kInput, formatLevelDb, 0.5F, 0.05F, 0.25F, {}},
    {plugin::kType, "Amplifier type", layout::kType, formatAmpType, 0.5F, 0.333334F, 0.125F, {3, 0.4F, 0.6F}},
    {plugin::kDrive, "Drive", layout::kDrive, formatDriveGain, 0.5F, 0.05F, 0.25F, {}},
    {plugin::kSize, "Room size", layout::kSize, formatRoomSize, 0.5F, 0.2F, 0.25F, {5, 0.3F, 0.7F}},
    {plugin::kColor, "Room color", layout::kColor, formatPercent, 0.5F, 0.05F, 0.25F, {}},
    {plugin::kAmount, "Room amount", layout::kAmount, formatLevelDb, 0.5F, 0.05F, 0.25F, {}},
    {plugin::kDSlowSpd, "Drum slow speed", layout::kDrumSlow, formatRotorSpeed, 0.1F, 0.01F, 0.4F, {}},
    {plugin::kDFastSpd, "Drum fast speed", layout::kDrumFast, formatRotorSpeed, 0.6F, 0.01F, 0.4F, {}},
    {plugin::kDAccel, "Drum acceleration time", layout::kDrumAccel, formatRampTime, 0.650514F, 0.05F, 0.25F, {}},
    {plugin::kDDecel, "Drum deceleration time", layout::kDrumDecel, formatRampTime, 0.650514F, 0.05F, 0.25F, {}},
    {plugin::kDDistance, "Drum microphone distance", layout::kDrumDistance, formatDistance, 0.5F, 0.05F, 0.25F, {}},
    {plugin::kDLPF, "Drum low-pass frequency", layout::kDrumLowPass, formatLowPass, 1.0F, 0.05F, 0.25F, {}},
    {plugin::kDGain, "Drum level", layout::kDrumGain, formatLevelDb, 0.5F, 0.05F, 0.25F, {}},
};
// clang-format on

/// Everything but knobs.
struct ControlPlace {
  enum Kind : std::uint8_t { kOnOff, kKick, kLever, kMarker, kAbout, kRocker, kMovie };

  std::int32_t tag;
  const char* name; ///< empty where another control says the same
  Kind kind;
  layout::PixelRect place;
  int bitmap;
  int frames = 1;
  int handle = 0; ///< of a marker
};

// clang-format off
inline constexpr ControlPlace kLeverControls[] = {
    {plugin::kStop, "Stop", ControlPlace::kOnOff, layout::kStop, 2003, 2},
    {plugin::kSpeed, "Speed", ControlPlace::kKick, layout::kSpeed, 2004, 2},
    {plugin::kLever, "Lever", ControlPlace::kLever, layout::kLever, 2005, 65},
};

inline constexpr ControlPlace kOtherControls[] = {
    {kHornMarkerTag, "Horn position", ControlPlace::kMarker, layout::kHornSlot, 2008, 1, 2009},
    {kDrumMarkerTag, "Drum position", ControlPlace::kMarker, layout::kDrumSlot, 2013, 1, 2010},
    {kAboutTag, "About", ControlPlace::kAbout, layout::kNamePlate, 3999},
    {kMidiChannelRockerTag, "MIDI channel", ControlPlace::kRocker, layout::kMidiRocker, 19997, 5},
    {plugin::kMIDIchl, "", ControlPlace::kMovie, layout::kMidiChannel, 4005, 18},
    {plugin::kBypass, "Bypass", ControlPlace::kOnOff, layout::kBypass, 4001, 2},
    {plugin::kCPUmode, "CPU mode", ControlPlace::kOnOff, layout::kMode, 4002, 2},
    {kModulationLampTag, "Modulation wheel", ControlPlace::kMovie, layout::kModulationLamp, 4003, 2},
    {kSustainLampTag, "Sustain pedal", ControlPlace::kMovie, layout::kSustainLamp, 4004, 2},
};
// clang-format on

/// The parts of the window in reading order. A control belongs to the one that its middle lies in.
struct Panel {
  const char* name;
  layout::PixelRect place;
};

inline constexpr Panel kPanels[] = {
    {"Horn", layout::kHornPanel},          {"Cabinet", layout::kCabinetPanel},
    {"Lever", layout::kLeverPanel},        {"Drum", layout::kDrumPanel},
    {"MIDI and mode", layout::kBottomBar}, {"Presets", layout::kPresetStrip},
};

} // namespace qlx::editor
