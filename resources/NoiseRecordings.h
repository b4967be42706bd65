// SPDX-License-Identifier: ISC
#pragma once

#include "engine/rotor/Recordings.h"

namespace qlx::resources {

/// The motor-noise recordings inside this library: read-only, shared by every instance, valid as
/// long as the library is loaded. The first call unpacks them into 5 MB of memory; other threads
/// that call it meanwhile wait. Not for the audio thread. Throws std::bad_alloc.
engine::Recordings noiseRecordings();

} // namespace qlx::resources
