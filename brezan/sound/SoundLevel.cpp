// SPDX-License-Identifier: ISC
#include "brezan/sound/SoundLevel.h"

#include <algorithm>
#include <cmath>

namespace qlx::tools {

SoundLevel levelBetween(std::span<const std::vector<double>> channels, double rate,
                        double fromSeconds, double toSeconds) {
  const auto frame = [&](double seconds) {
    return std::min(static_cast<std::size_t>(std::max(0.0, seconds * rate)),
                    channels.front().size());
  };
  const std::size_t first = frame(fromSeconds);
  const std::size_t last = frame(toSeconds);
  SoundLevel level;
  double power = 0.0;
  for (const std::vector<double>& channel : channels)
    for (std::size_t i = first; i < last; ++i) {
      level.peak = std::max(level.peak, std::abs(channel[i]));
      power += channel[i] * channel[i];
    }
  const std::size_t count = channels.size() * (std::max(last, first) - first);
  if (count > 0) level.rms = std::sqrt(power / static_cast<double>(count));
  return level;
}

std::vector<Stretch> restsOf(std::span<const std::vector<double>> channels, double rate,
                             double threshold, double shortest) {
  constexpr double kStep = 0.02;
  const double end = static_cast<double>(channels.front().size()) / rate;
  std::vector<Stretch> rests;
  double from = 0.0;
  const auto close = [&](double to) {
    if (to - from >= shortest) rests.push_back({from, to});
  };
  for (int step = 0; step * kStep < end; ++step) {
    const double now = step * kStep;
    if (levelBetween(channels, rate, now, now + kStep).rms >= threshold) {
      close(now);
      from = now + kStep;
    }
  }
  close(end);
  return rests;
}

std::vector<std::vector<double>> readChannels(AudioInput& input) {
  const auto count = static_cast<std::size_t>(input.channels());
  std::vector<std::vector<double>> channels(count);
  std::vector<double> block(count * 4096);
  for (int got = input.read(block); got > 0; got = input.read(block))
    for (std::size_t i = 0; i < static_cast<std::size_t>(got); ++i)
      for (std::size_t c = 0; c < count; ++c) channels[c].push_back(block[count * i + c]);
  return channels;
}

} // namespace qlx::tools
