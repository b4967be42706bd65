// SPDX-License-Identifier: ISC
#pragma once

#include <complex>
#include <cstddef>
#include <span>
#include <vector>

namespace qlx::tools {

/// Steady tones that show how a rotor turns: the turning mouth gives each a swing of level and
/// pitch that is the same turn after turn.
struct PilotTones {
  std::span<const double> hz;
  double windowSeconds; ///< of the analysis; its reciprocal divides the tones' frequencies
  double speedSeconds;  ///< over which speeds are averaged
};

/// Tones that only the horn sends out, and tones that the drum turns with.
extern const PilotTones kHornPilot;
extern const PilotTones kDrumPilot;

/// The tones together, equally loud, `peak` at most.
std::vector<double> pilotSound(const PilotTones& tones, double rate, double seconds, double peak);

/// A rotor's angle over time, found from what its sound does to pilot tones. The picture of one
/// turn is learnt while the rotor turns evenly; afterwards every moment is looked up in it, which
/// works while the rotor speeds up, slows down and stands, too.
class RotorTrace {
 public:
  static constexpr double kStepSeconds = 0.004;
  static constexpr double kHighestSpeed = 12.0; ///< revolutions a second that can be followed

  /// `channels` (one or two, equally long) carry the tones and are even from `from` to `to`
  /// seconds, over two turns at least. Throws std::runtime_error when no turn can be recognised
  /// there.
  RotorTrace(std::span<const std::vector<double>> channels, double rate, const PilotTones& tones,
             double from, double to);

  /// Turns since an arbitrary one, never falling, at a time within the sound. Right to a few
  /// degrees plus the travel during the sound's few milliseconds from the mouth to the microphones.
  double turns(double seconds) const;

  /// Revolutions a second, mean over the tones' speedSeconds around the time.
  double speed(double seconds) const;

  double seconds() const { return static_cast<double>(m_turns.size()) * kStepSeconds; }

 private:
  using View = std::vector<std::complex<double>>; ///< every tone at every channel, at one moment

  double m_speedSeconds;
  std::vector<View> m_views; ///< one a step
  std::vector<View> m_turn;  ///< the picture of a turn
  std::vector<double> m_turns;

  View viewAt(double step) const;
  double evenPeriod(std::size_t first, std::size_t count) const;
  void learn(std::size_t first, std::size_t count);
  void follow();
};

} // namespace qlx::tools
