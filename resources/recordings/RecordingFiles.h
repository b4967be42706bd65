// SPDX-License-Identifier: ISC
#pragma once

#include "resources/recordings/MachineRecordings.h"

#include <cstdint>
#include <string>
#include <vector>

namespace qlx::recordings {

/// One recording as the player gets it: samples in steps of resources::kSampleStep, the guard
/// included. Its file has this name and the form of resources/PackedRecording.h.
struct RecordingFile {
  std::string name;
  std::vector<std::int32_t> samples;
};

/// The six files of the machine.
std::vector<RecordingFile> recordingFiles(const MachineRecordings& machine);

} // namespace qlx::recordings
