// SPDX-License-Identifier: ISC
#pragma once

#include "engine/rotor/Recordings.h"

namespace qlx::resources {

/// The motor-noise recordings inside this library: shared by every instance, valid as long as the
/// library is loaded, not filled before unpackNoiseRecordings. Not for the audio thread. Throws
/// std::bad_alloc.
engine::Recordings noiseRecordings();

/// Fills them: the first call unpacks 5 MB, which takes some 15 ms, and other threads that call it
/// meanwhile wait; any further call does nothing. Apart from the above, so that who only asks a
/// plug-in for its name does not pay. Not for the audio thread. Throws std::bad_alloc, and
/// std::logic_error where the library's bytes are damaged.
void unpackNoiseRecordings();

} // namespace qlx::resources
