#include "engine/RotorTrack.h"

#include <cmath>

namespace qlx::engine {

void RotorTrack::setSampleRate(double hz, int factor) noexcept {
  m_sampleRate = hz;
  m_updateInterval = kUpdateInterval / factor;
  m_counter = 0;
  motion.setSampleRate(hz);
}

void RotorTrack::clear() noexcept {
  motion.clear();
  m_angles.clear();
  m_writeIndex = 0;
  m_counter = 0;
}

void RotorTrack::advance(int n) noexcept {
  RunBuffer angles;
  const auto size = static_cast<std::size_t>(n);
  motion.advance({angles.data(), size}, {m_speeds.data(), size});
  for (int j = 0; j < n; ++j) m_angles.write(m_writeIndex + j, angles[static_cast<std::size_t>(j)]);
}

void RotorTrack::finish(int n) noexcept {
  m_writeIndex = (m_writeIndex + n) & (kTrackSize - 1);
  m_counter = (m_counter + n) & (kUpdateInterval - 1);
}

void RayMovement::trace(const RotorTrack& track, double distance, double angle, double signY,
                        double halfWidth, int n) noexcept {
  const double delay = distance * track.samplesPerMetre();
  const double nearRate = std::numbers::pi / (2.0 * halfWidth);
  const double farRate = std::numbers::pi / (1.0 - 2.0 * halfWidth);
  for (int j = 0; j < n; ++j) {
    const double x = wrappedOnce(track.angleBefore(j, delay) - angle * signY);
    double p;
    if (x <= halfWidth) {
      p = signY * (x - halfWidth) * nearRate;
    } else if (x >= 1.0 - halfWidth) {
      p = signY * (x - (1.0 - halfWidth)) * nearRate - std::numbers::pi;
    } else {
      p = signY * (x - halfWidth) * farRate;
    }
    const auto k = static_cast<std::size_t>(j);
    phase[k] = p;
    sine[k] = std::sin(p);
  }
}

} // namespace qlx::engine
