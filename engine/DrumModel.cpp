#include "engine/DrumModel.h"

#include "engine/FilterDesigns.h"
#include "engine/RayFilterTables.h"

#include <algorithm>
#include <cmath>

namespace qlx::engine {

namespace {

constexpr double kReflectionEdgeHz = 20000.0;

/// The scoop's mouth comes no nearer to a ray than this share of its circle.
constexpr double kNearestSine = -0.7;

constexpr double kPreFilterSaturationOffset = 0.03125;
constexpr std::array<FilterDesign, 4> kPreFilter = {{
    {Response::LowPass, 1170, 0.93, 0},
    {Response::Peaking, 252, 0.71, 7},
    {Response::HighPass, 90, 1.0, 0},
    {Response::LowShelf, 200, 0.35, 3},
}};

enum DrumRay : std::size_t { kDirect, kWallB, kWallA, kBack, kBackAndB, kBackAndA };

struct RayPath {
  unsigned char gain;
  unsigned char bounces;
};
constexpr std::array<RayPath, 6> kPaths = {{{0, 0}, {1, 1}, {1, 1}, {1, 1}, {2, 2}, {3, 2}}};

} // namespace

CabinetWalls drumWalls(const CabinetSettings& cabinet) noexcept {
  return CabinetWalls(cabinet.flipSign <= 0.0);
}

std::array<ImageSource, 6> drumImages(const MicrophonePosition& microphone,
                                      const CabinetWalls& walls) noexcept {
  const double s = microphoneSide(microphone);
  const double a = s * walls.sideA, b = s * walls.sideB, h = s * walls.back;
  return {{{0, 0, 1, 1},
           {2 * b, 0, -1, 1},
           {-2 * a, 0, -1, 1},
           {0, 2 * h, 1, -1},
           {2 * b, 2 * h, -1, -1},
           {-2 * a, 2 * h, -1, -1}}};
}

DrumPreFilter::DrumPreFilter() {
  for (std::size_t i = 0; i < m_sections.size(); ++i) {
    const FilterDesign& d = kPreFilter[i];
    m_sections[i].init(44100.0, d.response, d.hz, d.q, d.db);
    m_sections[i].setSaturationOffset(kPreFilterSaturationOffset);
    m_sections[i].setEnabled(true);
  }
}

void DrumPreFilter::clear() noexcept {
  for (Biquad& section : m_sections) {
    section.clearState();
    section.setInstantUpdate(true);
  }
}

void DrumPreFilter::setSampleRate(double hz) noexcept {
  for (std::size_t i = 0; i < m_sections.size(); ++i) {
    m_sections[i].setSampleRate(hz);
    m_sections[i].setFrequencyAndQ(kPreFilter[i].hz, kPreFilter[i].q);
    m_sections[i].setInstantUpdate(false);
  }
}

void DrumPreFilter::setSaturation(double drive) noexcept {
  for (Biquad& section : m_sections) section.setSaturation(drive);
}

void DrumPreFilter::process(std::span<double> run) noexcept {
  for (Biquad& section : m_sections) section.processFixedSaturating(run);
}

DrumModel::DrumModel(const DrumSettings& settings, const Recordings& recordings)
    : m_settings(settings), m_noisePlayer(recordings) {
  for (Biquad& filter : m_lowPass) {
    filter.init(m_sampleRate, Response::LowPass, kDrumLowPassHz[0], kDrumLowPassQ[0], 0);
    filter.setEnabled(true);
  }
}

void DrumModel::setSampleRate(double hz) noexcept {
  m_sampleRate = std::max(hz, 11025.0);
  updateReflectionPoles();
  m_staticPole = settlingPole(m_settings.cabinet.staticCutoffHz, m_sampleRate);
  m_noisePlayer.setSampleRate(m_sampleRate);
}

void DrumModel::updateReflectionPoles() noexcept {
  m_bouncePole[0] = lowPassPole(kReflectionEdgeHz, m_sampleRate);
  m_bouncePole[1] = lowPassPole(
      kReflectionEdgeHz * std::exp2(-m_settings.cabinet.reflectionLpfOctaves), m_sampleRate);
}

void DrumModel::updateSplitter() noexcept {
  m_splitterPole = lowPassPole(m_settings.splitterHz, m_sampleRate);
}

void DrumModel::clear() noexcept {
  m_lowBand = {};
  m_bounce = {};
  m_staticLowPass = {};
  m_staticLowBand = {};
  for (Biquad& filter : m_lowPass) {
    filter.clearState();
    filter.setInstantUpdate(true);
  }
  m_noisePlayer.clear();
}

void DrumModel::resetFilters() noexcept {
  for (Biquad& filter : m_lowPass) {
    filter.setSampleRate(m_sampleRate);
    filter.setInstantUpdate(false);
  }
  updateSplitter();
}

void DrumModel::setMicDistance(double metres) noexcept {
  m_microphone.distance = metres;
  m_noisePlayer.setMicDistance(metres);
}

void DrumModel::rebuildGeometry() noexcept {
  const CabinetWalls walls = drumWalls(m_settings.cabinet);
  m_region = microphoneRegion(m_microphone, walls);
  m_rays.rebuild(drumImages(m_microphone, walls), m_microphone, m_settings.cabinet.amRadius);
  m_attenuation.rebuild(m_settings.cabinet, m_rays);
}

double DrumModel::staticLevel() const noexcept {
  return m_attenuation.level(m_rays.distance[kDirect], m_settings.cabinet.amRadius, 0.0);
}

bool DrumModel::isHeard(std::size_t ray) const noexcept {
  return (ray != kWallB || m_region == MicrophoneRegion::SideB) &&
         (ray != kWallA || m_region == MicrophoneRegion::SideA);
}

void DrumModel::addRay(const RotorTrack& track, const SoundLine& line, int n, std::size_t ray,
                       RunBuffer& sum) noexcept {
  const CabinetSettings& cabinet = m_settings.cabinet;
  const double distance = m_rays.distance[ray];
  RayMovement movement;
  movement.trace(track, distance, m_rays.angle[ray], m_rays.signY[ray], m_rays.halfWidth[ray], n);

  RunBuffer run;
  for (int j = 0; j < n; ++j) {
    const auto k = static_cast<std::size_t>(j);
    movement.sine[k] = std::max(movement.sine[k], kNearestSine);
    const double delay = (movement.sine[k] * cabinet.fmRadius + distance) * track.samplesPerMetre();
    const double x = cubicRingRead(track.writeIndex(j) - delay, line.data(), kTrackSize);
    run[k] = x - m_lowBand[ray].next(x, m_splitterPole);
  }
  for (int j = 0; j < n;) {
    if (track.nextUpdate(j) == j) {
      const double place = 18.0 * tablePlace(movement.phase[static_cast<std::size_t>(j)]);
      m_lowPass[ray].setFrequencyAndQ(cyclicTableRead(kDrumLowPassHz, place),
                                      cyclicTableRead(kDrumLowPassQ, place));
    }
    const int end = std::min(n, track.nextUpdate(j + 1));
    m_lowPass[ray].processGlide({run.data() + j, static_cast<std::size_t>(end - j)});
    j = end;
  }

  const RayPath& path = kPaths[ray];
  const double gain =
      std::pow(cabinet.reflectionCoeff, path.bounces) * m_settings.rayGain[path.gain];
  for (int j = 0; j < n; ++j) {
    const auto k = static_cast<std::size_t>(j);
    double y = run[k] * m_attenuation.level(distance, cabinet.amRadius, movement.sine[k]) * gain;
    if (path.bounces > 0) y = m_bounce[ray].next(y, m_bouncePole[path.bounces - 1U]);
    sum[k] += y;
  }
}

void DrumModel::addStaticRay(const RotorTrack& track, const SoundLine& line, int n, double gainSum,
                             RunBuffer& sum, RunBuffer& lowStatic) noexcept {
  const double delay = m_rays.distance[kDirect] * track.samplesPerMetre();
  const double level = staticLevel();
  const double lowGain = m_settings.lowStaticGain * gainSum;
  for (int j = 0; j < n; ++j) {
    const auto k = static_cast<std::size_t>(j);
    if (track.nextUpdate(j) == j)
      m_staticPole = settlingPole(m_settings.cabinet.staticCutoffHz, m_sampleRate);
    const double x = cubicRingRead(track.writeIndex(j) - delay, line.data(), kTrackSize);
    const double value = m_staticLowPass.next(x, m_staticPole) * level;
    const double low = m_staticLowBand.next(value, m_splitterPole);
    lowStatic[k] = low * lowGain;
    sum[k] += (value - low) * m_settings.staticGain;
  }
}

void DrumModel::process(const RotorTrack& track, const SoundLine& line, int n, RunBuffer& out,
                        RunBuffer& lowStatic, RunBuffer& noise) noexcept {
  std::fill_n(out.begin(), n, 0.0);
  double gainSum = 0.0;
  for (std::size_t ray = 0; ray < kRayCount; ++ray) {
    if (!isHeard(ray)) continue;
    addRay(track, line, n, ray, out);
    gainSum += m_settings.rayGain[kPaths[ray].gain];
  }
  addStaticRay(track, line, n, gainSum, out, lowStatic);
  m_noisePlayer.process(track.speeds(n), m_microphone.angle, staticLevel() * m_settings.noiseLevel,
                        {noise.data(), static_cast<std::size_t>(n)});
}

void ReducedDrumModel::setSampleRate(double hz) noexcept {
  m_sampleRate = std::max(hz, 11025.0);
  m_polePole = std::exp(-1.0 / (m_sampleRate * kReducedPoleSeconds));
  m_bouncePole = lowPassPole(kReflectionEdgeHz, m_sampleRate);
  m_staticPole = settlingPole(m_settings.cabinet.staticCutoffHz, m_sampleRate);
}

void ReducedDrumModel::clear() noexcept {
  for (ReducedRay* ray : {&m_direct, &m_side, &m_back}) ray->clear();
  m_staticLowPass = {};
}

void ReducedDrumModel::rebuildGeometry() noexcept {
  const CabinetWalls walls = drumWalls(m_settings.cabinet);
  m_region = microphoneRegion(m_microphone, walls);
  m_rays.rebuild(drumImages(m_microphone, walls), m_microphone, m_settings.cabinet.amRadius);
  m_attenuation.rebuild(m_settings.cabinet, m_rays);
}

void ReducedDrumModel::process(const RotorTrack& track, const SoundLine& line, int n,
                               RunBuffer& out) noexcept {
  const CabinetSettings& cabinet = m_settings.cabinet;
  const ReducedRay::Context context{
      track, line, cabinet, m_rays, m_attenuation, m_microphone.distance, m_polePole, n};
  const double reflected = cabinet.reflectionCoeff * m_settings.rayGain[1];
  std::fill_n(out.begin(), n, 0.0);
  m_direct.add(context, kDirect, kReducedDrumHz, tablePlace, m_settings.rayGain[0], 0.0, out);
  if (m_region != MicrophoneRegion::Front) {
    const auto wall = m_region == MicrophoneRegion::SideB ? kWallB : kWallA;
    m_side.add(context, wall, kReducedDrumHz, tablePlace, reflected, m_bouncePole, out);
  }
  m_back.add(context, kBack, kReducedDrumHz, tablePlace, reflected, m_bouncePole, out);

  const double distance = m_rays.distance[kDirect];
  const double delay = (distance - m_microphone.distance) * track.samplesPerMetre();
  const double gain = m_attenuation.level(distance, cabinet.amRadius, 0.0) * m_settings.staticGain;
  for (int j = 0; j < n; ++j) {
    if (track.nextUpdate(j) == j) m_staticPole = settlingPole(cabinet.staticCutoffHz, m_sampleRate);
    const double x = cubicRingRead(track.writeIndex(j) - delay, line.data(), kTrackSize);
    out[static_cast<std::size_t>(j)] += m_staticLowPass.next(x, m_staticPole) * gain;
  }
}

} // namespace qlx::engine
