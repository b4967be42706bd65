// SPDX-License-Identifier: ISC
#pragma once

#include "plugin/parameters/ShortText.h"

namespace qlx::plugin {

/// How a parameter is shown: its unit and its text, both from the normalised value.
struct Display {
  const char* (*unit)(float v) noexcept;
  ShortText (*text)(float v) noexcept;
};

/// The display counts the Input control from the amplifier's nominal level and Amount from the
/// room's: linear gains.
inline constexpr double kInputDisplayGain = 1.4142;
inline constexpr double kRoomDisplayGain = 31.62277660168379;

// Switches and words
extern const Display kSilent;
extern const Display kOnOff;
extern const Display kFlip;
extern const Display kCpuModeWord;
extern const Display kLeverPosition;
extern const Display kStopWord;
extern const Display kMicSetup;
extern const Display kAmpType;
extern const Display kMidiChannel;
extern const Display kNotImplemented;

// Levels
extern const Display kGain;
extern const Display kCoefficient;
extern const Display kTone;
extern const Display kInputGain;
extern const Display kDriveGain;
extern const Display kRoomAmount;

// Times, speeds, frequencies
extern const Display kRotorSpeed;
extern const Display kRampTime;
extern const Display kFrequency;
extern const Display kHighPass;
extern const Display kLowPass;
extern const Display kSplitter;
extern const Display kOctaves;

// Places and sizes
extern const Display kDistance;
extern const Display kMic2Offset;
extern const Display kAngle;
extern const Display kPanorama;
extern const Display kRadius;
extern const Display kHornReach;
extern const Display kDrumReach;
extern const Display kRoomNumber;
extern const Display kRoomSize;
extern const Display kVirtualRoomSize;
extern const Display kLeftRightDelay;

// Plain numbers
extern const Display kPercent;
extern const Display kPlain;
extern const Display kTwice;
extern const Display kDecayExponent;

} // namespace qlx::plugin
