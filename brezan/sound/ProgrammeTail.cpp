// SPDX-License-Identifier: ISC
#include "brezan/sound/ProgrammeTail.h"

#include <algorithm>
#include <cmath>

namespace qlx::tools {

namespace {

constexpr double kHistorySeconds = 3.0; // more than the cabinet and its room sound on
constexpr double kSettleSeconds = 1.0;  // for the effect to fade in
constexpr const char* kNoiseLevel = "Mech";

// What the host's own state leaves out, moves by MIDI for example, is copied value by value; twice,
// because some values bring others with them.
void copySettings(PluginHost& from, PluginHost& to) {
  to.setState(from.state());
  for (int pass = 0; pass < 2; ++pass)
    for (int i = 0; i < from.parameterCount(); ++i)
      if (to.value(i) != from.value(i)) to.setValue(i, from.value(i));
  for (int i = 0; i < from.parameterCount(); ++i)
    if (to.parameter(i).name == kNoiseLevel) to.setValue(i, 0.0F);
}

} // namespace

ProgrammeTail::ProgrammeTail(int blockFrames, bool useDouble, double rate, int inputs, int outputs)
    : m_block(blockFrames), m_useDouble(useDouble), m_rate(rate), m_inputs(inputs),
      m_outputs(outputs), m_silence(static_cast<std::size_t>(inputs * blockFrames), 0.0),
      m_out(static_cast<std::size_t>(outputs * blockFrames)),
      m_quietFrames(std::llround(kQuietSeconds * rate)) {}

void ProgrammeTail::note(std::span<const double> in) {
  m_last.insert(m_last.end(), in.begin(), in.end());
  const auto kept = static_cast<std::size_t>(std::llround(kHistorySeconds * m_rate) * m_inputs);
  if (m_last.size() > 2 * kept)
    m_last.erase(m_last.begin(), m_last.end() - static_cast<std::ptrdiff_t>(kept));
}

void ProgrammeTail::begin(PluginHost& host) {
  if (m_last.empty()) return;
  m_twin.emplace(host.file());
  copySettings(host, *m_twin);
  m_blocks.emplace(*m_twin, m_block, m_useDouble);
  m_blocks->start(m_rate, m_inputs, m_outputs, kSettleSeconds);
  const std::span<const double> last(m_last);
  const auto block = m_silence.size();
  for (std::size_t at = 0; at < last.size(); at += block) {
    const auto part = last.subspan(at, std::min(block, last.size() - at));
    play(part, static_cast<int>(part.size()) / m_inputs);
  }
}

void ProgrammeTail::advance(int frames) {
  if (m_blocks) play(m_silence, frames);
}

void ProgrammeTail::play(std::span<const double> in, int frames) {
  m_blocks->process(in, m_out, frames);
  const auto count = static_cast<std::size_t>(frames) * static_cast<std::size_t>(m_outputs);
  const bool loud = std::any_of(m_out.begin(), m_out.begin() + static_cast<std::ptrdiff_t>(count),
                                [](double sample) { return std::abs(sample) > kQuiet; });
  m_quietFrames = loud ? 0 : m_quietFrames + frames;
}

} // namespace qlx::tools
