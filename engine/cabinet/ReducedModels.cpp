// SPDX-License-Identifier: ISC
#include "engine/cabinet/ReducedModels.h"

#include "engine/cabinet/Directivity.h"
#include "engine/signal/OnePole.h"
#include "engine/signal/ParallelForm.h"

#include <algorithm>
#include <cmath>

namespace qlx::engine {

namespace {

/// Time constant of the poles' smoothing.
constexpr double kPoleSeconds = 0.005;

enum Lane : std::size_t {
  kHornDirect,
  kHornBack,
  kDrumDirect,
  kDrumBack,
  kHornWallB,
  kHornWallA,
  kDrumWallB,
  kDrumWallA
};
constexpr int kLanesWithoutSides = 4;
/// Images of direct sound, back wall, wall B and wall A.
constexpr std::array<std::size_t, 4> kHornImages = {0, 1, 6, 7}, kDrumImages = {0, 3, 1, 2};

constexpr auto kHornHz = continued(kReducedHornHz);
constexpr auto kDrumHz = continued(kReducedDrumHz);
constexpr double kIntervals = 18.0;

} // namespace

ReducedModels::ReducedModels(const HornSettings& horn, const DrumSettings& drum,
                             const kernels::Kernels& kernels)
    : m_hornSettings(horn), m_drumSettings(drum), m_kernels(kernels) {
  for (const std::size_t lane : {kHornDirect, kHornBack, kHornWallB, kHornWallA}) {
    // The horn's table runs against its angle.
    m_bank.cutoff[lane] = kHornHz.data();
    m_bank.cutoffStart[lane] = kIntervals;
    m_bank.cutoffStep[lane] = -kIntervals;
  }
  for (const std::size_t lane : {kDrumDirect, kDrumBack, kDrumWallB, kDrumWallA}) {
    m_bank.cutoff[lane] = kDrumHz.data();
    m_bank.cutoffStart[lane] = 0.0;
    m_bank.cutoffStep[lane] = kIntervals;
  }
}

void ReducedModels::setSampleRate(double hz) noexcept {
  m_sampleRate = std::max(hz, kLowestModelRate);
  m_bank.smoothing = std::exp(-1.0 / (m_sampleRate * kPoleSeconds));
  m_bank.settling = std::log2(settlingPole(1.0, m_sampleRate));
  m_reflectionPole = lowPassPole(kReflectionEdgeHz, m_sampleRate);
  updateHornStaticPole();
  updateDrumStaticPole();
  m_static.pole[1] = m_wantedDrumPole;
  m_lanesFresh = false;
}

void ReducedModels::updateHornStaticPole() noexcept {
  m_static.pole[0] = settlingPole(m_hornSettings.cabinet.staticCutoffHz, m_sampleRate);
}

void ReducedModels::updateDrumStaticPole() noexcept {
  m_wantedDrumPole = settlingPole(m_drumSettings.cabinet.staticCutoffHz, m_sampleRate);
}

void ReducedModels::clearLanes(std::size_t first) noexcept {
  for (double* memory : {m_bank.pole, m_bank.wantedPole, m_bank.lowPass, m_bank.rays.reflection})
    for (const std::size_t lane : {first, first + kLanesWithoutSides})
      std::fill_n(memory + lane, 2, 0.0);
}

void ReducedModels::clearHorn() noexcept {
  clearLanes(kHornDirect);
  m_static.state[0] = 0.0;
  clearMemory(m_body);
}

void ReducedModels::clearDrum() noexcept {
  clearLanes(kDrumDirect);
  m_static.state[1] = 0.0;
}

void ReducedModels::resetHornFilters() noexcept {
  makeParallel(m_body, kReducedHornBody, m_sampleRate);
  clearLanes(kHornDirect);
  m_static.state[0] = 0.0;
}

void ReducedModels::rebuildHorn(const AttenuationLaw& like) noexcept {
  const CabinetSettings& cabinet = m_hornSettings.cabinet;
  const CabinetWalls walls(cabinet.flipSign < 0.0);
  m_horn.region = microphoneRegion(m_microphone, walls);
  m_horn.rays.rebuild(hornImages(m_microphone, walls), m_microphone, cabinet.amRadius);
  m_horn.attenuation.rebuild(cabinet, m_horn.rays, like);
  m_lanesFresh = false;
}

void ReducedModels::rebuildDrum(const AttenuationLaw& like) noexcept {
  const CabinetSettings& cabinet = m_drumSettings.cabinet;
  const CabinetWalls walls = drumWalls(cabinet);
  m_drum.region = microphoneRegion(m_microphone, walls);
  m_drum.rays.rebuild(drumImages(m_microphone, walls), m_microphone, cabinet.amRadius);
  m_drum.attenuation.rebuild(cabinet, m_drum.rays, like);
  m_lanesFresh = false;
}

void ReducedModels::refreshLanes(const Source& horn, const Source& drum) noexcept {
  if (m_lanesFresh && m_laneHornSettings == m_hornSettings && m_laneDrumSettings == m_drumSettings)
    return;
  m_lanesFresh = true;
  m_laneHornSettings = m_hornSettings;
  m_laneDrumSettings = m_drumSettings;
  const auto set = [&](const std::array<Lane, 4>& lanes, const Source& source, const Model& model,
                       const CabinetSettings& cabinet, const std::array<std::size_t, 4>& images,
                       double directGain, double reflectionGain) {
    const double reflected = reflectionGain * cabinet.reflectionCoeff;
    const std::array<double, 4> gain = {directGain, reflected,
                                        model.region == MicrophoneRegion::SideB ? reflected : 0.0,
                                        model.region == MicrophoneRegion::SideA ? reflected : 0.0};
    for (std::size_t i = 0; i < lanes.size(); ++i) {
      RayPath path{cabinet, model.rays, model.attenuation, images[i]};
      path.shorter = m_microphone.distance - 2.0 * cabinet.fmRadius;
      path.gain = gain[i];
      path.reflectionPole = i == 0 ? 0.0 : m_reflectionPole;
      describeRay(m_bank.rays, lanes[i], path, source.history, source.line);
    }
  };
  set({kHornDirect, kHornBack, kHornWallB, kHornWallA}, horn, m_horn, m_hornSettings.cabinet,
      kHornImages, m_hornSettings.rayGain[0], m_hornSettings.rayGain[1]);
  set({kDrumDirect, kDrumBack, kDrumWallB, kDrumWallA}, drum, m_drum, m_drumSettings.cabinet,
      kDrumImages, m_drumSettings.rayGain[0], m_drumSettings.rayGain[1]);
}

void ReducedModels::addStaticRays(const Source& horn, const Source& drum, int n,
                                  double* pairs) noexcept {
  const auto prepare = [&](std::size_t k, const Source& source, const Model& model,
                           const CabinetSettings& cabinet, double shorter, double gain, int done) {
    const double distance = model.rays.distance[0];
    std::array<double, 4> weight;
    m_static.first[k] = fixedTap(
        source.line, source.history.writeIndex(done),
        (distance - m_microphone.distance + shorter) * source.history.samplesPerMetre(), weight);
    for (std::size_t i = 0; i < weight.size(); ++i) m_static.weight[i][k] = weight[i];
    m_static.gain[k] = model.attenuation.level(distance, cabinet.amRadius, 0.0) * gain;
  };
  const auto add = [&](int from, int to) {
    prepare(0, horn, m_horn, m_hornSettings.cabinet, m_hornSettings.cabinet.fmRadius,
            m_hornSettings.staticGain, from);
    prepare(1, drum, m_drum, m_drumSettings.cabinet, 0.0, m_drumSettings.staticGain, from);
    m_kernels.fixedPair(m_static, pairs + std::ptrdiff_t{2} * from, to - from);
  };
  int done = 0;
  if (m_static.pole[1] != m_wantedDrumPole) {
    done = std::min(drum.history.nextUpdate(0), n);
    add(0, done);
    if (done < n) m_static.pole[1] = m_wantedDrumPole;
  }
  add(done, n);
}

void ReducedModels::process(const Source& horn, const Source& drum, int n, SubBlock& hornOut,
                            SubBlock& drumOut) noexcept {
  refreshLanes(horn, drum);
  std::array<double, 2 * (kSubBlock + 2)> pairs;
  const bool noSides =
      m_horn.region == MicrophoneRegion::Front && m_drum.region == MicrophoneRegion::Front;
  m_kernels.reducedRays(m_bank, noSides ? kLanesWithoutSides : kernels::kReducedLanes,
                        horn.history.pass(n), drum.history.pass(n), pairs.data());
  addStaticRays(horn, drum, n, pairs.data());
  for (std::size_t k = 0; k < static_cast<std::size_t>(n); ++k) {
    hornOut[k] = pairs[2 * k];
    drumOut[k] = pairs[2 * k + 1];
  }
  m_kernels.reducedBody(m_body, hornOut.data(), n);
}

} // namespace qlx::engine
