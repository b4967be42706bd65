// SPDX-License-Identifier: ISC
#pragma once

namespace qlx::tools {

/// Keeps all memory that this process has now in main memory, so that the audio thread never waits
/// for a disk. False when the user may not.
bool lockMemory();

} // namespace qlx::tools
