// SPDX-License-Identifier: ISC
#pragma once

#include "live/AudioSystem.h"
#include "live/Ring.h"

#include <atomic>
#include <chrono>
#include <memory>
#include <string>
#include <vector>

class RtAudio;
class RtMidiIn;

namespace qlx::live {

/// The machine's sound card and MIDI inputs, for machines without a JACK server. MIDI is played at
/// the start of the block after it has come.
class RtSystem final : public AudioSystem {
 public:
  struct Wishes {
    std::string input;  ///< number or part of a device's name; empty: the system's default
    std::string output; ///< the same
    std::string midi;   ///< part of the inputs' names; empty: all
    unsigned rate = 48000;
    unsigned blockFrames = 256; ///< the driver may choose otherwise
  };

  /// One sentence for each device and MIDI input.
  static std::vector<std::string> list();

  /// Throws std::runtime_error when there is no device to play on.
  explicit RtSystem(const Wishes& wishes);
  ~RtSystem() override;
  RtSystem(const RtSystem&) = delete;
  RtSystem& operator=(const RtSystem&) = delete;

  double rate() const override { return m_rate; }
  int blockFrames() const override { return static_cast<int>(m_blockFrames); }
  void start(BlockProcessor& processor) override;
  void stop() noexcept override;
  int lateBlocks() const override { return m_lateBlocks.load(std::memory_order_relaxed); }
  /// False once the card has gone.
  bool isAlive() const override { return m_alive.load(std::memory_order_relaxed); }
  std::size_t midiInputs() const { return m_midi.size(); }

 private:
  /// One MIDI input, filled by the thread of its library.
  struct MidiInput {
    std::unique_ptr<RtMidiIn> port;
    Ring<MidiMessage, kMostMessages> messages;
  };
  void openAudio(const Wishes& wishes);
  void openMidi(const std::string& wanted);
  void process(float* out, const float* in, int frames) noexcept;
  bool hasClock(bool isLate) noexcept;

  std::unique_ptr<RtAudio> m_audio;
  std::vector<std::unique_ptr<MidiInput>> m_midi;
  BlockProcessor* m_processor = nullptr;
  double m_rate = 0.0;
  unsigned m_blockFrames = 0;
  unsigned m_inputs = 0; ///< channels, 0 to 2
  std::vector<float> m_silence;
  std::array<MidiMessage, kMostMessages> m_messages{}; ///< the audio thread's
  std::atomic<int> m_lateBlocks{0};
  std::atomic<bool> m_alive{true};
  int m_lateInARow = 0; ///< this and the next: the audio thread's
  std::chrono::steady_clock::time_point m_lateSince;
};

} // namespace qlx::live
