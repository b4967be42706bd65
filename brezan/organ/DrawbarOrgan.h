// SPDX-License-Identifier: ISC
#pragma once

#include <array>
#include <cstdint>
#include <span>
#include <vector>

namespace qlx::tools {

enum class Manual { Upper, Lower, Pedal };

/// A key held down. Keys are counted from 0 at the left end: 61 on a manual, 25 on the pedal.
struct OrganKey {
  double seconds;
  double length; ///< seconds
  Manual manual;
  int key;
};

/// Drawbars 0..8 of a manual from `seconds` on, in the order 16', 5 1/3', 8', 4', 2 2/3', 2',
/// 1 3/5', 1 1/3', 1'. The pedal uses 16' and 8'.
struct OrganRegistration {
  double seconds;
  Manual manual;
  std::array<int, 9> drawbars;
  bool percussion; ///< upper manual: third harmonic, soft, fast decay
};

/// The swell pedal: 0 closed, 1 open, straight lines between the points, which are in order.
struct SwellPoint {
  double seconds;
  double opening;
};

struct OrganScore {
  std::vector<OrganKey> keys;
  std::vector<OrganRegistration> registrations; ///< in the order of time
  std::vector<SwellPoint> swell;
  double seconds; ///< length of the whole
};

/// Drawbar levels are 3 dB apart; 8 is 1, 0 is silent.
double drawbarGain(int drawbar);
/// Tone wheel 1..91 that a key sounds on drawbar 0..8. Where the generator ends, the octave above
/// or below is used again (foldback).
int drawbarWheel(Manual manual, int key, int drawbar);

/// Plays a score on a tone wheel organ and returns one channel whose peak is `peak`. The same
/// score gives the same samples.
std::vector<double> playOrgan(const OrganScore& score, double rate, double peak);

} // namespace qlx::tools
