// SPDX-License-Identifier: ISC
#pragma once

#include "brezan/plugin/Automation.h"
#include "brezan/plugin/MidiFile.h"

#include <span>
#include <vector>

namespace qlx::tools {

/// What moves while a sound is played through the effect, timed from the sound's first frame.
struct Moves {
  std::vector<AutomationMove> automation;
  std::vector<TimedMidi> midi;
};

/// Plays one channel through the effect from where it stands and returns its two channels, equally
/// long, in memory. `settleSeconds` of silence go before and are not returned.
std::vector<std::vector<double>> playThrough(PluginHost& host, std::span<const double> sound,
                                             double rate, const Moves& moves, double settleSeconds);

} // namespace qlx::tools
