// SPDX-License-Identifier: ISC
#pragma once

#include "resources/recordings/MachineRecordings.h"

#include <string>
#include <vector>

namespace qlx::recordings {

/// One recording as it is stored: single-precision samples, lowest byte first, the guard included.
struct RecordingFile {
  std::string name;
  std::string bytes;
};

/// The six files of the machine.
std::vector<RecordingFile> recordingFiles(const MachineRecordings& machine);

} // namespace qlx::recordings
