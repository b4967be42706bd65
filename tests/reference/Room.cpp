// SPDX-License-Identifier: ISC
#include "tests/reference/Room.h"

#include "tests/reference/Tables.h"

#include <algorithm>
#include <cmath>

namespace qlx::reference {

void Room::computeTaps(double engineRate) {
  double longest = 0.0;
  for (std::size_t i = 0; i < 12; ++i)
    longest = std::max({longest, size * virtualSize * kRoomCrossA[i] + lrDelay,
                        size * virtualSize * kRoomCrossB[i] + lrDelay});
  const double dbPerMetre = -20.0 / longest;
  auto set = [&](Tap& tap, double path, double cutoff) {
    const double metres = path * size, samples = metres * engineRate * kInverseSpeedOfSound;
    tap.gain = std::pow(10.0, metres * dbPerMetre * 0.05);
    tap.delay = int(samples);
    tap.fraction = float(samples - std::trunc(samples));
    tap.pole = std::exp(-kTwoPi * std::clamp(cutoff * mainCutoffHz, 20.0, 20000.0) / engineRate);
  };
  for (std::size_t i = 0; i < 12; ++i) {
    set(left.taps[i], kRoomLeft[i], kRoomCutoffLeft[i]);
    set(right.taps[i], kRoomRight[i], kRoomCutoffRight[i]);
  }
}

double Room::Side::process(double send) {
  ring.write(send);
  double sum = 0.0;
  for (Tap& t : taps) {
    const double fraction = double(t.fraction);
    const std::size_t at = (ring.position + ring.data.size() - std::size_t(t.delay)) & 65535;
    const double v =
        ((1.0 - fraction) * ring.data[at] + fraction * ring.data[(at + 1) & 65535]) * t.gain;
    onePole(t.state, v, t.pole);
    sum += t.state;
  }
  ring.advance();
  return sum;
}

void Room::Side::clear() {
  ring.clear();
  for (Tap& t : taps) t.state = 0.0;
}

} // namespace qlx::reference
