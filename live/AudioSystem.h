// SPDX-License-Identifier: ISC
#pragma once

#include <array>
#include <cstdint>
#include <span>
#include <string>
#include <vector>

namespace qlx::live {

/// A channel message; `bytes` past its length are 0.
struct MidiMessage {
  int frame; ///< from the block's start
  std::array<std::uint8_t, 3> bytes;
};

/// One block of two channels each way.
struct Block {
  std::array<const float*, 2> in;
  std::array<float*, 2> out; ///< may be the inputs' memory
  int frames;
  std::span<const MidiMessage> midi; ///< in the order of time
};

/// What plays the blocks. Called on the audio thread.
class BlockProcessor {
 public:
  virtual ~BlockProcessor() = default;
  virtual void process(const Block& block) noexcept = 0;
};

/// Messages that an audio system hands over in a block at most; more are dropped.
inline constexpr std::size_t kMostMessages = 1024;

/// `bytes` as a channel message at `frame`; false for any other kind of message and for one that is
/// cut short or holds a data byte above 127.
bool toChannelMessage(std::span<const std::uint8_t> bytes, int frame,
                      MidiMessage& message) noexcept;

/// A connection to the machine's audio and MIDI. Used on one thread; its blocks come on another.
class AudioSystem {
 public:
  virtual ~AudioSystem() = default;

  virtual double rate() const = 0; ///< Hz
  virtual int blockFrames() const = 0;
  /// From now on blocks go to `processor`, which lives until `stop` has returned. Throws
  /// std::runtime_error.
  virtual void start(BlockProcessor& processor) = 0;
  virtual void stop() noexcept = 0;
  /// Blocks that came too late or were skipped, since the start.
  virtual int lateBlocks() const = 0;
  /// False when the system has ended the connection: the object is of no more use.
  virtual bool isAlive() const = 0;
  /// True while blocks come as fast as they are finished, without a clock.
  virtual bool isFreewheeling() const { return false; }
  /// Work of the control thread, some times a second.
  virtual void idle() {}
};

} // namespace qlx::live
