// SPDX-License-Identifier: ISC
#include "midi/MidiLever.h"

#include <algorithm>
#include <cmath>

namespace qlx::midi {

static_assert(std::atomic<float>::is_always_lock_free && std::atomic<double>::is_always_lock_free);

namespace {

constexpr unsigned kControlChange = 0xB0;
constexpr unsigned kModulationWheel = 1;
constexpr unsigned kSustainPedal = 64;
constexpr unsigned kSevenBits = 0x7F;
constexpr float kPerStep = 0.007874016F; // 1 / 127

/// For 1/e; single precision like all of the plug-in's time constants.
constexpr double kActivitySeconds = 0.5000000237487257;

unsigned byteAt(const sdk::MidiEvent& event, int position) {
  return static_cast<unsigned char>(event.midiData[position]);
}

} // namespace

std::int32_t MidiLever::processEvents(const sdk::EventList* events) {
  if (events == nullptr) return -1;
  // More pointers follow the record than its declaration tells.
  const sdk::Event* const* list = events->events;
  for (std::int32_t i = 0; i < events->numEvents; ++i) {
    if (list[i] == nullptr || list[i]->type != sdk::kMidiEventType) continue;
    take(*reinterpret_cast<const sdk::MidiEvent*>(list[i]));
  }
  return 1;
}

void MidiLever::take(const sdk::MidiEvent& event) {
  const int channel = m_channel.load(std::memory_order_relaxed);
  const unsigned status = byteAt(event, 0);
  if (channel == kNoChannel) return;
  if (channel != kEveryChannel && static_cast<int>(status & 0x0F) != channel - 1) return;
  if ((status & 0xF0) != kControlChange) return;

  const auto steps = static_cast<float>(byteAt(event, 2) & kSevenBits);
  const float value = std::min(steps * kPerStep, 1.0F);
  switch (byteAt(event, 1) & kSevenBits) {
  case kModulationWheel: moveWheel(value); break;
  case kSustainPedal: movePedal(value >= 0.5F); break;
  default: break;
  }
}

void MidiLever::moveWheel(float lever) {
  m_modWheelActivity.store(1.0F, std::memory_order_relaxed);
  m_effect.setParameterAutomated(m_leverIndex, lever);
}

void MidiLever::movePedal(bool down) {
  m_sustainState.store(down ? 1.0 : 0.0, std::memory_order_relaxed);
  // The lever's present place first, so that the host's automation shows a step and no ramp.
  m_effect.setParameterAutomated(m_leverIndex, m_effect.getParameter(m_leverIndex));
  m_effect.setParameterAutomated(m_leverIndex, down ? 1.0F : 0.0F);
}

void MidiLever::decay(int frames, double hostRate) noexcept {
  const float activity = m_modWheelActivity.load(std::memory_order_relaxed);
  if (activity == 0.0F) return;
  const double left = std::exp(-frames / (kActivitySeconds * hostRate));
  m_modWheelActivity.store(static_cast<float>(activity * left), std::memory_order_relaxed);
}

} // namespace qlx::midi
