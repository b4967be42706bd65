// SPDX-License-Identifier: ISC
#include "live/EffectPlayer.h"

#include <algorithm>
#include <chrono>
#include <cmath>
#include <cstring>

namespace qlx::live {

namespace {

constexpr int kControllerStatus = 0xB0;
constexpr int kProgramStatus = 0xC0;
// Blocks over which the load is averaged, as a one-pole low-pass.
constexpr float kLoadBlocks = 32.0F;

void raise(std::atomic<float>& level, float to) noexcept {
  // The reader may put 0 in between, which costs one block's peak at worst.
  if (to > level.load(std::memory_order_relaxed)) level.store(to, std::memory_order_relaxed);
}

float peak(const std::array<const float*, 2>& channels, int frames) noexcept {
  float level = 0.0F;
  for (const float* channel : channels)
    for (int i = 0; i < frames; ++i) level = std::max(level, std::abs(channel[i]));
  return level;
}

} // namespace

EffectPlayer::EffectPlayer(sdk::EffectRecord& effect, int longestBlock)
    : m_effect(effect), m_longestBlock(longestBlock) {
  for (auto& channel : m_assigned)
    for (auto& parameter : channel) parameter.store(kNoParameter, std::memory_order_relaxed);
  for (std::size_t i = 0; i < kMostEvents; ++i) {
    m_events[i].type = sdk::kMidiEventType;
    m_events[i].byteSize = sizeof(sdk::MidiEvent);
    // An event of any kind begins with the same members; the interface hands it on by this type.
    m_list.events[i] = reinterpret_cast<sdk::Event*>(&m_events[i]);
  }
}

void EffectPlayer::assign(Controller controller, int parameter) noexcept {
  m_assigned[static_cast<std::size_t>(controller.channel - 1)]
            [static_cast<std::size_t>(controller.number)]
                .store(static_cast<std::int16_t>(parameter), std::memory_order_relaxed);
}

Meters EffectPlayer::readMeters() noexcept {
  return {m_peakIn.exchange(0.0F, std::memory_order_relaxed),
          m_peakOut.exchange(0.0F, std::memory_order_relaxed),
          m_load.load(std::memory_order_relaxed),
          m_worstLoad.exchange(0.0F, std::memory_order_relaxed)};
}

void EffectPlayer::process(const Block& block) noexcept {
  const auto begun = std::chrono::steady_clock::now();
  raise(m_peakIn, peak(block.in, block.frames));
  int done = 0;
  for (const MidiMessage& message : block.midi) {
    const int at = std::clamp(message.frame, done, block.frames);
    if (at > done) {
      flushEvents();
      play(block, done, at);
      done = at;
    }
    take(message);
  }
  flushEvents();
  play(block, done, block.frames);
  raise(m_peakOut, peak({block.out[0], block.out[1]}, block.frames));
  const std::chrono::duration<double> taken = std::chrono::steady_clock::now() - begun;
  if (block.frames > 0) {
    const auto load =
        static_cast<float>(taken.count() * m_rate.load(std::memory_order_relaxed) / block.frames);
    const float before = m_load.load(std::memory_order_relaxed);
    m_load.store(before + (load - before) / kLoadBlocks, std::memory_order_relaxed);
    raise(m_worstLoad, load);
  }
  m_blocks.fetch_add(1, std::memory_order_relaxed);
}

void EffectPlayer::play(const Block& block, int from, int to) noexcept {
  while (from < to) {
    const int frames = std::min(to - from, m_longestBlock);
    // The interface takes inputs without const and leaves them alone.
    float* in[2] = {const_cast<float*>(block.in[0]) + from, const_cast<float*>(block.in[1]) + from};
    float* out[2] = {block.out[0] + from, block.out[1] + from};
    m_effect.processReplacing(&m_effect, in, out, frames);
    from += frames;
  }
}

void EffectPlayer::take(const MidiMessage& message) noexcept {
  const int status = message.bytes[0] & 0xF0;
  if (status == kProgramStatus) {
    const int only = m_programChannel.load(std::memory_order_relaxed);
    if (only == kEveryChannel || only == (message.bytes[0] & 0x0F) + 1)
      m_notices.push({Notice::Kind::Program, message.bytes[1]});
  }
  if (status == kControllerStatus && takeController(message)) return;
  if (m_list.count == static_cast<std::int32_t>(kMostEvents)) flushEvents();
  std::memcpy(m_events[static_cast<std::size_t>(m_list.count++)].midiData, message.bytes.data(),
              message.bytes.size());
}

bool EffectPlayer::takeController(const MidiMessage& message) noexcept {
  const int channel = message.bytes[0] & 0x0F;
  const int number = message.bytes[1];
  if (number >= kControllers) return false;
  auto& assigned = m_assigned[static_cast<std::size_t>(channel)][static_cast<std::size_t>(number)];
  if (const int wanted = m_learning.exchange(kNoParameter, std::memory_order_relaxed);
      wanted != kNoParameter) {
    assigned.store(static_cast<std::int16_t>(wanted), std::memory_order_relaxed);
    m_notices.push({Notice::Kind::Learned, wanted, {channel + 1, number}});
  }
  const int parameter = assigned.load(std::memory_order_relaxed);
  if (parameter == kNoParameter) return false;
  flushEvents(); // what came before acts before
  m_effect.setParameter(&m_effect, parameter, static_cast<float>(message.bytes[2]) / 127.0F);
  return true;
}

void EffectPlayer::flushEvents() noexcept {
  if (m_list.count == 0) return;
  m_effect.dispatcher(&m_effect, static_cast<std::int32_t>(sdk::EffectOpcode::ProcessEvents), 0, 0,
                      &m_list, 0.0F);
  m_list.count = 0;
}

} // namespace qlx::live
