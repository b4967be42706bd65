// SPDX-License-Identifier: ISC
#pragma once

#include "brezan/pictures/SoundPicture.h"
#include "brezan/plugin/Automation.h"
#include "brezan/plugin/MidiFile.h"

#include <span>
#include <vector>

namespace qlx::tools {

/// What a pedal (controllers 1 and 64) and an automation file make the lever do, in the order of
/// time. It is slow at the beginning; a lever move lets the brake go, and letting the brake go
/// returns to what the lever says.
std::vector<LeverMark> leverMarks(std::span<const TimedMidi> midi,
                                  std::span<const AutomationLine> automation);

} // namespace qlx::tools
