// SPDX-License-Identifier: ISC
#include "brezan/sound/EffectBlocks.h"

#include "brezan/Interrupt.h"

#include <algorithm>
#include <chrono>
#include <cmath>

namespace qlx::tools {

EffectBlocks::EffectBlocks(PluginHost& host, int blockFrames, bool useDouble)
    : m_host(host), m_block(blockFrames), m_useDouble(useDouble) {
  prepare(m_single);
  prepare(m_double);
}

template <typename Sample>
void EffectBlocks::prepare(Buffers<Sample>& buffers) const {
  const auto block = static_cast<std::size_t>(m_block);
  buffers.memory.assign(4 * block, Sample{0});
  for (std::size_t i = 0; i < 2; ++i) {
    buffers.in[i] = buffers.memory.data() + i * block;
    buffers.out[i] = buffers.memory.data() + (2 + i) * block;
  }
}

void EffectBlocks::start(double rate, int inputs, int outputs, double seconds) {
  m_inputs = inputs;
  m_outputs = outputs;
  m_host.start(rate, m_block, inputs, outputs);
  const std::vector<double> silence(2 * static_cast<std::size_t>(m_block), 0.0);
  std::vector<double> discarded(silence.size());
  for (auto left = std::llround(seconds * rate); left > 0; left -= m_block) {
    throwIfInterrupted();
    process(silence, discarded, static_cast<int>(std::min<long long>(left, m_block)));
  }
  m_seconds = 0.0;
}

template <typename Sample>
void EffectBlocks::process(Buffers<Sample>& buffers, std::span<const double> in,
                           std::span<double> out, int frames) {
  const auto inputs = static_cast<std::size_t>(m_inputs);
  const auto outputs = static_cast<std::size_t>(m_outputs);
  const auto count = static_cast<std::size_t>(frames);
  for (std::size_t channel = 0; channel < 2; ++channel)
    for (std::size_t i = 0; i < count; ++i)
      buffers.in[channel][i] =
          channel < inputs ? static_cast<Sample>(in[inputs * i + channel]) : Sample{0};
  const auto begin = std::chrono::steady_clock::now();
  m_host.process(buffers.in, buffers.out, frames);
  m_seconds += std::chrono::duration<double>(std::chrono::steady_clock::now() - begin).count();
  for (std::size_t i = 0; i < count; ++i)
    for (std::size_t channel = 0; channel < outputs; ++channel)
      out[outputs * i + channel] = static_cast<double>(buffers.out[channel][i]);
}

void EffectBlocks::process(std::span<const double> in, std::span<double> out, int frames) {
  if (m_useDouble)
    process(m_double, in, out, frames);
  else
    process(m_single, in, out, frames);
}

} // namespace qlx::tools
