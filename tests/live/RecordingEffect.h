// SPDX-License-Identifier: ISC
#pragma once

#include "sdk/VstTypes.h"

#include <array>
#include <cstdio>
#include <string>

namespace qlx::test {

/// An effect that passes sound on and writes down what it is asked, in memory of fixed size:
/// "frames" of a block, "=parameter:value in percent", "(bytes)" of a MIDI event.
class RecordingEffect {
 public:
  RecordingEffect() {
    m_record.object = this;
    m_record.processReplacing = [](sdk::EffectRecord* r, float** in, float** out, std::int32_t n) {
      for (int channel = 0; channel < 2; ++channel)
        for (int i = 0; i < n; ++i) out[channel][i] = in[channel][i];
      self(r).note("%d ", n);
    };
    m_record.setParameter = [](sdk::EffectRecord* r, std::int32_t index, float value) {
      self(r).note("=%d:%d ", index, static_cast<int>(100.0F * value + 0.5F));
    };
    m_record.dispatcher = [](sdk::EffectRecord* r, std::int32_t opcode, std::int32_t, std::intptr_t,
                             void* ptr, float) -> std::intptr_t {
      if (opcode != static_cast<std::int32_t>(sdk::EffectOpcode::ProcessEvents)) return 0;
      const auto* list = static_cast<const sdk::EventList*>(ptr);
      for (std::int32_t i = 0; i < list->numEvents; ++i) {
        const auto* bytes = reinterpret_cast<const sdk::MidiEvent*>(list->events[i])->midiData;
        self(r).note("(%x %d %d) ", static_cast<unsigned char>(bytes[0]), bytes[1], bytes[2]);
      }
      return 1;
    };
  }
  sdk::EffectRecord& record() { return m_record; }
  std::string taken() {
    std::string words(m_words.data(), m_used);
    m_used = 0;
    return words;
  }

 private:
  static RecordingEffect& self(sdk::EffectRecord* r) {
    return *static_cast<RecordingEffect*>(r->object);
  }
  template <typename... Numbers>
  void note(const char* format, Numbers... numbers) {
    m_used += static_cast<std::size_t>(
        std::snprintf(m_words.data() + m_used, m_words.size() - m_used, format, numbers...));
  }

  sdk::EffectRecord m_record{};
  std::array<char, 4096> m_words{};
  std::size_t m_used = 0;
};

} // namespace qlx::test
