// SPDX-License-Identifier: ISC
#include "brezan/sound/PlayThrough.h"

#include "brezan/Interrupt.h"

#include <algorithm>
#include <array>
#include <cmath>

namespace qlx::tools {

namespace {

constexpr int kBlockFrames = 512;

} // namespace

std::vector<std::vector<double>> playThrough(PluginHost& host, std::span<const double> sound,
                                             double rate, const Moves& moves,
                                             double settleSeconds) {
  std::array<std::array<float, kBlockFrames>, 4> blocks{};
  float* in[2] = {blocks[0].data(), blocks[1].data()};
  float* out[2] = {blocks[2].data(), blocks[3].data()};
  host.start(rate, kBlockFrames, 2, 2);
  for (auto left = std::llround(settleSeconds * rate); left > 0; left -= kBlockFrames)
    host.process(in, out, static_cast<int>(std::min<long long>(left, kBlockFrames)));
  AutomationPlayer automation(moves.automation, rate);
  MidiPlayer midi(moves.midi, rate);
  std::vector<std::vector<double>> heard(2);
  for (std::size_t now = 0; now < sound.size();) {
    throwIfInterrupted();
    const auto frame = static_cast<long long>(now);
    auto frames = static_cast<int>(std::min<std::size_t>(kBlockFrames, sound.size() - now));
    frames = automation.advance(host, frame, frames);
    frames = midi.advance(host, frame, frames);
    for (int i = 0; i < frames; ++i)
      in[0][i] = in[1][i] = static_cast<float>(sound[now + static_cast<std::size_t>(i)]);
    host.process(in, out, frames);
    for (std::size_t c = 0; c < heard.size(); ++c)
      heard[c].insert(heard[c].end(), out[c], out[c] + frames);
    now += static_cast<std::size_t>(frames);
  }
  host.stop();
  return heard;
}

} // namespace qlx::tools
