// SPDX-License-Identifier: ISC
#pragma once

#include "sdk/VstTypes.h"

namespace qlx::test {

/// A MIDI message at the start of a block, and the list of this message alone that a host gives.
struct MidiMessage {
  sdk::MidiEvent event{};
  sdk::EventList list{1, 0, {reinterpret_cast<sdk::Event*>(&event), nullptr}};

  MidiMessage(int status, int data1, int data2) {
    event.type = sdk::kMidiEventType;
    event.byteSize = sizeof event;
    event.midiData[0] = static_cast<char>(status);
    event.midiData[1] = static_cast<char>(data1);
    event.midiData[2] = static_cast<char>(data2);
  }
  MidiMessage(const MidiMessage&) = delete;
  MidiMessage& operator=(const MidiMessage&) = delete;
};

} // namespace qlx::test
