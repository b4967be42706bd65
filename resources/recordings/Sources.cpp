// SPDX-License-Identifier: ISC
#include "resources/recordings/Sources.h"

#include "resources/recordings/ExactMath.h"
#include "resources/recordings/Random.h"

#include <algorithm>
#include <cmath>

namespace qlx::recordings {

namespace {

/// One value a turn, joined by smooth curves that close with the loop.
class TurnByTurn {
 public:
  TurnByTurn(int turns, double greatest, std::uint64_t seed)
      : m_values(static_cast<std::size_t>(turns)) {
    Random random(seed);
    for (double& value : m_values) value = random.symmetric() * greatest;
    const double mean = meanOf(m_values);
    for (double& value : m_values) value -= mean;
  }

  [[nodiscard]] double at(double turns) const {
    const double whole = std::floor(turns);
    const double t = turns - whole;
    const auto turn = static_cast<std::ptrdiff_t>(whole);
    const double before = value(turn - 1);
    const double from = value(turn);
    const double to = value(turn + 1);
    const double after = value(turn + 2);
    // The cubic through from and to whose slopes are those of the neighbours.
    return from + 0.5 * t *
                      (to - before +
                       t * (2.0 * before - 5.0 * from + 4.0 * to - after +
                            t * (3.0 * (from - to) + after - before)));
  }

 private:
  [[nodiscard]] double value(std::ptrdiff_t turn) const {
    const auto count = static_cast<std::ptrdiff_t>(m_values.size());
    return m_values[static_cast<std::size_t>(((turn % count) + count) % count)];
  }

  Signal m_values;
};

Signal band(const Signal& input, const Band& band) {
  Signal output = filtered(input, Response::bandPass, band.hz, band.q);
  setRms(output, gainOfDb(band.db));
  return output;
}

} // namespace

double Rotation::periodsOf(double hz) const {
  return std::max(1.0, std::floor(hz * turns / turnsPerSecond + 0.5));
}

double Rotation::angleAt(std::size_t sample) const {
  return static_cast<double>(sample) * turns / static_cast<double>(length);
}

Signal tones(const Rotation& rotation, std::span<const Partial> partials, Flutter flutter,
             std::uint64_t seed) {
  Random random(seed);
  Signal sum(rotation.length);
  const double flutterPeriods = rotation.periodsOf(flutter.hz);
  for (const Partial& partial : partials) {
    const double periods = rotation.periodsOf(partial.hz);
    const double gain = gainOfDb(partial.db);
    const double start = random.symmetric();
    const double flutterStart = random.symmetric();
    for (std::size_t i = 0; i < sum.size(); ++i) {
      const double place = static_cast<double>(i) / static_cast<double>(rotation.length);
      const double level = 1.0 + flutter.depth * sineOfTurns(flutterPeriods * place + flutterStart);
      sum[i] += gain * level * sineOfTurns(periods * place + start);
    }
  }
  setRms(sum, 1.0);
  return sum;
}

Signal noiseBands(const Rotation& rotation, std::span<const Band> bands, std::uint64_t seed) {
  const Signal white = whiteNoise(rotation.length, seed);
  Signal sum(rotation.length);
  for (const Band& one : bands) mix(sum, band(white, one), 1.0);
  setRms(sum, 1.0);
  return sum;
}

Signal whoosh(const Rotation& rotation, std::span<const SweptBand> bands, double facing,
              Unevenness unevenness, std::uint64_t seed) {
  Signal sum(rotation.length);
  const TurnByTurn lateness(rotation.turns, unevenness.turns, seed);
  for (const SweptBand& swept : bands) {
    ++seed;
    const TurnByTurn levelDb(rotation.turns, unevenness.levelDb, seed);
    Signal air = band(whiteNoise(rotation.length, seed), swept.band);
    const double behind = gainOfDb(swept.floorDb);
    for (std::size_t i = 0; i < air.size(); ++i) {
      const double turns = rotation.angleAt(i) - facing;
      const double towards = 0.5 + 0.5 * cosineOfTurns(turns - lateness.at(turns));
      double beam = 1.0;
      for (int power = 0; power < swept.beaming; ++power) beam *= towards;
      air[i] *= (behind + (1.0 - behind) * beam) * gainOfDb(levelDb.at(turns));
    }
    mix(sum, air, 1.0);
  }
  setRms(sum, 1.0);
  return sum;
}

Signal beltSlaps(const Rotation& rotation, int rounds, std::span<const Band> slapColour,
                 std::uint64_t seed) {
  // The joint is flexible and the belt swings, so no two slaps are equally hard or quite in time.
  constexpr double kHardness = 0.35;
  constexpr double kLateness = 0.04; // of a round
  Random random(seed);
  Signal impulses(rotation.length);
  for (int round = 0; round < rounds; ++round) {
    const double place = (round + 0.5 + kLateness * random.symmetric()) / rounds;
    const auto sample = static_cast<std::size_t>(place * static_cast<double>(rotation.length));
    impulses[sample] += 1.0 + kHardness * random.symmetric();
  }
  Signal sum(rotation.length);
  for (const Band& one : slapColour) mix(sum, band(impulses, one), 1.0);
  setRms(sum, 1.0);
  return sum;
}

Signal throughWood(const Signal& input, std::span<const Mode> modes, Start start) {
  Signal sum(input.size());
  for (const Mode& mode : modes) {
    mix(sum, filtered(input, Response::bandPass, mode.hz, mode.q, start), gainOfDb(mode.db));
  }
  setRms(sum, 1.0);
  return sum;
}

} // namespace qlx::recordings
