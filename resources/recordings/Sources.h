// SPDX-License-Identifier: ISC
#pragma once

#include "resources/recordings/Signal.h"

#include <cstddef>
#include <cstdint>
#include <span>

namespace qlx::recordings {

// What makes sound in the machine. Every function returns a seamless loop of unit level (root mean
// square 1, no mean) as long as the rotation that it is given.

/// One loop of a rotor that turns evenly.
struct Rotation {
  std::size_t length;    ///< samples
  int turns;             ///< whole turns in the loop
  double turnsPerSecond; ///< speed at which the loop is usually played

  /// Whole number of periods in the loop for a tone that is to be hz when the loop is played at its
  /// usual speed. The mains don't follow the rotor, so this is where their pitch is put right.
  [[nodiscard]] double periodsOf(double hz) const;

  /// Angle in turns at a sample.
  [[nodiscard]] double angleAt(std::size_t sample) const;
};

/// A tone of a machine part.
struct Partial {
  double hz; ///< at the usual speed
  double db; ///< against the other partials
};

/// Steady tones whose level flutters by the depth (0 .. 1) at flutterHz.
struct Flutter {
  double hz;
  double depth;
};
Signal tones(const Rotation& rotation, std::span<const Partial> partials, Flutter flutter,
             std::uint64_t seed);

/// A band of noise.
struct Band {
  double hz;
  double q;
  double db; ///< against the other bands
};
Signal noiseBands(const Rotation& rotation, std::span<const Band> bands, std::uint64_t seed);

/// A band of air noise as an opening sweeps it round. The opening throws high frequencies forward
/// in a beam and low ones all round.
struct SweptBand {
  Band band;
  int beaming;    ///< power of the (1 + cos) / 2 directivity, 0 (all round) and up
  double floorDb; ///< level from behind, against the level in front
};

/// How much one turn differs from the next.
struct Unevenness {
  double levelDb; ///< greatest difference of one band's swell from the mean
  double turns;   ///< greatest difference of one swell's time from its place
};

/// The opening points at the listener at each whole number of turns plus facing.
Signal whoosh(const Rotation& rotation, std::span<const SweptBand> bands, double facing,
              Unevenness unevenness, std::uint64_t seed);

/// The belt's joint running over the pulley, a slap each time, so many times in the loop.
Signal beltSlaps(const Rotation& rotation, int rounds, std::span<const Band> slapColour,
                 std::uint64_t seed);

/// What the panels of the wooden cabinet make of a sound: the sum of their resonances.
struct Mode {
  double hz;
  double q;
  double db; ///< against the other modes
};
Signal throughWood(const Signal& input, std::span<const Mode> modes, Start start);

} // namespace qlx::recordings
