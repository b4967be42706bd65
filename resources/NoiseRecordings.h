// SPDX-License-Identifier: ISC
#pragma once

#include "engine/rotor/Recordings.h"

namespace qlx::resources {

/// The motor-noise recordings inside this library: read-only, shared by every instance, valid as
/// long as the library is loaded. Reads one sample of every memory page, so that the audio thread
/// does not have to wait for the disk when a recording sounds for the first time; call it while
/// setting up.
engine::Recordings noiseRecordings();

} // namespace qlx::resources
