// SPDX-License-Identifier: ISC
#include "engine/settings/SmoothedSettings.h"

#include "engine/signal/Denormals.h"
#include "engine/signal/OnePole.h"

#include <algorithm>
#include <cmath>

namespace qlx::engine {

namespace {

// Time constants as the single-precision numbers nearest to 30 and 100 ms.
constexpr double kSeconds = 0.03000000142492354;
constexpr double kDriveSeconds = 0.10000000474974513;

/// Distance, relative to the value, at which a setting has arrived: 200 dB below what it sets.
constexpr double kArrived = 1e-10;

} // namespace

void SmoothedSettings::setSampleRate(double hz) noexcept {
  m_coefficient = approachCoefficient(kSeconds, hz);
  m_driveCoefficient = approachCoefficient(kDriveSeconds, hz);
}

const SmoothedValues& SmoothedSettings::advance(int n) noexcept {
  if (!m_moving) return m_hostValues;
  m_moving = false;
  for (std::size_t i = 0; i < kCount; ++i) {
    SubBlock& values = m_hostValues.m_values[i];
    const double target = m_target[i];
    const double x = m_current[i];
    if (std::abs(target - x) <= kArrived * std::max(1.0, std::abs(target))) {
      // What has arrived fills its buffers once and is then left alone.
      if (m_flat[i] && values[0] == target) continue;
      m_current[i] = target;
      m_flat[i] = true;
      values.fill(target);
      m_engineValues.m_values[i].fill(target);
      continue;
    }
    m_flat[i] = false;
    m_moving = true;
    const double k = i == index(Smoothed::DriveGain) ? m_driveCoefficient : m_coefficient;
    double distance = target - x;
    for (int j = 0; j < n; ++j) {
      distance *= 1.0 - k;
      values[static_cast<std::size_t>(j)] = target - distance;
    }
    m_current[i] = flushDenormals(target - distance);
  }
  return m_hostValues;
}

const SmoothedValues& SmoothedSettings::pick(std::span<const int> hostSamples) noexcept {
  if (!m_moving) return m_engineValues;
  for (std::size_t i = 0; i < kCount; ++i) {
    if (m_flat[i]) continue;
    for (std::size_t k = 0; k < hostSamples.size(); ++k)
      m_engineValues.m_values[i][k] =
          m_hostValues.m_values[i][static_cast<std::size_t>(hostSamples[k])];
  }
  return m_engineValues;
}

} // namespace qlx::engine
