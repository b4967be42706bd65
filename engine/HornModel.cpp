#include "engine/HornModel.h"

#include "engine/FilterDesigns.h"
#include "engine/RayFilterTables.h"

#include <algorithm>
#include <cmath>

namespace qlx::engine {

namespace {

constexpr double kBodySaturationOffset = 0.03125;
constexpr double kOpenBackLoss = 0.50118723362; // -6 dB
constexpr double kReflectionEdgeHz = 20000.0;

/// Floor and ceiling echoes: extra path in metres.
constexpr double kZDelay1 = 0.07;
constexpr double kZDelay2 = 0.135;

/// How a ray gets its level: which of the ray gains, after how many bounces, and whether the open
/// back lets some of it out.
struct RayPath {
  unsigned char gain;
  unsigned char bounces;
  bool throughBack;
};
constexpr std::array<RayPath, 12> kPaths = {{{0, 0, false},
                                             {1, 1, true},
                                             {2, 2, true},
                                             {3, 2, true},
                                             {4, 3, true},
                                             {5, 3, true},
                                             {1, 1, false},
                                             {1, 1, false},
                                             {6, 4, false},
                                             {6, 4, false},
                                             {6, 5, false},
                                             {6, 5, false}}};
constexpr std::size_t kRightWallRay = 6;
constexpr std::size_t kLeftWallRay = 7;

} // namespace

std::array<ImageSource, 12> hornImages(const MicrophonePosition& microphone,
                                       const CabinetWalls& walls) noexcept {
  const double s = microphoneSide(microphone);
  const double a = s * walls.sideA, b = s * walls.sideB, h = s * walls.back;
  std::array<ImageSource, 12> images = {{{0, 0, 1, 1},
                                         {0, 2 * h, 1, -1},
                                         {2 * b, 2 * h, -1, -1},
                                         {-2 * a, 2 * h, -1, -1},
                                         {2 * a + 2 * b, 2 * h, 1, -1},
                                         {-2 * a - 2 * b, 2 * h, 1, -1},
                                         {2 * b, 0, -1, 1},
                                         {-2 * a, 0, -1, 1},
                                         {},
                                         {},
                                         {},
                                         {}}};
  switch (microphoneRegion(microphone, walls)) {
  case MicrophoneRegion::SideB:
    images[8] = {6 * b, 0, -1, -1};
    images[9] = {4 * b + 2 * a, 6 * h, -1, -1};
    images[10] = {4 * a + 6 * b, 0, -1, -1};
    images[11] = {4 * a + 6 * b, 10 * h, -1, -1};
    break;
  case MicrophoneRegion::Front:
    images[8] = {0, 6 * h, 1, -1};
    images[9] = {4 * b + 2 * a, 6 * h, -1, -1};
    images[10] = {-4 * a - 2 * b, 6 * h, 1, -1};
    images[11] = {0, 10 * h, 1, -1};
    break;
  case MicrophoneRegion::SideA:
    images[8] = {-6 * a, 0, -1, 1};
    images[9] = {-4 * a - 2 * b, 6 * h, -1, -1};
    images[10] = {-4 * a - 2 * b, 0, -1, 1};
    images[11] = {-6 * a - 4 * b, 10 * h, -1, -1};
    break;
  }
  return images;
}

HornModel::HornModel(const HornSettings& settings, const Recordings& recordings, int microphone)
    : m_settings(settings), m_noisePlayer(recordings, microphone) {
  for (std::size_t r = 0; r < kRayCount; ++r) {
    m_peak[r].init(m_sampleRate, Response::Peaking, kHornPeakHz[0], kHornPeakQ[0], kHornPeakDb[0]);
    m_shelf[r].init(m_sampleRate, Response::HighShelf, kHornShelfHz, kHornShelfQ, kHornShelfDb[0]);
    m_peak[r].setEnabled(true);
    m_shelf[r].setEnabled(true);
  }
  for (std::size_t i = 0; i < m_body.size(); ++i) {
    const FilterDesign& d = kHornBody[i];
    m_body[i].init(m_sampleRate, d.response, d.hz, d.q, d.db);
    m_body[i].setSaturationOffset(kBodySaturationOffset);
    m_body[i].setEnabled(d.enabled);
  }
}

void HornModel::setSampleRate(double hz) noexcept {
  m_sampleRate = std::max(hz, 11025.0);
  updateReflectionPoles();
  updateStaticPole();
  m_noisePlayer.setSampleRate(m_sampleRate);
}

void HornModel::updateReflectionPoles() noexcept {
  // Every bounce loses so many octaves of treble.
  for (std::size_t k = 0; k < kBounceCount; ++k) {
    const double octaves = -static_cast<double>(k) * m_settings.cabinet.reflectionLpfOctaves;
    m_bouncePole[k] = lowPassPole(kReflectionEdgeHz * std::exp2(octaves), m_sampleRate);
  }
}

void HornModel::updateStaticPole() noexcept {
  m_staticPole = settlingPole(m_settings.cabinet.staticCutoffHz, m_sampleRate);
}

void HornModel::clear() noexcept {
  m_raySum.clear();
  m_zIndex = 0;
  m_bounce = {};
  m_staticLowPass = {};
  for (std::size_t r = 0; r < kRayCount; ++r) {
    for (Biquad* filter : {&m_peak[r], &m_shelf[r]}) {
      filter->clearState();
      filter->setInstantUpdate(true);
    }
  }
  for (Biquad& section : m_body) {
    section.clearState();
    section.setInstantUpdate(true);
  }
  m_noisePlayer.clear();
}

void HornModel::resetFilters() noexcept {
  for (std::size_t i = 0; i < m_body.size(); ++i) {
    m_body[i].setSampleRate(m_sampleRate);
    m_body[i].setFrequencyAndQ(kHornBody[i].hz, kHornBody[i].q);
    m_body[i].setInstantUpdate(false);
  }
  for (std::size_t r = 0; r < kRayCount; ++r) {
    m_peak[r].setSampleRate(m_sampleRate);
    m_peak[r].setFrequencyQGain(kHornPeakHz[0], kHornPeakQ[0], kHornPeakDb[0]);
    m_peak[r].setInstantUpdate(false);
    m_shelf[r].setSampleRate(m_sampleRate);
    m_shelf[r].setFrequencyQGain(kHornShelfHz, kHornShelfQ, kHornShelfDb[0]);
    m_shelf[r].setInstantUpdate(false);
  }
  m_bounce = {};
  m_staticLowPass = {};
  m_noisePlayer.setSampleRate(m_sampleRate);
  m_noisePlayer.setMicDistance(m_microphone.distance);
}

void HornModel::setMicDistance(double metres) noexcept {
  m_microphone.distance = metres;
  m_noisePlayer.setMicDistance(metres);
}

void HornModel::rebuildGeometry() noexcept {
  const CabinetSettings& cabinet = m_settings.cabinet;
  const CabinetWalls walls(cabinet.flipSign < 0.0);
  m_region = microphoneRegion(m_microphone, walls);
  m_rays.rebuild(hornImages(m_microphone, walls), m_microphone, cabinet.amRadius);
  m_attenuation.rebuild(cabinet, m_rays);
  const bool leaks = m_region == MicrophoneRegion::Front && m_settings.openBackMode != 0 &&
                     cabinet.flipSign * microphoneSide(m_microphone) < 0.0;
  m_reflectionScale = leaks ? kOpenBackLoss : 1.0;
  // Nearer microphones are turned down less than the distance law alone would.
  const double nearness = (m_microphone.distance - 0.35) * 0.6060606060606061 + 0.1;
  m_outputGain = (1.3 - 0.5 * std::pow(std::max(nearness, 0.0), 0.75)) * 0.97723722095;
}

double HornModel::staticLevel() const noexcept {
  return std::max(m_attenuation.level(m_rays.distance[0], m_settings.cabinet.amRadius, 0.0),
                  m_settings.ampClip);
}

void HornModel::tuneRay(std::size_t ray, double phase) noexcept {
  const double v = 1.0 - tablePlace(phase);
  m_peak[ray].setFrequencyQGain(cyclicTableRead(kHornPeakHz, 36.0 * v),
                                cyclicTableRead(kHornPeakQ, 36.0 * v),
                                cyclicTableRead(kHornPeakDb, 36.0 * v));
  m_shelf[ray].setFrequencyQGain(kHornShelfHz, kHornShelfQ,
                                 cyclicTableRead(kHornShelfDb, 18.0 * v));
}

void HornModel::filterRay(const RotorTrack& track, std::size_t ray, const RayMovement& movement,
                          int n, RunBuffer& run) noexcept {
  for (int j = 0; j < n;) {
    if (track.nextUpdate(j) == j) tuneRay(ray, movement.phase[static_cast<std::size_t>(j)]);
    const int end = std::min(n, track.nextUpdate(j + 1));
    const std::span<double> part(run.data() + j, static_cast<std::size_t>(end - j));
    m_peak[ray].processGlide(part);
    m_shelf[ray].processGlide(part);
    j = end;
  }
}

void HornModel::addRay(const RotorTrack& track, const SoundLine& line, int n, std::size_t ray,
                       RunBuffer& sum) noexcept {
  const CabinetSettings& cabinet = m_settings.cabinet;
  const double distance = m_rays.distance[ray];
  RayMovement movement;
  movement.trace(track, distance, m_rays.angle[ray], m_rays.signY[ray], m_rays.halfWidth[ray], n);

  RunBuffer run;
  for (int j = 0; j < n; ++j) {
    const auto k = static_cast<std::size_t>(j);
    const double delay = (distance + cabinet.fmRadius * movement.sine[k]) * track.samplesPerMetre();
    run[k] = cubicRingRead(track.writeIndex(j) - delay, line.data(), kTrackSize);
  }
  filterRay(track, ray, movement, n, run);

  const RayPath& path = kPaths[ray];
  const double gain = std::pow(cabinet.reflectionCoeff, path.bounces) *
                      (path.throughBack ? m_reflectionScale : 1.0) * m_settings.rayGain[path.gain];
  for (int j = 0; j < n; ++j) {
    const auto k = static_cast<std::size_t>(j);
    const double level = std::max(m_attenuation.level(distance, cabinet.amRadius, movement.sine[k]),
                                  m_settings.ampClip);
    double y = run[k] * level * gain;
    if (path.bounces > 0) y = m_bounce[ray].next(y, m_bouncePole[path.bounces - 1U]);
    sum[k] += y;
  }
}

void HornModel::addStaticRay(const RotorTrack& track, const SoundLine& line, int n,
                             RunBuffer& sum) noexcept {
  const double delay = m_rays.distance[0] * track.samplesPerMetre();
  const double gain = m_settings.staticGain * staticLevel();
  for (int j = 0; j < n; ++j) {
    const double x = cubicRingRead(track.writeIndex(j) - delay, line.data(), kTrackSize);
    sum[static_cast<std::size_t>(j)] += m_staticLowPass.next(x, m_staticPole) * gain;
  }
}

void HornModel::addZAxisEchoes(int n, RunBuffer& run) noexcept {
  for (int j = 0; j < n; ++j) m_raySum.write(m_zIndex + j, run[static_cast<std::size_t>(j)]);
  const double reflection = m_settings.cabinet.reflectionCoeff;
  const double gain = m_settings.zAxisGain * reflection * reflection;
  for (const double metres : {kZDelay1, kZDelay2}) {
    const double delay = metres * m_sampleRate / kSpeedOfSound;
    const int whole = static_cast<int>(std::ceil(delay));
    const double fraction = whole - delay; // towards the newer sample
    for (int j = 0; j < n; ++j) {
      const int i = m_zIndex + j - whole;
      run[static_cast<std::size_t>(j)] +=
          gain * ((1.0 - fraction) * m_raySum.at(i) + fraction * m_raySum.at(i + 1));
    }
  }
  m_zIndex = (m_zIndex + n) & (kZRingSize - 1);
}

void HornModel::process(const RotorTrack& track, const SoundLine& line, int n, RunBuffer& out,
                        RunBuffer& noise) noexcept {
  const auto size = static_cast<std::size_t>(n);
  std::fill_n(out.begin(), n, 0.0);
  for (std::size_t ray = 0; ray < kRayCount; ++ray) {
    const bool heard = (ray != kRightWallRay || m_region == MicrophoneRegion::SideB) &&
                       (ray != kLeftWallRay || m_region == MicrophoneRegion::SideA);
    if (heard) addRay(track, line, n, ray, out);
  }
  addStaticRay(track, line, n, out);
  addZAxisEchoes(n, out);
  for (Biquad& section : m_body) section.processFixed({out.data(), size});
  for (std::size_t k = 0; k < size; ++k) out[k] *= m_outputGain;
  m_noisePlayer.process(track.speeds(n), m_microphone.angle, staticLevel() * m_settings.noiseLevel,
                        {noise.data(), size});
}

} // namespace qlx::engine
