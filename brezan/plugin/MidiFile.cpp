// SPDX-License-Identifier: ISC
#include "brezan/plugin/MidiFile.h"

#include <algorithm>
#include <cmath>
#include <fstream>
#include <iterator>
#include <stdexcept>
#include <string>

namespace qlx::tools {

namespace {

[[noreturn]] void refuse(const std::string& why) { throw std::runtime_error("MIDI file: " + why); }

// Reads big-endian numbers and never past the end.
class Bytes {
 public:
  explicit Bytes(std::span<const std::uint8_t> bytes) : m_bytes(bytes) {}
  bool empty() const { return m_bytes.empty(); }
  std::span<const std::uint8_t> take(std::size_t count) {
    if (count > m_bytes.size()) refuse("it ends too early");
    const auto result = m_bytes.first(count);
    m_bytes = m_bytes.subspan(count);
    return result;
  }
  std::uint8_t byte() { return take(1)[0]; }
  std::uint8_t peek() const { return m_bytes.empty() ? std::uint8_t{0} : m_bytes[0]; }
  std::uint32_t number(int size) {
    std::uint32_t value = 0;
    for (const std::uint8_t part : take(static_cast<std::size_t>(size))) value = value << 8 | part;
    return value;
  }
  // Seven bits a byte, the last byte below 128, at most four bytes.
  std::uint32_t variable() {
    std::uint32_t value = 0;
    for (int i = 0; i < 4; ++i) {
      const std::uint8_t part = byte();
      value = value << 7 | (part & 0x7FU);
      if (part < 0x80) return value;
    }
    refuse("a length has more than four bytes");
  }
  std::string tag() {
    const auto letters = take(4);
    return {letters.begin(), letters.end()};
  }

 private:
  std::span<const std::uint8_t> m_bytes;
};

struct TickedMidi {
  std::uint64_t tick;
  std::uint32_t microsecondsPerQuarter; ///< not 0 in a tempo change
  MidiBytes bytes;
};

void readTrack(Bytes track, std::vector<TickedMidi>& events) {
  std::uint64_t tick = 0;
  std::uint8_t running = 0;
  while (!track.empty()) {
    tick += track.variable();
    const std::uint8_t status = track.peek() >= 0x80 ? track.byte() : running;
    if (status == 0xFF) {
      const std::uint8_t kind = track.byte();
      Bytes body(track.take(track.variable()));
      if (kind == 0x51) events.push_back({tick, std::max(body.number(3), 1U), {}});
      if (kind == 0x2F) return;
    } else if (status == 0xF0 || status == 0xF7) {
      track.take(track.variable());
      running = 0;
    } else if (status >= 0x80 && status < 0xF0) {
      running = status;
      const bool hasSecond = (status & 0xE0) != 0xC0; // not program change or channel pressure
      const std::uint8_t first = track.byte();
      const std::uint8_t second = hasSecond ? track.byte() : std::uint8_t{0};
      if (((first | second) & 0x80) != 0) refuse("a message is cut off by another");
      events.push_back({tick, 0, {status, first, second}});
    } else {
      refuse("data without a message");
    }
  }
}

// Seconds of one tick where the division counts parts of a film frame.
double frameTick(std::uint16_t division) {
  const int framesPerSecond = -static_cast<std::int8_t>(division >> 8);
  const int ticksPerFrame = division & 0xFF;
  if (framesPerSecond <= 0 || ticksPerFrame == 0) refuse("its time division is 0");
  const double rate = framesPerSecond == 29 ? 30000.0 / 1001.0 : framesPerSecond;
  return 1.0 / (rate * ticksPerFrame);
}

std::vector<TimedMidi> timed(const std::vector<TickedMidi>& events, std::uint16_t division) {
  const bool musical = (division & 0x8000) == 0;
  if (musical && division == 0) refuse("its time division is 0");
  double secondsPerTick = musical ? 0.5 / division : frameTick(division);
  std::vector<TimedMidi> result;
  double seconds = 0.0;
  std::uint64_t tick = 0;
  for (const TickedMidi& event : events) {
    seconds += static_cast<double>(event.tick - tick) * secondsPerTick;
    tick = event.tick;
    if (event.microsecondsPerQuarter == 0)
      result.push_back({seconds, event.bytes});
    else if (musical)
      secondsPerTick = event.microsecondsPerQuarter * 1e-6 / division;
  }
  return result;
}

} // namespace

std::vector<TimedMidi> parseMidi(std::span<const std::uint8_t> data) {
  Bytes bytes(data);
  if (data.size() < 14 || bytes.tag() != "MThd") refuse("this is none");
  Bytes head(bytes.take(bytes.number(4)));
  const std::uint32_t format = head.number(2);
  const std::uint32_t tracks = head.number(2);
  const auto division = static_cast<std::uint16_t>(head.number(2));
  if (format > 1) refuse("only formats 0 and 1 are read, this is format " + std::to_string(format));
  std::vector<TickedMidi> events;
  for (std::uint32_t read = 0; read < tracks && !bytes.empty();) {
    const std::string tag = bytes.tag();
    Bytes chunk(bytes.take(bytes.number(4)));
    if (tag != "MTrk") continue;
    readTrack(chunk, events);
    ++read;
  }
  // Stable: a tempo change in an earlier track comes before the notes of the same moment.
  std::stable_sort(events.begin(), events.end(),
                   [](const auto& a, const auto& b) { return a.tick < b.tick; });
  return timed(events, division);
}

std::vector<TimedMidi> readMidiFile(const std::filesystem::path& path) {
  std::ifstream in(path, std::ios::binary);
  if (!in) throw std::runtime_error("cannot read '" + path.string() + "'");
  const std::vector<char> bytes{std::istreambuf_iterator<char>(in), {}};
  try {
    return parseMidi({reinterpret_cast<const std::uint8_t*>(bytes.data()), bytes.size()});
  } catch (const std::runtime_error& error) {
    throw std::runtime_error("'" + path.string() + "': " + error.what());
  }
}

namespace {

void append(std::string& to, std::uint32_t value, int size) {
  for (int shift = 8 * (size - 1); shift >= 0; shift -= 8)
    to += static_cast<char>(value >> shift & 0xFFU);
}

void appendVariable(std::string& to, std::uint32_t value) {
  for (int shift = 21; shift > 0; shift -= 7)
    if (value >> shift != 0) to += static_cast<char>((value >> shift & 0x7FU) | 0x80U);
  to += static_cast<char>(value & 0x7FU);
}

} // namespace

void writeMidi(std::ostream& out, std::span<const TimedMidi> messages) {
  // 500 ticks in a quarter of half a second, the tempo where a file names none.
  constexpr std::uint32_t kTicksPerQuarter = 500;
  std::string track;
  long long tick = 0;
  for (const TimedMidi& message : messages) {
    const long long at = std::llround(message.seconds * 1000.0);
    appendVariable(track, static_cast<std::uint32_t>(at - tick));
    tick = at;
    const bool hasSecond = (message.bytes[0] & 0xE0) != 0xC0;
    for (std::size_t i = 0; i < (hasSecond ? 3U : 2U); ++i)
      track += static_cast<char>(message.bytes[i]);
  }
  track += std::string("\0\xFF\x2F\0", 4);
  std::string file = "MThd";
  append(file, 6, 4);
  append(file, 0, 2);
  append(file, 1, 2);
  append(file, kTicksPerQuarter, 2);
  file += "MTrk";
  append(file, static_cast<std::uint32_t>(track.size()), 4);
  out << file << track;
}

MidiPlayer::MidiPlayer(std::vector<TimedMidi> messages, double rate)
    : m_messages(std::move(messages)), m_rate(rate) {}

long long MidiPlayer::frame(std::size_t i) const {
  return std::llround(m_messages[i].seconds * m_rate);
}

int MidiPlayer::advance(PluginHost& host, long long now, int most) {
  std::vector<MidiBytes> due;
  for (; m_next < m_messages.size() && frame(m_next) <= now; ++m_next)
    due.push_back(m_messages[m_next].bytes);
  host.sendMidi(due);
  if (m_next == m_messages.size()) return most;
  return static_cast<int>(std::min<long long>(most, frame(m_next) - now));
}

} // namespace qlx::tools
