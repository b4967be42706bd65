// SPDX-License-Identifier: ISC
#include "engine/cabinet/DrumModel.h"

#include "engine/cabinet/Directivity.h"
#include "engine/signal/Denormals.h"

#include <algorithm>
#include <cmath>

namespace qlx::engine {

namespace {

/// The scoop's mouth comes no nearer to a ray than this share of its circle.
constexpr double kNearestSine = -0.7;

/// Rays in the order of their lanes. The side walls' come last, because mostly neither is heard.
enum DrumRay : std::size_t { kDirect, kBack, kBackAndB, kBackAndA, kWallB, kWallA };
constexpr int kLanesWithoutSides = 4;

struct RayKind {
  unsigned char image;
  unsigned char gain;
  unsigned char reflections;
};
constexpr std::array<RayKind, 6> kKinds = {
    {{0, 0, 0}, {3, 1, 1}, {4, 2, 2}, {5, 3, 2}, {1, 1, 1}, {2, 1, 1}}};

struct DrumDirectivity {
  DirectivityRows<19> row{};
  constexpr DrumDirectivity() {
    for (std::size_t i = 0; i < 20; ++i) {
      row[i][0] = kDrumLowPassHz[i < 19 ? i : 1];
      row[i][1] = kDrumLowPassQ[i < 19 ? i : 1];
    }
  }
};
constexpr DrumDirectivity kDrumDirectivity;

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

DrumModel::DrumModel(const DrumSettings& settings, const Recordings& recordings,
                     const kernels::Kernels& kernels)
    : m_settings(settings), m_kernels(kernels), m_noisePlayer(recordings, kernels) {
  m_bank.table = {kDrumDirectivity.row, 18};
  m_bank.lowestSine = kNearestSine;
  std::fill(std::begin(m_bank.hz), std::end(m_bank.hz), kDrumLowPassHz[0]);
  std::fill(std::begin(m_bank.q), std::end(m_bank.q), kDrumLowPassQ[0]);
}

void DrumModel::setSampleRate(double hz) noexcept {
  m_sampleRate = std::max(hz, kLowestModelRate);
  updateReflectionPoles();
  updateStaticPole();
  m_staticPole = m_wantedStaticPole;
  m_noisePlayer.setSampleRate(m_sampleRate);
}

void DrumModel::updateStaticPole() noexcept {
  m_wantedStaticPole = settlingPole(m_settings.cabinet.staticCutoffHz, m_sampleRate);
}

void DrumModel::updateReflectionPoles() noexcept {
  m_reflectionPole[0] = lowPassPole(kReflectionEdgeHz, m_sampleRate);
  m_reflectionPole[1] = lowPassPole(
      kReflectionEdgeHz * std::exp2(-m_settings.cabinet.reflectionLpfOctaves), m_sampleRate);
  m_lanesFresh = false;
}

void DrumModel::updateSplitter() noexcept {
  m_splitterPole = lowPassPole(m_settings.splitterHz, m_sampleRate);
}

void DrumModel::clear() noexcept {
  for (double* memory : {m_bank.lowBand, m_bank.rays.reflection})
    std::fill_n(memory, kernels::kDrumLanes, 0.0);
  clearMemory(m_bank.lowPass);
  m_staticLowPass = {};
  m_staticLowBand = {};
  m_noisePlayer.clear();
}

void DrumModel::resetFilters() noexcept {
  setGlideRate(m_bank.lowPass, m_sampleRate, kLowPassWarpEdgeShare);
  m_kernels.settleDrum(m_bank);
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
  m_attenuation.rebuild(m_settings.cabinet, m_rays, m_attenuation);
  m_lanesFresh = false;
}

double DrumModel::staticLevel() const noexcept {
  return m_attenuation.level(m_rays.distance[kDirect], m_settings.cabinet.amRadius, 0.0);
}

double DrumModel::rayGain(std::size_t ray) const noexcept {
  if (ray == kWallB && m_region != MicrophoneRegion::SideB) return 0.0;
  if (ray == kWallA && m_region != MicrophoneRegion::SideA) return 0.0;
  return m_settings.rayGain[kKinds[ray].gain];
}

void DrumModel::refreshLanes(const RotorHistory& history, const DelayLine& line) noexcept {
  if (m_lanesFresh && m_laneSettings == m_settings) return;
  m_lanesFresh = true;
  m_laneSettings = m_settings;
  m_gainSum = 0.0;
  for (std::size_t lane = 0; lane < kernels::kDrumLanes; ++lane) {
    // What no ray needs repeats the direct one, silently.
    const std::size_t ray = lane < kRayCount ? lane : kDirect;
    const RayKind& kind = kKinds[ray];
    const double gain = lane < kRayCount ? rayGain(ray) : 0.0;
    m_gainSum += gain;
    const double reflection = std::pow(m_settings.cabinet.reflectionCoeff, kind.reflections);
    RayPath path{m_settings.cabinet, m_rays, m_attenuation, kind.image};
    path.gain = gain * reflection;
    path.reflectionPole = kind.reflections > 0 ? m_reflectionPole[kind.reflections - 1U] : 0.0;
    describeRay(m_bank.rays, lane, path, history, line);
  }
}

void DrumModel::addStaticRay(const RotorHistory& history, const DelayLine& line, int n,
                             SubBlock& sum) noexcept {
  std::array<double, 4> weight;
  const double* tap = fixedTap(line, history.writeIndex(0),
                               m_rays.distance[kDirect] * history.samplesPerMetre(), weight);
  const double level = staticLevel();
  const double lowGain = m_settings.lowStaticGain * m_gainSum;
  SubBlock value, low;
  for (int j = 0; j < n; ++j)
    value[static_cast<std::size_t>(j)] = weight[0] * tap[j] + weight[1] * tap[j + 1] +
                                         weight[2] * tap[j + 2] + weight[3] * tap[j + 3];
  const auto until = static_cast<std::size_t>(std::min(history.nextUpdate(0), n));
  const auto size = static_cast<std::size_t>(n);
  // Low-pass and splitter in one go; the second follows the first by the level alone.
  double smooth = m_staticLowPass.state, bass = m_staticLowBand.state;
  for (std::size_t k = 0; k < size; ++k) {
    if (k == until) m_staticPole = m_wantedStaticPole;
    smooth = smooth * m_staticPole + value[k] * (1.0 - m_staticPole);
    value[k] = smooth * level;
    bass = bass * m_splitterPole + value[k] * (1.0 - m_splitterPole);
    low[k] = bass;
  }
  m_staticLowPass.state = flushDenormals(smooth);
  m_staticLowBand.state = flushDenormals(bass);
  for (std::size_t k = 0; k < size; ++k)
    sum[k] += low[k] * lowGain + (value[k] - low[k]) * m_settings.staticGain;
}

void DrumModel::process(const RotorHistory& history, const DelayLine& line, int n,
                        SubBlock& out) noexcept {
  refreshLanes(history, line);
  m_bank.splitterPole = m_splitterPole;
  const int lanes = m_region == MicrophoneRegion::Front ? kLanesWithoutSides : kernels::kDrumLanes;
  m_kernels.drumRays(m_bank, lanes, history.pass(n), out.data());
  addStaticRay(history, line, n, out);
}

} // namespace qlx::engine
