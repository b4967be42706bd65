// SPDX-License-Identifier: ISC
#pragma once

#include "sdk/AudioEffect.h"
#include "sdk/VstTypes.h"

#include <atomic>
#include <cstdint>

namespace qlx::midi {

/// The speed lever moved by MIDI: the modulation wheel moves it, the sustain pedal switches it
/// between its ends. It moves the effect's parameter in the way that everything else
/// does, so the host records it.
///
/// processEvents and decay belong to the audio thread; the channel and the read-outs to any.
class MidiLever {
 public:
  static constexpr int kNoChannel = 0;
  static constexpr int kEveryChannel = 17;

  /// `leverIndex` is the parameter to move, 0 slow .. 1 fast. The effect outlives this.
  MidiLever(sdk::AudioEffect& effect, std::int32_t leverIndex) noexcept
      : m_effect(effect), m_leverIndex(leverIndex) {}

  /// kNoChannel, 1 .. 16 or kEveryChannel.
  void setChannel(int channel) noexcept { m_channel.store(channel, std::memory_order_relaxed); }

  /// Takes the events of the coming block; answers 1, or -1 without a list.
  std::int32_t processEvents(const sdk::EventList* events);

  /// Lets the wheel's activity fall for a block of `frames`, with half a second for 1/e.
  void decay(int frames, double hostRate) noexcept;

  /// 1 when the wheel has just been moved, then falling to 0.
  float modWheelActivity() const noexcept {
    return m_modWheelActivity.load(std::memory_order_relaxed);
  }
  /// 1 while the pedal is down, else 0.
  double sustainState() const noexcept { return m_sustainState.load(std::memory_order_relaxed); }

 private:
  void take(const sdk::MidiEvent& event);
  void moveWheel(float lever);
  void movePedal(bool down);

  sdk::AudioEffect& m_effect;
  std::int32_t m_leverIndex;
  std::atomic<int> m_channel{kNoChannel};
  std::atomic<float> m_modWheelActivity{0.0F};
  std::atomic<double> m_sustainState{0.0};
};

} // namespace qlx::midi
