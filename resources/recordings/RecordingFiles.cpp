// SPDX-License-Identifier: ISC
#include "resources/recordings/RecordingFiles.h"

#include "engine/rotor/Recordings.h"

#include <bit>
#include <cstdint>

namespace qlx::recordings {

namespace {

void append(std::string& bytes, double sample) {
  const auto pattern = std::bit_cast<std::uint32_t>(static_cast<float>(sample));
  for (unsigned shift = 0; shift < 32; shift += 8) {
    bytes.push_back(static_cast<char>((pattern >> shift) & 0xffU));
  }
}

RecordingFile loopFile(const char* name, const Signal& loop) {
  RecordingFile file{name, {}};
  for (const double x : loop) append(file.bytes, x);
  for (std::size_t i = 0; i < engine::kRecordingGuard; ++i) append(file.bytes, loop[i]);
  return file;
}

RecordingFile oneShotFile(const char* name, const Signal& sound) {
  RecordingFile file{name, {}};
  for (const double x : sound) append(file.bytes, x);
  append(file.bytes, 0.0);
  return file;
}

} // namespace

std::vector<RecordingFile> recordingFiles(const MachineRecordings& machine) {
  return {loopFile("horn_slow_1.f32", machine.hornSlow[0]),
          loopFile("horn_slow_2.f32", machine.hornSlow[1]),
          loopFile("horn_fast.f32", machine.hornFast),
          loopFile("drum_slow.f32", machine.drumSlow),
          loopFile("drum_fast.f32", machine.drumFast),
          oneShotFile("start_stop.f32", machine.startStop)};
}

} // namespace qlx::recordings
