// SPDX-License-Identifier: ISC
#pragma once

#include "engine/cabinet/CabinetGeometry.h"
#include "engine/kernels/Kernels.h"
#include "engine/rotor/RotorHistory.h"
#include "engine/signal/Biquad.h"
#include "engine/signal/Phase.h"

#include <algorithm>
#include <array>
#include <limits>
#include <numbers>

namespace qlx::engine {

/// Lowest engine rate that the models of horn and drum work with, Hz.
inline constexpr double kLowestModelRate = 11025.0;

/// Cut-off of the treble that the first reflection loses, Hz.
inline constexpr double kReflectionEdgeHz = 20000.0;

/// One path for a lane of a ray bank.
struct RayPath {
  const CabinetSettings& cabinet;
  const Rays& rays;
  const AttenuationLaw& attenuation;
  std::size_t ray;
  double shorter = 0.0; ///< metres that the sound's way is shorter than the ray
  double gain = 0.0;
  double lowestLevel = std::numeric_limits<double>::lowest();
  double reflectionPole = 0.0; ///< 0 where nothing is lost
};

/// Describes a path to the kernels; the lane's state stays. The line and the law stay where they
/// are while the lane is in use.
template <int N>
void describeRay(kernels::RayLanes<N>& lanes, std::size_t lane, const RayPath& path,
                 const RotorHistory& history, const DelayLine& line) noexcept {
  const Rays& rays = path.rays;
  const double distance = rays.distance[path.ray], halfWidth = rays.halfWidth[path.ray];
  const double sign = rays.signY[path.ray], amRadius = path.cabinet.amRadius;
  lanes.angle[lane] = rays.angle[path.ray] * sign;
  lanes.halfWidth[lane] = halfWidth;
  lanes.nearRate[lane] = sign * std::numbers::pi / (2.0 * halfWidth);
  lanes.farRate[lane] = sign * std::numbers::pi / (1.0 - 2.0 * halfWidth);
  lanes.delay[lane] = (distance - path.shorter) * history.samplesPerMetre();
  lanes.delayDepth[lane] = path.cabinet.fmRadius * history.samplesPerMetre();
  lanes.levelPosition[lane] =
      (distance - AttenuationLaw::kNearestDistance + amRadius) * AttenuationLaw::kEntriesPerMetre;
  lanes.levelDepth[lane] = amRadius * AttenuationLaw::kEntriesPerMetre;
  lanes.levelScale[lane] = path.attenuation.scale();
  lanes.lowestLevel[lane] = path.lowestLevel;
  lanes.gain[lane] = path.gain;
  lanes.reflectionPole[lane] = path.reflectionPole;
  lanes.angles[lane] = history.angles();
  lanes.line[lane] = line.data();
  lanes.levels[lane] = path.attenuation.pieces();
  lanes.angleLag[lane] = static_cast<int>(kHistorySize - distance * history.samplesPerMetre());
}

/// The rate of gliding filters, Hz, and where the counter-warp of their Q ends, as a share of it.
template <int N>
void setGlideRate(kernels::GlideLanes<N>& lanes, double hz, double edgeShare) noexcept {
  const double rate = sectionRate(hz);
  lanes.angularRate = kTwoPi / rate;
  lanes.edgeHz = edgeShare * rate;
  lanes.share = 1.0 / sectionGlideSteps(rate);
}

template <int N>
void clearMemory(kernels::GlideLanes<N>& lanes) noexcept {
  for (double* memory : {lanes.x1, lanes.x2, lanes.y1, lanes.y2}) std::fill_n(memory, N, 0.0);
}

/// Rows (Hz, Q, dB, dB) of a table over the mouth's angle, the second once more behind the last.
template <std::size_t N>
using DirectivityRows = double[N + 1][4];

/// A cut-off (Hz) over the mouth's angle with its second entry once more behind the last.
template <std::size_t N>
constexpr std::array<double, N + 1> continued(const std::array<double, N>& table) {
  std::array<double, N + 1> longer{};
  for (std::size_t i = 0; i < N; ++i) longer[i] = table[i];
  longer[N] = table[1];
  return longer;
}

/// A sound that arrives at a fixed delay of `samples`: returns the oldest of the four points for
/// the sub-block's first sample and writes the weights of all four.
inline const double* fixedTap(const DelayLine& line, int writeIndex, double samples,
                              std::array<double, 4>& weight) noexcept {
  double position = writeIndex - samples;
  while (position < 1.0) position += kHistorySize;
  const int whole = static_cast<int>(position);
  const CubicWeights<double> w(position - whole);
  weight = {w.w0, w.w1, w.w2, w.w3};
  return line.data() + ((whole - 1) & (kHistorySize - 1));
}

} // namespace qlx::engine
