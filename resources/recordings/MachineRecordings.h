// SPDX-License-Identifier: ISC
#pragma once

#include "resources/recordings/Signal.h"

#include <array>

namespace qlx::recordings {

/// The machine with no music playing, as the microphones hear it: five loops and the sound of the
/// switch, of the lengths that engine/rotor/Recordings.h asks for, without guard samples.
struct MachineRecordings {
  std::array<Signal, 2> hornSlow; ///< one per horn microphone, one swell in the loop
  Signal hornFast;
  Signal drumSlow;
  Signal drumFast;
  Signal startStop; ///< begins and ends at zero
};

MachineRecordings recordMachine();

// The parts of recordMachine.
std::array<Signal, 2> recordHornSlow();
Signal recordHornFast();
Signal recordDrumSlow();
Signal recordDrumFast();
Signal recordStartStop();

} // namespace qlx::recordings
