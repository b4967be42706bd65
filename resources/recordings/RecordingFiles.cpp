// SPDX-License-Identifier: ISC
#include "resources/recordings/RecordingFiles.h"

#include "engine/rotor/Recordings.h"
#include "resources/PackedRecording.h"

#include <cmath>

namespace qlx::recordings {

namespace {

RecordingFile oneShotFile(const char* name, const Signal& sound) {
  RecordingFile file{name, {}};
  for (const double x : sound)
    file.samples.push_back(static_cast<std::int32_t>(std::lround(x / resources::kSampleStep)));
  file.samples.push_back(0);
  return file;
}

RecordingFile loopFile(const char* name, const Signal& loop) {
  RecordingFile file = oneShotFile(name, loop);
  file.samples.pop_back();
  for (std::size_t i = 0; i < engine::kRecordingGuard; ++i) file.samples.push_back(file.samples[i]);
  return file;
}

} // namespace

std::vector<RecordingFile> recordingFiles(const MachineRecordings& machine) {
  return {loopFile("horn_slow_1.rice", machine.hornSlow[0]),
          loopFile("horn_slow_2.rice", machine.hornSlow[1]),
          loopFile("horn_fast.rice", machine.hornFast),
          loopFile("drum_slow.rice", machine.drumSlow),
          loopFile("drum_fast.rice", machine.drumFast),
          oneShotFile("start_stop.rice", machine.startStop)};
}

} // namespace qlx::recordings
