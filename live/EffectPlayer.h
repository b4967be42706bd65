// SPDX-License-Identifier: ISC
#pragma once

#include "live/AudioSystem.h"
#include "live/Ring.h"
#include "sdk/VstTypes.h"

#include <array>
#include <atomic>
#include <cstdint>
#include <optional>

namespace qlx::live {

/// A MIDI controller of one channel.
struct Controller {
  int channel; ///< 1 to 16
  int number;  ///< 0 to 119; those above are channel mode messages
  auto operator<=>(const Controller&) const = default; // NOLINT(modernize-use-nullptr)
};
inline constexpr int kChannels = 16;
inline constexpr int kControllers = 120;

/// What the audio thread has to tell.
struct Notice {
  enum class Kind { Program, Learned } kind;
  int value; ///< of Program the number from 0, of Learned the parameter
  Controller controller{};
};

/// Highest levels since the last reading, linear, and the share of a block's time that the effect
/// took, on average and at most.
struct Meters {
  float in;
  float out;
  float load;
  float worstLoad;
};

/// Plays blocks and MIDI through an effect that has been started. Blocks are cut where a message
/// falls, since effects may ignore a message's place in its block.
///
/// `process` belongs to the audio thread; the rest to the control thread, meanwhile.
class EffectPlayer final : public BlockProcessor {
 public:
  static constexpr int kNoParameter = -1;
  static constexpr int kEveryChannel = 0;

  /// The effect outlives this. `longestBlock` is what it was told in frames; longer blocks are cut.
  EffectPlayer(sdk::EffectRecord& effect, int longestBlock);

  void process(const Block& block) noexcept override;

  /// Of the coming blocks, Hz, for the load.
  void setRate(double hz) noexcept { m_rate.store(hz, std::memory_order_relaxed); }
  /// Program changes of other channels than this (1 to 16, or kEveryChannel) are not reported.
  void setProgramChannel(int channel) noexcept {
    m_programChannel.store(channel, std::memory_order_relaxed);
  }

  /// A controller that moves a parameter (0..127 over its whole range) is not handed to the effect.
  void assign(Controller controller, int parameter) noexcept;
  /// The next controller that moves is assigned to `parameter` and reported; kNoParameter: none.
  void learn(int parameter) noexcept { m_learning.store(parameter, std::memory_order_relaxed); }
  int learning() const noexcept { return m_learning.load(std::memory_order_relaxed); }

  std::optional<Notice> notice() noexcept { return m_notices.pop(); }
  Meters readMeters() noexcept;
  /// Blocks played so far.
  std::uint64_t blocks() const noexcept { return m_blocks.load(std::memory_order_relaxed); }

 private:
  void take(const MidiMessage& message) noexcept;
  bool takeController(const MidiMessage& message) noexcept;
  void flushEvents() noexcept;
  void play(const Block& block, int from, int to) noexcept;

  // Messages that the effect is given at once at most.
  static constexpr std::size_t kMostEvents = 64;
  struct EventPointers {
    std::int32_t count;
    std::intptr_t reserved;
    std::array<sdk::Event*, kMostEvents> events;
  };
  static_assert(offsetof(EventPointers, events) == offsetof(sdk::EventList, events));

  sdk::EffectRecord& m_effect;
  int m_longestBlock;
  std::array<std::array<std::atomic<std::int16_t>, kControllers>, kChannels> m_assigned;
  std::atomic<int> m_learning{kNoParameter};
  std::atomic<int> m_programChannel{kEveryChannel};
  std::atomic<double> m_rate{48000.0};
  Ring<Notice, 256> m_notices;
  std::atomic<float> m_peakIn{0.0F};
  std::atomic<float> m_peakOut{0.0F};
  std::atomic<float> m_load{0.0F};
  std::atomic<float> m_worstLoad{0.0F};
  std::atomic<std::uint64_t> m_blocks{0};
  // The audio thread's.
  std::array<sdk::MidiEvent, kMostEvents> m_events{};
  EventPointers m_list{};
};

} // namespace qlx::live
