// SPDX-License-Identifier: ISC
#pragma once

#include <array>
#include <span>

namespace qlx::engine {

/// What a rotor's cabinet and its level law are set to; plain values of the audio thread. Units as
/// in Setting.
struct CabinetSettings {
  double amRadius = 0.18; ///< metres; circle on which the source moves, for the level
  double fmRadius = 0.18; ///< the same for the delay
  double attenuationExponent = 1.0;
  double attenuationDistance = 1.0;
  double attenuationFadeExponent = 0.5;
  double reflectionCoeff = 0.0;
  double reflectionLpfOctaves = 0.3333;
  double staticCutoffHz = 10000.0;
  double flipSign = 1.0;

  bool operator==(const CabinetSettings&) const = default;
};

/// Where a microphone stands: angle in turns (0 straight in front, -0.5 .. 0.5), distance from the
/// rotor's axis in metres.
struct MicrophonePosition {
  double angle = 0.0;
  double distance = 1.0;
};

struct Point {
  double x, y;
};

/// The microphone's position in the rotor's plane, metres; the front is at negative y.
Point planePosition(const MicrophonePosition& microphone) noexcept;

/// The cabinet's walls around the rotor axis, metres; the rotor stands off centre.
struct CabinetWalls {
  double sideA; ///< wall at x = -sideA
  double sideB; ///< wall at x = +sideB
  double back;

  explicit CabinetWalls(bool exchanged) noexcept
      : sideA(exchanged ? 0.43 : 0.24), sideB(exchanged ? 0.24 : 0.43), back(0.235) {}
};

/// An image of the source mirrored in the walls: its position and the signs by which the mirrored
/// rotor turns.
struct ImageSource {
  double x, y;
  double signX, signY;
};

/// Which wall's reflection a microphone hears beside the direct ray: 0 wall B, 1 neither, 2 wall A.
enum class MicrophoneRegion : unsigned char { SideB = 0, Front = 1, SideA = 2 };

/// +1 in front of the cabinet, -1 behind it (beyond a quarter turn).
double microphoneSide(const MicrophonePosition& microphone) noexcept;

MicrophoneRegion microphoneRegion(const MicrophonePosition& microphone,
                                  const CabinetWalls& walls) noexcept;

/// The paths from up to twelve images to one microphone, kept by field. Index 0 is the direct ray.
struct Rays {
  static constexpr int kMax = 12;
  int count = 0;
  std::array<double, kMax> distance{}; ///< metres
  std::array<double, kMax> angle{};    ///< turns
  std::array<double, kMax> signY{};
  std::array<double, kMax>
      halfWidth{}; ///< turns; half the arc in which the source passes the ray's direction

  /// Recomputes all fields for the given images.
  void rebuild(std::span<const ImageSource> images, const MicrophonePosition& microphone,
               double amRadius) noexcept;
};

/// Level over distance of a source on a circle: an inverse power near the rotor that fades to flat
/// beyond a distance, normalised to the direct ray's mean level.
class AttenuationLaw {
 public:
  static constexpr int kSize = 512; ///< one entry a centimetre
  static constexpr double kEntriesPerMetre = 100.0;
  /// Where the law begins: a microphone at this distance from the axis, metres, before a source
  /// that is nearest.
  static constexpr double kNearestDistance = 0.3;

  /// Computing a law costs as much as two blocks of sound, so it is done only where the cabinet's
  /// law has changed, and copied from `like` where that has it already.
  void rebuild(const CabinetSettings& cabinet, const Rays& rays,
               const AttenuationLaw& like) noexcept;

  /// Normalised level at `distance` metres from the centre of a circle of `amRadius`, where the
  /// source stands at `sine` (-1 nearest, +1 farthest) of its way.
  double level(double distance, double amRadius, double sine) const noexcept;

  /// The raw law at position d x 512, as the cross-talk paths read it.
  double rawAt(double d) const noexcept;

  /// The raw law as cubic pieces, one a centimetre: four coefficients each, from the constant up.
  /// `scale` normalises what is read.
  const double* pieces() const noexcept { return m_pieces[0].data(); }
  double scale() const noexcept { return m_norm; }

 private:
  /// What the raw law follows from, units as in CabinetSettings.
  struct Shape {
    double amRadius = 0.0; ///< never 0 in a cabinet
    double exponent = 0.0, distance = 0.0, fadeExponent = 0.0;
    bool operator==(const Shape&) const = default;
  };

  void compute(const Shape& shape) noexcept;
  void fitPieces() noexcept;

  Shape m_shape;
  std::array<double, kSize> m_table{};
  std::array<std::array<double, 4>, kSize - 1> m_pieces{};
  double m_norm = 1.0;
};

} // namespace qlx::engine
