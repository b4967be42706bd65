#pragma once

#include "engine/Acoustics.h"
#include "engine/CabinetGeometry.h"
#include "engine/RotorTrack.h"

#include <array>
#include <cmath>

namespace qlx::engine {

/// A ray of the reduced models, which feed the cross-talk paths: a single low-pass over the mouth's
/// angle instead of the full filters, its pole following the angle within 5 ms.
class ReducedRay {
 public:
  void clear() noexcept { *this = {}; }

  /// What all rays of a reduced model share while they work on a stretch.
  struct Context {
    const RotorTrack& track;
    const SoundLine& line;
    const CabinetSettings& cabinet;
    const Rays& rays;
    const AttenuationLaw& attenuation;
    double micDistance; ///< metres
    double polePole;    ///< of the poles' smoothing
    int n;
  };

  /// Adds gain x the ray to `sum`; `table` holds the cut-off (Hz) over the mouth's angle, read at
  /// place(phase). A bounce pole above 0 dulls the result once more.
  template <std::size_t N, class Place>
  void add(const Context& c, std::size_t ray, const std::array<double, N>& table, Place place,
           double gain, double bouncePole, RunBuffer& sum) noexcept {
    RayMovement movement;
    movement.trace(c.track, c.rays.distance[ray], c.rays.angle[ray], c.rays.signY[ray],
                   c.rays.halfWidth[ray], c.n);
    const double distance = c.rays.distance[ray];
    const double path = distance - c.micDistance + 2.0 * c.cabinet.fmRadius;
    for (int j = 0; j < c.n; ++j) {
      const auto k = static_cast<std::size_t>(j);
      if (c.track.nextUpdate(j) == j) {
        const double hz = cyclicTableRead(table, (N - 1) * place(movement.phase[k]));
        m_wantedPole = settlingPole(hz, c.track.sampleRate());
      }
      m_pole = (m_pole - m_wantedPole) * c.polePole + m_wantedPole;
      const double sine = movement.sine[k];
      const double delay = (c.cabinet.fmRadius * sine + path) * c.track.samplesPerMetre();
      const double x = cubicRingRead(c.track.writeIndex(j) - delay, c.line.data(), kTrackSize);
      double y = m_lowPass.next(x, m_pole) *
                 c.attenuation.level(distance, c.cabinet.amRadius, sine) * gain;
      if (bouncePole > 0.0) y = m_bounce.next(y, bouncePole);
      sum[k] += y;
    }
  }

 private:
  OnePole m_lowPass;
  OnePole m_bounce;
  double m_pole = 0.0;
  double m_wantedPole = 0.0;
};

/// Time constant of the reduced rays' pole smoothing.
inline constexpr double kReducedPoleSeconds = 0.005;

} // namespace qlx::engine
