#include "engine/ReducedHornModel.h"

#include "engine/FilterDesigns.h"
#include "engine/RayFilterTables.h"

#include <algorithm>
#include <cmath>

namespace qlx::engine {

namespace {

/// Rays of hornImages that the reduced form keeps.
enum ReducedRayIndex : std::size_t { kDirect = 0, kBackWall = 1, kRightWall = 6, kLeftWall = 7 };

constexpr double kReflectionEdgeHz = 20000.0;

double hornPlace(double phase) { return 1.0 - tablePlace(phase); }

} // namespace

ReducedHornModel::ReducedHornModel(const HornSettings& settings) : m_settings(settings) {
  for (std::size_t i = 0; i < m_body.size(); ++i) {
    const FilterDesign& d = kReducedHornBody[i];
    m_body[i].init(m_sampleRate, d.response, d.hz, d.q, d.db);
    m_body[i].setEnabled(d.enabled);
  }
}

void ReducedHornModel::setSampleRate(double hz) noexcept {
  m_sampleRate = std::max(hz, 11025.0);
  m_polePole = std::exp(-1.0 / (m_sampleRate * kReducedPoleSeconds));
  updateStaticPole();
  m_bouncePole = lowPassPole(kReflectionEdgeHz, m_sampleRate);
}

void ReducedHornModel::updateStaticPole() noexcept {
  m_staticPole = settlingPole(m_settings.cabinet.staticCutoffHz, m_sampleRate);
}

void ReducedHornModel::clear() noexcept {
  for (ReducedRay* ray : {&m_direct, &m_back, &m_side}) ray->clear();
  m_staticLowPass = {};
  for (Biquad& section : m_body) {
    section.clearState();
    section.setInstantUpdate(true);
  }
}

void ReducedHornModel::resetFilters() noexcept {
  for (std::size_t i = 0; i < m_body.size(); ++i) {
    m_body[i].setSampleRate(m_sampleRate);
    m_body[i].setFrequencyAndQ(kReducedHornBody[i].hz, kReducedHornBody[i].q);
    m_body[i].setInstantUpdate(false);
  }
  for (ReducedRay* ray : {&m_direct, &m_back, &m_side}) ray->clear();
  m_staticLowPass = {};
}

void ReducedHornModel::rebuildGeometry() noexcept {
  const CabinetWalls walls(m_settings.cabinet.flipSign < 0.0);
  m_region = microphoneRegion(m_microphone, walls);
  m_rays.rebuild(hornImages(m_microphone, walls), m_microphone, m_settings.cabinet.amRadius);
  m_attenuation.rebuild(m_settings.cabinet, m_rays);
}

void ReducedHornModel::process(const RotorTrack& track, const SoundLine& line, int n,
                               RunBuffer& out) noexcept {
  const CabinetSettings& cabinet = m_settings.cabinet;
  const ReducedRay::Context context{
      track, line, cabinet, m_rays, m_attenuation, m_microphone.distance, m_polePole, n};
  const double reflected = cabinet.reflectionCoeff * m_settings.rayGain[1];
  std::fill_n(out.begin(), n, 0.0);
  m_direct.add(context, kDirect, kReducedHornHz, hornPlace, m_settings.rayGain[0], 0.0, out);
  m_back.add(context, kBackWall, kReducedHornHz, hornPlace, reflected, m_bouncePole, out);
  if (m_region != MicrophoneRegion::Front) {
    const auto wall = m_region == MicrophoneRegion::SideB ? kRightWall : kLeftWall;
    m_side.add(context, wall, kReducedHornHz, hornPlace, reflected, m_bouncePole, out);
  }

  const double distance = m_rays.distance[kDirect];
  const double delay =
      (distance - (m_microphone.distance - cabinet.fmRadius)) * track.samplesPerMetre();
  const double gain = m_attenuation.level(distance, cabinet.amRadius, 0.0) * m_settings.staticGain;
  for (int j = 0; j < n; ++j) {
    const double x = cubicRingRead(track.writeIndex(j) - delay, line.data(), kTrackSize);
    out[static_cast<std::size_t>(j)] += m_staticLowPass.next(x, m_staticPole) * gain;
  }
  for (Biquad& section : m_body) section.processFixed({out.data(), static_cast<std::size_t>(n)});
}

} // namespace qlx::engine
