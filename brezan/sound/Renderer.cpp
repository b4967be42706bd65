// SPDX-License-Identifier: ISC
#include "brezan/sound/Renderer.h"

#include "brezan/Interrupt.h"
#include "brezan/sound/ProgrammeTail.h"

#include <algorithm>
#include <cmath>

namespace qlx::tools {

Renderer::Renderer(PluginHost& host, const RenderSettings& settings)
    : m_host(host), m_settings(settings) {}

RenderReport Renderer::render(AudioInput& input, AudioOutput& output, AutomationPlayer& automation,
                              MidiPlayer& midi, ProgressBar& progress) {
  const double rate = input.rate();
  EffectBlocks blocks(m_host, m_settings.blockFrames, m_settings.useDouble);
  blocks.start(rate, input.channels(), m_settings.outputs, m_settings.settleSeconds);
  ProgrammeTail programme(m_settings.blockFrames, m_settings.useDouble, rate, input.channels(),
                          m_settings.outputs);

  const auto inputs = static_cast<std::size_t>(input.channels());
  const auto outputs = static_cast<std::size_t>(m_settings.outputs);
  std::vector<double> in(inputs * static_cast<std::size_t>(m_settings.blockFrames));
  std::vector<double> out(outputs * static_cast<std::size_t>(m_settings.blockFrames));
  const auto tail = std::llround(m_settings.tailSeconds * rate);
  long long now = 0;
  long long end = -1; // frame after the input's last, once that is known
  const auto begin = [&] {
    end = now;
    if (tail > 0) programme.begin(m_host);
  };
  while (end < 0 || (now < end + tail && !programme.over())) {
    throwIfInterrupted();
    int frames = m_settings.blockFrames;
    if (end >= 0) frames = static_cast<int>(std::min<long long>(frames, end + tail - now));
    frames = automation.advance(m_host, now, frames);
    frames = midi.advance(m_host, now, frames);
    const std::size_t wanted = inputs * static_cast<std::size_t>(frames);
    std::fill_n(in.begin(), wanted, 0.0);
    bool ends = false;
    if (end < 0) {
      const int got = input.read(std::span(in).first(wanted));
      programme.note(std::span(in).first(inputs * static_cast<std::size_t>(got)));
      ends = got < frames;
      frames = got;
    } else {
      programme.advance(frames);
    }
    const auto written = std::span(out).first(outputs * static_cast<std::size_t>(frames));
    if (frames > 0) blocks.process(in, written, frames);
    output.write(written);
    now += frames;
    if (ends) begin();
    progress.show(static_cast<double>(now) / static_cast<double>(std::max(1LL, input.frames())));
  }
  m_host.stop();
  return {now, rate, blocks.secondsInside()};
}

} // namespace qlx::tools
