// SPDX-License-Identifier: ISC
#pragma once

#include "brezan/validate/Random.h"
#include "brezan/validate/host/GuardedMemory.h"
#include "sdk/VstTypes.h"

#include <array>
#include <cstddef>
#include <cstdint>

namespace qlx::validate {

/// A list of events. List and events each end at a page that nobody may touch.
class EventMemory {
 public:
  explicit EventMemory(int count)
      : m_count(count), m_list(bytesOfList()), m_events(bytesOfEvents()) {
    list()->numEvents = count;
    for (int i = 0; i < count; ++i) pointers()[i] = &event(i);
  }

  int count() const { return m_count; }
  sdk::EventList* list() const {
    return reinterpret_cast<sdk::EventList*>(m_list.last(bytesOfList()));
  }
  sdk::Event& event(int index) const {
    return reinterpret_cast<sdk::Event*>(m_events.last(bytesOfEvents()))[index];
  }
  void midi(int index, std::array<std::uint8_t, 3> bytes, std::int32_t frame) const {
    auto& at = reinterpret_cast<sdk::MidiEvent&>(event(index));
    at = {};
    at.type = sdk::kMidiEventType;
    at.byteSize = sizeof(sdk::MidiEvent);
    at.deltaFrames = frame;
    for (std::size_t i = 0; i < bytes.size(); ++i) at.midiData[i] = static_cast<char>(bytes[i]);
  }
  /// A random channel message, at a random frame of a block of FRAMES, in each place.
  void randomMidi(Random& random, int frames) const {
    for (int i = 0; i < m_count; ++i) {
      const auto status = static_cast<std::uint8_t>(random.between(0x80, 0xEF));
      const auto first = static_cast<std::uint8_t>(random.below(128));
      const auto second = static_cast<std::uint8_t>(random.below(128));
      midi(i, {status, first, second}, random.below(frames));
    }
  }
  /// A null pointer in its place.
  void remove(int index) const { pointers()[index] = nullptr; }

 private:
  std::size_t bytesOfList() const {
    return offsetof(sdk::EventList, events) + static_cast<std::size_t>(m_count) * sizeof(void*);
  }
  std::size_t bytesOfEvents() const {
    return static_cast<std::size_t>(m_count) * sizeof(sdk::Event);
  }
  sdk::Event** pointers() const {
    return reinterpret_cast<sdk::Event**>(m_list.last(bytesOfList()) +
                                          offsetof(sdk::EventList, events));
  }

  int m_count;
  GuardedMemory m_list;
  GuardedMemory m_events;
};

} // namespace qlx::validate
