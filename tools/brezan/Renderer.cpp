#include "tools/brezan/Renderer.h"

#include "tools/brezan/Interrupt.h"

#include <algorithm>
#include <chrono>
#include <cmath>

namespace qlx::tools {

namespace {

constexpr double kQuiet = 3.1622776601683795e-5; // -90 dB below full scale
constexpr double kQuietSeconds = 0.5;            // silence that ends the tail

} // namespace

Renderer::Renderer(PluginHost& host, const RenderSettings& settings)
    : m_host(host), m_settings(settings) {
  prepare(m_single);
  prepare(m_double);
}

template <typename Sample>
void Renderer::prepare(Buffers<Sample>& buffers) const {
  const auto block = static_cast<std::size_t>(m_settings.blockFrames);
  buffers.memory.assign(4 * block, Sample{0});
  for (std::size_t i = 0; i < 2; ++i) {
    buffers.in[i] = buffers.memory.data() + i * block;
    buffers.out[i] = buffers.memory.data() + (2 + i) * block;
  }
}

template <typename Sample>
void Renderer::process(Buffers<Sample>& buffers, std::span<const double> in, std::span<double> out,
                       int frames) {
  const auto inputs = static_cast<std::size_t>(m_inputs);
  const auto outputs = static_cast<std::size_t>(m_settings.outputs);
  const auto count = static_cast<std::size_t>(frames);
  for (std::size_t channel = 0; channel < 2; ++channel)
    for (std::size_t i = 0; i < count; ++i)
      buffers.in[channel][i] =
          channel < inputs ? static_cast<Sample>(in[inputs * i + channel]) : Sample{0};
  const auto begin = std::chrono::steady_clock::now();
  m_host.process(buffers.in, buffers.out, frames);
  m_report.processingSeconds +=
      std::chrono::duration<double>(std::chrono::steady_clock::now() - begin).count();
  for (std::size_t i = 0; i < count; ++i)
    for (std::size_t channel = 0; channel < outputs; ++channel)
      out[outputs * i + channel] = static_cast<double>(buffers.out[channel][i]);
}

void Renderer::processBlock(std::span<const double> in, std::span<double> out, int frames) {
  if (m_settings.useDouble)
    process(m_double, in, out, frames);
  else
    process(m_single, in, out, frames);
}

// Lets the effect come to rest from being switched on: fade in, start its rotors.
void Renderer::settle() {
  const auto block = static_cast<std::size_t>(m_settings.blockFrames);
  const std::vector<double> silence(2 * block, 0.0);
  std::vector<double> discarded(2 * block);
  auto left = std::llround(m_settings.settleSeconds * m_report.rate);
  for (; left > 0; left -= m_settings.blockFrames) {
    throwIfInterrupted();
    processBlock(silence, discarded,
                 static_cast<int>(std::min<long long>(left, m_settings.blockFrames)));
  }
  m_report.processingSeconds = 0.0;
}

void Renderer::measure(std::span<const double> out) {
  for (const double sample : out) {
    m_report.peak = std::max(m_report.peak, std::abs(sample));
    m_report.meanSquare += sample * sample; // the sum until the render's end
  }
  m_report.frames += static_cast<long long>(out.size()) / m_settings.outputs;
}

bool Renderer::quiet(std::span<const double> out) {
  const bool loud =
      std::any_of(out.begin(), out.end(), [](double sample) { return std::abs(sample) > kQuiet; });
  m_quietFrames =
      loud ? 0 : m_quietFrames + static_cast<long long>(out.size()) / m_settings.outputs;
  return static_cast<double>(m_quietFrames) >= kQuietSeconds * m_report.rate;
}

RenderReport Renderer::render(AudioInput& input, AudioOutput& output, AutomationPlayer& automation,
                              MidiPlayer& midi, ProgressBar& progress) {
  m_report = {};
  m_report.rate = input.rate();
  m_inputs = input.channels();
  m_host.start(input.rate(), m_settings.blockFrames, m_inputs, m_settings.outputs);
  settle();

  const auto inputs = static_cast<std::size_t>(m_inputs);
  const auto outputs = static_cast<std::size_t>(m_settings.outputs);
  std::vector<double> in(inputs * static_cast<std::size_t>(m_settings.blockFrames));
  std::vector<double> out(outputs * static_cast<std::size_t>(m_settings.blockFrames));
  const auto tail = std::llround(m_settings.tailSeconds * input.rate());
  long long now = 0;
  long long end = -1; // frame after the input's last, once that is known
  while (end < 0 || now < end + tail) {
    throwIfInterrupted();
    int frames = m_settings.blockFrames;
    if (end >= 0) frames = static_cast<int>(std::min<long long>(frames, end + tail - now));
    frames = automation.advance(m_host, now, frames);
    frames = midi.advance(m_host, now, frames);
    const std::size_t wanted = inputs * static_cast<std::size_t>(frames);
    std::fill_n(in.begin(), wanted, 0.0);
    if (end < 0) {
      const int got = input.read(std::span(in).first(wanted));
      if (got < frames) {
        end = now + got;
        frames = static_cast<int>(std::min<long long>(frames, end + tail - now));
        if (frames == 0) break;
      }
    }
    const auto written = std::span(out).first(outputs * static_cast<std::size_t>(frames));
    processBlock(in, written, frames);
    measure(written);
    output.write(written);
    now += frames;
    if (end >= 0 && quiet(written)) break;
    progress.show(static_cast<double>(now) / static_cast<double>(std::max(1LL, input.frames())));
  }
  m_host.stop();
  if (m_report.frames > 0)
    m_report.meanSquare /= static_cast<double>(m_report.frames) * m_settings.outputs;
  return m_report;
}

} // namespace qlx::tools
