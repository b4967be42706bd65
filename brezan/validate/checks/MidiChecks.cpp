// SPDX-License-Identifier: ISC
#include "brezan/validate/checks/AudioRun.h"
#include "brezan/validate/host/EventMemory.h"

#include <array>
#include <limits>
#include <string>

namespace qlx::validate {

namespace {

void controllers(CheckRun& run) {
  const Effect effect(run);
  effect.start(48000.0, 256);
  AudioRun<float> audio(effect, 256);
  TestSound sound(run.random());
  for (int status = 0x80; status <= 0xFF; ++status)
    for (int i = run.rounds(2, 60); i > 0; --i) {
      EventMemory events(3);
      for (int k = 0; k < 3; ++k)
        events.midi(k,
                    {static_cast<std::uint8_t>(status),
                     static_cast<std::uint8_t>(run.random().below(128)),
                     static_cast<std::uint8_t>(run.random().below(128))},
                    64 * k);
      run.trying("MIDI status " + std::to_string(status));
      effect.call(sdk::EffectOpcode::ProcessEvents, 0, 0, events.list());
      audio.process(run.random().between(1, 256), std::ref(sound));
    }
  effect.requireValuesInRange();
}

void fuzz(CheckRun& run) {
  const Effect effect(run);
  AudioRun<float> audio(effect, 256);
  TestSound sound(run.random());
  Random& random = run.random();
  effect.start(48000.0, 256);
  for (int i = run.rounds(100, 20000); i > 0; --i) {
    EventMemory events(random.chance(20) ? 1000 : random.below(8));
    for (int k = 0; k < events.count(); ++k) {
      sdk::Event& event = events.event(k);
      for (char& c : event.data) c = random.byte();
      // The last eight bytes of an exclusive message's record point to its bytes.
      event.type = random.chance(4) ? random.between(2, 5) : sdk::kMidiEventType;
      event.byteSize = random.chance(4) ? random.between(-1, 100) : 24;
      event.deltaFrames = random.chance(2)   ? random.below(256)
                          : random.chance(2) ? random.between(-1000, 100000)
                                             : std::numeric_limits<std::int32_t>::min();
      event.flags = static_cast<std::int32_t>(random.next());
      if (random.chance(16)) events.remove(k);
    }
    run.trying("random events, " + std::to_string(events.count()));
    if (random.chance(50)) effect.mains(random.chance(2));
    effect.call(sdk::EffectOpcode::ProcessEvents, 0, 0, events.list());
    if (random.chance(50)) effect.mains(true);
    if (random.chance(2)) audio.process(random.between(1, 256), std::ref(sound));
  }
  effect.requireValuesInRange();
}

void emptyLists(CheckRun& run) {
  const Effect effect(run);
  effect.start(48000.0, 256);
  for (const int count : {0, -1, std::numeric_limits<std::int32_t>::min()}) {
    run.trying("a list of " + std::to_string(count) + " events");
    EventMemory events(0);
    events.list()->numEvents = count;
    effect.call(sdk::EffectOpcode::ProcessEvents, 0, 0, events.list());
  }
  play<float>(effect, 1024, 256);
}

constexpr Check kChecks[] = {
    {"midi", "messages", 2, "every kind of MIDI message", controllers},
    {"midi", "fuzz", 3, "events of any kind, size and time, and missing ones", fuzz},
    {"midi", "empty", 2, "lists of no events and of less", emptyLists},
};

} // namespace

std::span<const Check> midiChecks() { return kChecks; }

} // namespace qlx::validate
