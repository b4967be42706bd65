// SPDX-License-Identifier: ISC
#include "brezan/plugin/Automation.h"
#include "brezan/plugin/MidiFile.h"
#include "plugin/RotaryEffect.h"
#include "tests/fuzz/FuzzTargets.h"
#include "tests/support/TemporaryFolder.h"
#include "tests/support/ThisSystem.h"

#include <algorithm>
#include <array>
#include <bit>
#include <cmath>
#include <cstring>
#include <memory>
#include <sstream>
#include <stdexcept>

namespace qlx::test {
namespace {

using Input = std::span<const std::uint8_t>;
using Seeds = std::vector<std::vector<std::uint8_t>>;
using sdk::EffectOpcode;

/// Takes numbers from the input; zeros when it is used up.
class Reader {
 public:
  explicit Reader(Input bytes) : m_bytes(bytes) {}
  bool empty() const { return m_bytes.empty(); }
  template <class T>
  T take() {
    std::array<std::uint8_t, sizeof(T)> raw{};
    const std::size_t n = std::min(raw.size(), m_bytes.size());
    std::copy_n(m_bytes.begin(), n, raw.begin());
    m_bytes = m_bytes.subspan(n);
    return std::bit_cast<T>(raw);
  }
  std::vector<std::uint8_t> bytes(std::size_t count) {
    const auto part = m_bytes.first(std::min(count, m_bytes.size()));
    m_bytes = m_bytes.subspan(part.size());
    return {part.begin(), part.end()};
  }

 private:
  Input m_bytes;
};

/// One instance for all inputs, in a home of its own, under a host that answers 0 to everything.
class Played {
 public:
  Played() {
    keepSettingsIn(m_home.path());
    forgetDisplay();
    m_effect = (new plugin::RotaryEffect(&host))->getRecord(); // until Close
  }
  ~Played() { call(EffectOpcode::Close); }
  Played(const Played&) = delete;
  Played& operator=(const Played&) = delete;

  std::intptr_t call(EffectOpcode opcode, std::int32_t index = 0, std::intptr_t value = 0,
                     void* ptr = nullptr, float opt = 0.0F) {
    return m_effect->dispatcher(m_effect, static_cast<std::int32_t>(opcode), index, value, ptr,
                                opt);
  }
  sdk::EffectRecord& record() { return *m_effect; }

  /// What the effect was last told to play into; with one output the second is not its own.
  void setOutputs(std::int32_t count) { m_outputs = static_cast<std::size_t>(count); }

  /// A block of what the input says; its result is finite, and an output that is not the effect's
  /// is not written to.
  void process(Reader& in, std::size_t frames) {
    for (auto& channel : m_in)
      for (std::size_t i = 0; i < frames; ++i) channel[i] = i % 16 == 0 ? in.take<float>() : 0.1F;
    for (auto& channel : m_out) channel.fill(NAN);
    float* inputs[]{m_in[0].data(), m_in[1].data()};
    float* outputs[]{m_out[0].data(), m_out[1].data()};
    m_effect->processReplacing(m_effect, inputs, outputs, static_cast<std::int32_t>(frames));
    for (std::size_t c = 0; c < m_out.size(); ++c)
      for (std::size_t i = 0; i < frames; ++i)
        require(c < m_outputs ? std::isfinite(m_out[c][i]) : std::isnan(m_out[c][i]));
  }

  void checkValues() {
    for (int p = 0; p < 36; ++p)
      require(presets::isNormalised(m_effect->getParameter(m_effect, p)));
  }

 private:
  static std::intptr_t host(sdk::EffectRecord* /*effect*/, std::int32_t /*opcode*/,
                            std::int32_t /*index*/, std::intptr_t /*value*/, void* /*ptr*/,
                            float /*opt*/) {
    return 0;
  }

  TemporaryFolder m_home;
  sdk::EffectRecord* m_effect;
  std::size_t m_outputs = 2;
  std::array<std::array<float, 64>, 2> m_in{}, m_out{};
};

Played& played() {
  static Played instance;
  return instance;
}

/// Events of all kinds and lengths, also none where the list promises one.
void sendEvents(Played& to, Reader& in) {
  constexpr std::size_t kMost = 8;
  std::array<sdk::Event, kMost> events{};
  // The list as hosts lay it out: pointers behind the head.
  struct {
    std::int32_t count;
    std::intptr_t reserved;
    sdk::Event* events[kMost];
  } list{static_cast<std::int32_t>(in.take<std::uint8_t>() % (kMost + 1)), 0, {}};
  for (std::size_t i = 0; i < kMost; ++i) {
    const auto kind = in.take<std::uint8_t>();
    events[i].type = kind & 7;
    events[i].byteSize = sizeof(sdk::Event);
    events[i].deltaFrames = in.take<std::int16_t>();
    const auto message = in.bytes(3);
    std::copy(message.begin(), message.end(), events[i].data + 8); // behind note length and offset
    list.events[i] = (kind & 0x80) != 0 ? nullptr : &events[i];
  }
  to.call(EffectOpcode::ProcessEvents, 0, 0, &list);
}

void dispatchOne(Reader& in) {
  constexpr std::uint8_t kOpcodes = 84;
  constexpr std::size_t kText = 256, kCanary = 64;
  const auto opcode = static_cast<EffectOpcode>(in.take<std::uint8_t>() % kOpcodes);
  const std::int32_t index = in.take<std::int8_t>();
  const std::intptr_t value = in.take<std::int16_t>();
  const float opt = in.take<float>();
  switch (opcode) {
  case EffectOpcode::Close: return; // the effect lives on for the next input
  case EffectOpcode::EditOpen:
  case EffectOpcode::VendorSpecific: played().call(opcode, index, value, nullptr, opt); return;
  case EffectOpcode::ProcessEvents: return sendEvents(played(), in);
  case EffectOpcode::GetChunk: {
    void* data = nullptr;
    const auto size = played().call(opcode, index, 0, &data);
    require(size > 0 && data != nullptr);
    return;
  }
  case EffectOpcode::SetChunk: {
    auto chunk = in.bytes(static_cast<std::size_t>(value & 0x3FF));
    played().call(opcode, index, static_cast<std::intptr_t>(chunk.size()), chunk.data());
    return;
  }
  case EffectOpcode::SetSpeakerArrangement:
  case EffectOpcode::GetSpeakerArrangement: {
    sdk::SpeakerArrangement arrangements[2]{};
    for (auto& a : arrangements) {
      a.type = in.take<std::int8_t>();
      a.numChannels = in.take<std::int8_t>();
    }
    void* pointers[]{&arrangements[0], &arrangements[1]};
    const bool set = opcode == EffectOpcode::SetSpeakerArrangement;
    const bool taken =
        played().call(opcode, index, std::bit_cast<std::intptr_t>(set ? pointers[0] : &pointers[0]),
                      set ? pointers[1] : &pointers[1]) != 0;
    if (set) played().setOutputs(taken ? arrangements[1].numChannels : 2);
    return;
  }
  default: break;
  }
  // Everything else takes a text, a record of numbers, or nothing.
  std::array<char, kText + kCanary> buffer;
  buffer.fill('\x5A');
  const auto text = in.bytes(in.take<std::uint8_t>() % kText);
  std::copy(text.begin(), text.end(), buffer.begin());
  buffer[text.size()] = '\0';
  played().call(opcode, index, value, (index & 0x40) != 0 ? nullptr : buffer.data(), opt);
  require(std::all_of(buffer.end() - kCanary, buffer.end(), [](char c) { return c == '\x5A'; }));
}

/// What a host may do to an effect, in any order.
void runDispatcher(Input bytes) {
  Reader in(bytes.first(std::min<std::size_t>(bytes.size(), 4096)));
  sdk::EffectRecord& effect = played().record();
  while (!in.empty()) {
    const auto action = in.take<std::uint8_t>();
    if (action < 0xC0) {
      dispatchOne(in);
    } else if (action < 0xD0) {
      effect.setParameter(&effect, in.take<std::int8_t>(), in.take<float>());
    } else if (action < 0xE0) {
      static_cast<void>(effect.getParameter(&effect, in.take<std::int32_t>()));
    } else {
      played().process(in, action & 0x1FU);
    }
  }
}

/// Messages alone, more of them.
void runMidi(Input bytes) {
  Reader in(bytes.first(std::min<std::size_t>(bytes.size(), 2048)));
  static Played pedals; // its parameters are what messages made them
  sdk::EffectRecord& effect = pedals.record();
  effect.setParameter(&effect, 35, in.take<std::uint8_t>() / 255.0F); // channel
  while (!in.empty()) sendEvents(pedals, in);
  pedals.process(in, 32);
  pedals.checkValues();
}

void runAutomation(Input bytes) {
  std::istringstream text(std::string(bytes.begin(), bytes.end()));
  try {
    double last = -INFINITY;
    for (const tools::AutomationLine& line : tools::readAutomation(text, "file")) {
      require(line.seconds >= last && std::isfinite(line.seconds) && std::isfinite(line.ramp));
      require(line.ramp >= 0.0 && line.number > 0);
      last = line.seconds;
    }
  } catch (const std::runtime_error&) { // refused with its reason
  }
}

void runMidiFile(Input bytes) {
  try {
    double last = 0.0;
    for (const tools::TimedMidi& message : tools::parseMidi(bytes)) {
      require(message.seconds >= last && std::isfinite(message.seconds));
      require(message.bytes[0] >= 0x80 && message.bytes[0] < 0xF0);
      last = message.seconds;
    }
  } catch (const std::runtime_error&) {
  }
}

std::vector<std::uint8_t> bytesOf(const std::string& text) { return {text.begin(), text.end()}; }

Seeds dispatcherSeeds() {
  Seeds seeds;
  std::vector<std::uint8_t> each; // every opcode once, with a block between
  for (std::uint8_t opcode = 0; opcode < 84; ++opcode) {
    const std::uint8_t step[]{0, opcode, 1, 1, 0, 0, 0, 0x80, 0x3F, 4, 'n', 'a', 'm', 'e'};
    each.insert(each.end(), std::begin(step), std::end(step));
    each.push_back(0xF0);
  }
  seeds.push_back(each);
  // Rate 48000, on, lever to fast, blocks, off.
  seeds.push_back({0, 10,   0, 0, 0, 0x00, 0x80, 0x3B, 0x47, 0,    0, 12, 0, 1, 0, 0, 0, 0, 0,
                   0, 0xC0, 2, 0, 0, 0x80, 0x3F, 0xFF, 0xFF, 0xFF, 0, 12, 0, 0, 0, 0, 0, 0, 0});
  return seeds;
}

Seeds midiSeeds() {
  // Count, then kind, place and message of each: wheel, pedal, a note, a system message.
  return {{0, 2, 1, 0, 0, 0xB0, 1, 127, 1, 5, 0, 0xB0, 64, 127},
          {255, 8,    1, 0, 0,    0xB5, 1, 3, 6,    0,    0,    0xF0, 1,
           2,   0x81, 0, 0, 0xB0, 64,   0, 1, 0xFF, 0x7F, 0x90, 60,   99}};
}

Seeds automationSeeds() {
  return {bytesOf("0 Lever Tremolo\n1.5 Drive 3dB 0.25\n# a word\n\n2 #11 0.5\n"),
          bytesOf("0.1 \"Horn slow\" 1e-3 1e308\n0.2 x -inf\r\n")};
}

Seeds midiFileSeeds() {
  Seeds seeds;
  std::ostringstream written;
  const tools::TimedMidi messages[]{
      {0.0, {0xB0, 1, 127}}, {0.5, {0x91, 60, 100}}, {90.0, {0xC1, 5, 0}}};
  tools::writeMidi(written, messages);
  seeds.push_back(bytesOf(written.str()));
  // Format 1, two tracks, running status, a tempo change, a system message, a pitch wheel.
  std::string file("MThd\0\0\0\6\0\1\0\2\0\x60", 14);
  file += std::string("MTrk\0\0\0\x12\0\xFF\x51\3\7\xA1\x20\x60\xF0\3\1\2\xF7\0\xFF\x2F\0\0", 26);
  file += std::string("MTrk\0\0\0\x0F\0\xB0\1\x10\x30\1\x20\x81\0\xE0\0\x40\0\xFF\x2F\0", 23);
  seeds.push_back(bytesOf(file));
  return seeds;
}

constexpr std::array<FuzzTarget, 4> kTargets{{
    {"dispatcher", &runDispatcher, &dispatcherSeeds},
    {"midi", &runMidi, &midiSeeds},
    {"automation", &runAutomation, &automationSeeds},
    {"midi_file", &runMidiFile, &midiFileSeeds},
}};

} // namespace

std::span<const FuzzTarget> playingFuzzTargets() { return kTargets; }

} // namespace qlx::test
