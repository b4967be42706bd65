#pragma once

#include "engine/Acoustics.h"
#include "engine/Interpolation.h"
#include "engine/RotorMotion.h"

#include <array>
#include <span>

namespace qlx::engine {

/// Length of the lines in which rotors and their sound are remembered: 4096 engine samples, over 27
/// m of air.
inline constexpr int kTrackSize = 4096;
using SoundLine = MirroredRing<kTrackSize>;

/// A rotor as its models see it: the motion, the angles of the recent past (a ray that arrives now
/// left the mouth some time ago), and the clock by which what follows the angle slowly is updated.
/// All models of one rotor share it.
class RotorTrack {
 public:
  explicit RotorTrack(RotorMotion::Direction direction) noexcept : motion(direction) {}

  RotorMotion motion;

  /// `hz` engine rate, `factor` host samples per engine sample.
  void setSampleRate(double hz, int factor) noexcept;
  void clear() noexcept;

  /// Moves the rotor through the next n samples; their sound is to be written to the lines from
  /// writeIndex() on.
  void advance(int n) noexcept;

  /// Ends the stretch that advance began.
  void finish(int n) noexcept;

  /// Where sample j of the current stretch stands in the lines, not yet wrapped.
  int writeIndex(int j) const noexcept { return m_writeIndex + j; }

  /// The rotor's angle (turns) `delay` samples before sample j.
  double angleBefore(int j, double delay) const noexcept {
    return m_angles.at(static_cast<int>(m_writeIndex + j + kTrackSize - delay));
  }

  /// First sample at or after j at which slow followers are updated; may lie beyond the stretch.
  int nextUpdate(int j) const noexcept {
    return j + ((m_updateInterval - (m_counter + j)) & (m_updateInterval - 1));
  }

  /// Revolutions a sample, one entry a sample of the current stretch.
  std::span<const double> speeds(int n) const noexcept {
    return {m_speeds.data(), static_cast<std::size_t>(n)};
  }

  double sampleRate() const noexcept { return m_sampleRate; }
  double samplesPerMetre() const noexcept { return m_sampleRate * kInverseSpeedOfSound; }

 private:
  MirroredRing<kTrackSize> m_angles;
  RunBuffer m_speeds{};
  int m_writeIndex = 0;
  int m_counter = 0;
  int m_updateInterval = kUpdateInterval;
  double m_sampleRate = 44100.0;
};

/// Phase (radians) and sine of the source's movement along one ray, for each sample of the current
/// stretch. The ray left the mouth its distance ago; the short arc in which the mouth passes the
/// ray's direction takes half a period of the movement, the long way round the other half, so that
/// the sine is -1 where the mouth is nearest.
struct RayMovement {
  RunBuffer phase;
  RunBuffer sine;

  void trace(const RotorTrack& track, double distance, double angle, double signY, double halfWidth,
             int n) noexcept;
};

/// Place of a movement's phase in the tables over the mouth's angle, 0 .. 1.
inline double tablePlace(double phase) noexcept { return wrappedOnce(phase / kTwoPi + 0.25); }

} // namespace qlx::engine
