// SPDX-License-Identifier: ISC
#include "brezan/validate/checks/AudioRun.h"

#include <algorithm>
#include <bit>
#include <cmath>
#include <cstdint>
#include <string>
#include <type_traits>

namespace qlx::validate {

namespace {

constexpr int kFront = 64;       // samples in front of an output that must stay
constexpr double kLoudest = 1e6; // 120 dB above full scale

// Not a number, with bits that no computation gives.
template <typename Sample>
using Bits = std::conditional_t<sizeof(Sample) == 4, std::uint32_t, std::uint64_t>;
template <typename Sample>
constexpr Bits<Sample> kMark = static_cast<Bits<Sample>>(sizeof(Sample) == 4 ? 0x7FBADBADU
                                                                             : 0x7FF4BADBADBADBADU);

template <typename Sample>
bool isMark(const Sample* at) {
  return std::bit_cast<Bits<Sample>>(*at) == kMark<Sample>;
}

std::string sampleName(int frame, std::size_t channel) {
  return "frame " + std::to_string(frame) + " of output " + std::to_string(channel);
}

template <typename Sample>
std::size_t bytes(int samples) {
  return static_cast<std::size_t>(samples) * sizeof(Sample);
}

} // namespace

double TestSound::operator()(int channel) {
  if (channel == 0) ++m_frame;
  constexpr long kSweep = 60000;
  constexpr long kClick = 9973;
  const double glide = std::abs(static_cast<double>(m_frame % kSweep) / kSweep - 0.5);
  if (channel == 0) m_phase = std::fmod(m_phase + 0.01 + 0.6 * glide, 6.283185307179586);
  const double click = m_frame % kClick == 0 ? 0.2 : 0.0;
  return 0.5 * std::sin(m_phase + 0.7 * channel) + click + 0.05 * (m_random.unit() - 0.5);
}

template <typename Sample>
AudioRun<Sample>::AudioRun(const Effect& effect, int maximum, Layout layout)
    : m_effect(effect), m_layout(layout), m_heard(effect.record().numOutputs),
      m_in(static_cast<std::size_t>(effect.record().numInputs)),
      m_out(static_cast<std::size_t>(effect.record().numOutputs)) {
  const std::size_t room = bytes<Sample>(maximum + kFront);
  for (std::size_t c = 0; c < m_in.size(); ++c) m_inputs.emplace_back(room);
  for (std::size_t c = 0; c < m_out.size(); ++c) m_outputs.emplace_back(room);
}

template <typename Sample>
void AudioRun<Sample>::place(int frames) {
  const auto last = [frames](const GuardedMemory& memory) {
    return reinterpret_cast<Sample*>(memory.last(bytes<Sample>(frames)));
  };
  for (std::size_t c = 0; c < m_in.size(); ++c) m_in[c] = last(m_inputs[c]);
  for (std::size_t c = 0; c < m_out.size(); ++c) {
    const std::size_t partner =
        m_layout == Layout::Crossed && c < m_in.size() ? m_in.size() - 1 - c : c;
    m_out[c] =
        m_layout != Layout::Apart && partner < m_in.size() ? m_in[partner] : last(m_outputs[c]);
  }
}

template <typename Sample>
void AudioRun<Sample>::mark(int frames) {
  for (Sample* out : m_out)
    if (std::find(m_in.begin(), m_in.end(), out) == m_in.end())
      std::fill_n(reinterpret_cast<Bits<Sample>*>(out - kFront), frames + kFront, kMark<Sample>);
}

template <typename Sample>
void AudioRun<Sample>::requireWritten(int frames) const {
  for (std::size_t c = 0; c < m_out.size(); ++c) {
    if (std::find(m_in.begin(), m_in.end(), m_out[c]) != m_in.end()) continue;
    for (int i = -kFront; i < frames; ++i)
      if (isMark(m_out[c] + i) != (i < 0) && (i < 0 || static_cast<int>(c) < m_heard))
        m_effect.run().fail(sampleName(i, c) + (i < 0 ? " was written" : " was not written"));
  }
}

template <typename Sample>
void AudioRun<Sample>::requireFinite(int frames) const {
  for (std::size_t c = 0; c < static_cast<std::size_t>(m_heard); ++c)
    for (int i = 0; i < frames; ++i)
      if (const auto x = static_cast<double>(m_out[c][i]); !(std::abs(x) < kLoudest))
        m_effect.run().fail(sampleName(i, c) + " is " + std::to_string(x));
}

template <typename Sample>
void AudioRun<Sample>::process(int frames, const Source& source, bool finite) {
  place(frames);
  for (int i = 0; i < frames; ++i)
    for (std::size_t c = 0; c < m_in.size(); ++c)
      m_in[c][i] = static_cast<Sample>(source(static_cast<int>(c)));
  mark(frames);
  const auto allowWrites = [this](bool allowed) {
    if (m_layout == Layout::Apart)
      for (const GuardedMemory& memory : m_inputs) memory.allowWrites(allowed);
  };
  const std::vector<Sample*> in = m_in;
  const std::vector<Sample*> out = m_out;
  allowWrites(false);
  m_effect.process(m_in.data(), m_out.data(), frames);
  allowWrites(true);
  m_effect.run().require(m_in == in && m_out == out, "the host's list of buffers was changed");
  requireWritten(frames);
  if (finite) requireFinite(frames);
}

template class AudioRun<float>;
template class AudioRun<double>;

template <typename Sample>
std::vector<Sample> play(const Effect& effect, int frames, int block, Layout layout) {
  AudioRun<Sample> audio(effect, block, layout);
  TestSound sound(Random(1, "play"));
  std::vector<Sample> all;
  while (frames > 0) {
    const int count = std::min(frames, block);
    audio.process(count, std::ref(sound));
    for (int c = 0; c < audio.outputs(); ++c)
      all.insert(all.end(), audio.output(c), audio.output(c) + count);
    frames -= count;
  }
  return all;
}

template std::vector<float> play(const Effect&, int, int, Layout);
template std::vector<double> play(const Effect&, int, int, Layout);

int framesOf(double seconds, double rate) { return std::max(1, static_cast<int>(seconds * rate)); }

} // namespace qlx::validate
