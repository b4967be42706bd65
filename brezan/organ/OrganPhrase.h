// SPDX-License-Identifier: ISC
#pragma once

#include "brezan/organ/DrawbarOrgan.h"
#include "brezan/plugin/MidiFile.h"

#include <string>
#include <vector>

namespace qlx::tools {

/// Half a minute of slow gospel in F that shows what a rotary speaker does: pad and percussion at
/// slow speed, a glissando into a held chord while the rotors speed up, stabs at fast speed,
/// silence, slow again, a held chord into the brake, and the restart under the last cadence.
OrganScore organPhrase();

/// The player's foot on the sustain pedal during the phrase: down for fast, up for slow.
std::vector<TimedMidi> phrasePedal();

/// The brake during the phrase, as lines of an automation file.
std::string phraseBrake();

} // namespace qlx::tools
