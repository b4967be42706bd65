// SPDX-License-Identifier: ISC
#include "engine/cabinet/HornModel.h"

#include "engine/cabinet/Directivity.h"
#include "engine/signal/OnePole.h"
#include "engine/signal/ParallelForm.h"
#include "engine/signal/SpeedOfSound.h"

#include <algorithm>
#include <cmath>
#include <numeric>

namespace qlx::engine {

namespace {

/// Floor and ceiling echoes: extra path in metres.
constexpr double kZDelay[] = {0.07, 0.135};

/// Rays in the order of the lanes: the side walls' come last, because mostly neither is heard.
constexpr auto kRayOfLane = std::to_array<std::size_t>({0, 1, 2, 3, 4, 5, 8, 9, 10, 11, 6, 7});
constexpr int kLanesWithoutSides = kernels::kHornLanes - 4;

static_assert(std::ranges::is_permutation(kRayOfLane, [] {
  std::array<std::size_t, HornMicrophone::kRayCount> rays{};
  std::iota(rays.begin(), rays.end(), 0U);
  return rays;
}()));
static_assert(kLanesWithoutSides % 4 == 0, "whole vectors of the widest instruction set");

/// Peak and shelf in one table; the shelf's, coarser by half, is put between its own entries.
struct HornDirectivity {
  DirectivityRows<37> row{};
  constexpr HornDirectivity() {
    for (std::size_t i = 0; i < 38; ++i) {
      const std::size_t k = i < 37 ? i : 1;
      row[i][0] = kHornPeakHz[k];
      row[i][1] = kHornPeakQ[k];
      row[i][2] = kHornPeakDb[k];
      row[i][3] = 0.5 * (kHornShelfDb[k / 2] + kHornShelfDb[(k + 1) / 2]);
    }
  }
};
constexpr HornDirectivity kHornDirectivity;

} // namespace

HornModel::HornModel(const HornSettings& settings, const Recordings& recordings,
                     const kernels::Kernels& kernels)
    : m_settings(settings),
      m_kernels(kernels), m_microphones{{{settings, recordings, kernels, 0},
                                         {settings, recordings, kernels, 1}}} {
  m_bank.table = {kHornDirectivity.row, 36};
  m_bank.shelfHz = kHornShelfHz;
  m_bank.shelfQ = kHornShelfQ;
}

void HornModel::setSampleRate(double hz) noexcept {
  m_sampleRate = std::max(hz, kLowestModelRate);
  updateReflectionPoles();
  updateStaticPole();
  for (HornMicrophone& microphone : m_microphones)
    microphone.noisePlayer().setSampleRate(m_sampleRate);
}

void HornModel::updateReflectionPoles() noexcept {
  // Every reflection loses so many octaves of treble.
  for (std::size_t k = 0; k < kReflectionCount; ++k) {
    const double octaves = -static_cast<double>(k) * m_settings.cabinet.reflectionLpfOctaves;
    m_reflectionPole[k] = lowPassPole(kReflectionEdgeHz * std::exp2(octaves), m_sampleRate);
  }
  m_lanesFresh = false;
}

void HornModel::updateStaticPole() noexcept {
  const double pole = settlingPole(m_settings.cabinet.staticCutoffHz, m_sampleRate);
  m_static.pole[0] = m_static.pole[1] = pole;
}

void HornModel::clear() noexcept {
  m_past.fill(0.0);
  std::fill(std::begin(m_bank.rays.reflection), std::end(m_bank.rays.reflection), 0.0);
  m_static.state[0] = m_static.state[1] = 0.0;
  clearMemory(m_bank.peak);
  clearMemory(m_bank.shelf);
  clearMemory(m_body);
  for (HornMicrophone& microphone : m_microphones) microphone.noisePlayer().clear();
}

void HornModel::resetFilters() noexcept {
  makeParallel(m_body, kHornBody, m_sampleRate);
  setGlideRate(m_bank.peak, m_sampleRate, kWarpEdgeShare);
  setGlideRate(m_bank.shelf, m_sampleRate, kWarpEdgeShare);
  m_kernels.settleHorn(m_bank);
  std::fill(std::begin(m_bank.rays.reflection), std::end(m_bank.rays.reflection), 0.0);
  m_static.state[0] = m_static.state[1] = 0.0;
  for (HornMicrophone& microphone : m_microphones) {
    microphone.noisePlayer().setSampleRate(m_sampleRate);
    microphone.setDistance(microphone.position().distance);
  }
}

void HornModel::rebuildGeometry(std::size_t microphone) noexcept {
  m_microphones[microphone].rebuildGeometry(m_microphones[1 - microphone].attenuation());
  m_lanesFresh = false;
}

void HornModel::refreshLanes(const RotorHistory& history, const DelayLine& line) noexcept {
  if (m_lanesFresh && m_laneSettings == m_settings) return;
  m_lanesFresh = true;
  m_laneSettings = m_settings;
  for (std::size_t lane = 0; lane < kernels::kHornLanes; ++lane) {
    const HornMicrophone& microphone = m_microphones[lane % 2];
    const std::size_t ray = kRayOfLane[lane / 2];
    const unsigned reflections = HornMicrophone::reflections(ray);
    describeRay(m_bank.rays, lane,
                {m_settings.cabinet, microphone.rays(), microphone.attenuation(), ray, 0.0,
                 microphone.rayGain(ray), m_settings.ampClip,
                 reflections > 0 ? m_reflectionPole[reflections - 1U] : 0.0},
                history, line);
  }
  const double reflection = m_settings.cabinet.reflectionCoeff;
  const double gain = m_settings.zAxisGain * reflection * reflection;
  for (std::size_t i = 0; i < std::size(kZDelay); ++i) {
    const double delay = std::min(kZDelay[i] * m_sampleRate / kSpeedOfSound, kPastSize - 1.0);
    const int whole = static_cast<int>(std::ceil(delay));
    const double newer = whole - delay;
    m_echoes.back[2 * i] = whole;
    m_echoes.back[2 * i + 1] = whole - 1;
    m_echoes.weight[2 * i] = gain * (1.0 - newer);
    m_echoes.weight[2 * i + 1] = gain * newer;
  }
}

void HornModel::addStaticRays(const RotorHistory& history, const DelayLine& line, int n,
                              double* pairs) noexcept {
  for (std::size_t m = 0; m < 2; ++m) {
    std::array<double, 4> weight;
    m_static.first[m] =
        fixedTap(line, history.writeIndex(0),
                 m_microphones[m].rays().distance[0] * history.samplesPerMetre(), weight);
    for (std::size_t i = 0; i < weight.size(); ++i) m_static.weight[i][m] = weight[i];
    m_static.gain[m] = m_settings.staticGain * m_microphones[m].staticLevel();
  }
  m_kernels.fixedPair(m_static, pairs, n);
}

void HornModel::addZAxisEchoes(int n, double* pairs) noexcept {
  double* now = m_past.data() + std::ptrdiff_t{2} * kPastSize;
  std::copy_n(pairs, 2 * n, now);
  m_kernels.pairTaps(m_echoes, now, pairs, n);
  std::copy_n(m_past.data() + std::ptrdiff_t{2} * n, 2 * kPastSize, m_past.data());
}

void HornModel::process(const RotorHistory& history, const DelayLine& line, int n, SubBlock& out1,
                        SubBlock& out2) noexcept {
  refreshLanes(history, line);
  const bool sides = m_microphones[0].hearsSideWalls() || m_microphones[1].hearsSideWalls();
  std::array<double, 2 * (kSubBlock + 2)> pairs{};
  m_kernels.hornRays(m_bank, sides ? kernels::kHornLanes : kLanesWithoutSides, history.pass(n),
                     pairs.data());
  addStaticRays(history, line, n, pairs.data());
  addZAxisEchoes(n, pairs.data());
  m_kernels.body(m_body, pairs.data(), n);
  const double gain1 = m_microphones[0].outputGain(), gain2 = m_microphones[1].outputGain();
  for (std::size_t k = 0; k < static_cast<std::size_t>(n); ++k) {
    out1[k] = pairs[2 * k] * gain1;
    out2[k] = pairs[2 * k + 1] * gain2;
  }
}

} // namespace qlx::engine
