// SPDX-License-Identifier: ISC
#pragma once

#include "brezan/plugin/PluginHost.h"

#include <cstdint>
#include <filesystem>
#include <ostream>
#include <span>
#include <vector>

namespace qlx::tools {

/// A channel message and its time from the file's start.
struct TimedMidi {
  double seconds;
  MidiBytes bytes;
};

/// Channel messages of all tracks of a standard MIDI file in the order of time, tempo changes
/// followed. Formats 0 and 1, ticks per quarter note or per frame. Throws std::runtime_error when
/// the bytes are not such a file or end too early.
std::vector<TimedMidi> parseMidi(std::span<const std::uint8_t> bytes);
std::vector<TimedMidi> readMidiFile(const std::filesystem::path& path);

/// Writes a format 0 file in ticks of a millisecond. Messages are in the order of time.
void writeMidi(std::ostream& out, std::span<const TimedMidi> messages);

/// Plays messages to a host, whose audio runs at `rate`.
class MidiPlayer {
 public:
  MidiPlayer(std::vector<TimedMidi> messages, double rate);

  /// Sends what is due at frame `now`, and answers how many frames may be processed until the
  /// next call: at least 1, at most `most`. Effects may ignore a message's place in its block, so
  /// blocks are cut there.
  int advance(PluginHost& host, long long now, int most);

 private:
  long long frame(std::size_t i) const;

  std::vector<TimedMidi> m_messages;
  double m_rate;
  std::size_t m_next = 0;
};

} // namespace qlx::tools
