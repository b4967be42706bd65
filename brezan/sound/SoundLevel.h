// SPDX-License-Identifier: ISC
#pragma once

#include "brezan/sound/AudioFile.h"

#include <span>
#include <vector>

namespace qlx::tools {

/// Linear level of a stretch of sound, all channels together.
struct SoundLevel {
  double peak = 0.0;
  double rms = 0.0;
};

/// Channels of equal length; what lies outside the sound is left out.
SoundLevel levelBetween(std::span<const std::vector<double>> channels, double rate,
                        double fromSeconds, double toSeconds);

struct Stretch {
  double from; ///< seconds
  double to;
};

/// Stretches of at least `shortest` seconds in which a sound's level stays below `threshold`
/// (linear), to within a fiftieth of a second.
std::vector<Stretch> restsOf(std::span<const std::vector<double>> channels, double rate,
                             double threshold, double shortest);

/// The rest of a sound file, channel by channel.
std::vector<std::vector<double>> readChannels(AudioInput& input);

} // namespace qlx::tools
