// SPDX-License-Identifier: ISC
#include "engine/cabinet/Room.h"

#include "engine/signal/OnePole.h"
#include "engine/signal/SpeedOfSound.h"

#include <algorithm>
#include <cmath>
#include <new>

namespace qlx::engine {

namespace {

using Paths = std::array<double, 12>;

// Lengths in metres for a room of size 1; the cross paths between the sides only set the level
// law's reach. The cut-offs are shares of the main cut-off.
constexpr Paths kLeftPath = {3.1, 4.3, 5.7, 6.3, 7.8, 8.3, 8.7, 9.3, 9.6, 10.5, 11.1, 11.7};
constexpr Paths kRightPath = {3, 4, 4.8, 7.5, 8.1, 8.5, 9.1, 9.5, 9.9, 10.3, 10.9, 11.3};
constexpr Paths kCrossPathA = {3.15, 4.08, 5.48, 6.8,  8.9,  10.5,
                               12.3, 12.9, 13.3, 13.7, 14.1, 14.9};
constexpr Paths kCrossPathB = {3.05, 4.47, 4.87, 7.4,  8.2,  11.4,
                               11.2, 11.8, 12.1, 12.9, 13.5, 14.6};
constexpr Paths kLeftCutoff = {0.93, 0.91, 0.8, 0.7, 0.7, 0.65, 0.6, 0.55, 0.5, 0.35, 0, 0};
constexpr Paths kRightCutoff = {0.97, 0.9, 0.8, 0.7, 0.7, 0.65, 0.6, 0.55, 0.5, 0.35, 0, 0};

/// Level of the longest path, decibels.
constexpr double kLongestPathDb = -20.0;

} // namespace

Room::Room(const kernels::Kernels& kernels) : m_kernels(kernels) {}

Room::Side::Side()
    : line(static_cast<double*>(std::calloc(kLongestLine + kContinued, sizeof(double)))),
      size(lineSize(0.0)) {
  if (line == nullptr) throw std::bad_alloc();
}

int Room::lineSize(double engineRate) noexcept {
  const double metres = kLargestRoom * std::max(kLeftPath.back(), kRightPath.back());
  const double longest = metres * engineRate * kInverseSpeedOfSound + kSubBlock + 1;
  int size = 1024;
  while (size < longest && size < kLongestLine) size *= 2;
  return size;
}

void Room::Side::compute(const Paths& path, const Paths& cutoff, const RoomSettings& settings,
                         double dbPerMetre, double engineRate) noexcept {
  for (std::size_t i = 0; i < kTapCount; ++i) {
    const double metres = path[i] * settings.size;
    const double samples = metres * engineRate * kInverseSpeedOfSound;
    delay[i] = static_cast<int>(samples);
    const auto fraction = static_cast<double>(static_cast<float>(samples - delay[i]));
    const double gain = std::pow(10.0, metres * dbPerMetre * 0.05);
    taps.older[i] = (1.0 - fraction) * gain;
    taps.newer[i] = fraction * gain;
    taps.pole[i] =
        lowPassPole(std::clamp(cutoff[i] * settings.mainCutoffHz, 20.0, 20000.0), engineRate);
  }
}

void Room::computeTaps(const RoomSettings& settings, double engineRate) noexcept {
  double longest = 0.0;
  for (const Paths& cross : {kCrossPathA, kCrossPathB}) {
    for (const double path : cross) {
      longest =
          std::max(longest, settings.size * settings.virtualSize * path + settings.leftRightDelay);
    }
  }
  const double dbPerMetre = kLongestPathDb / longest;
  if (const int size = lineSize(engineRate); size != m_left.size) {
    m_left.size = m_right.size = size;
    m_writeIndex = 0;
    clear();
  }
  m_left.compute(kLeftPath, kLeftCutoff, settings, dbPerMetre, engineRate);
  m_right.compute(kRightPath, kRightCutoff, settings, dbPerMetre, engineRate);
}

void Room::Side::clear() noexcept {
  std::fill_n(line.get(), size + kContinued, 0.0);
  std::fill(std::begin(taps.state), std::end(taps.state), 0.0);
}

void Room::clear() noexcept {
  m_left.clear();
  m_right.clear();
}

void Room::Side::write(const SubBlock& send, int writeIndex, int n) noexcept {
  for (int j = 0; j < n; ++j) {
    const auto i = static_cast<std::size_t>((writeIndex + j) & (size - 1));
    line[i] = send[static_cast<std::size_t>(j)];
    if (i < kContinued) line[i + static_cast<std::size_t>(size)] = line[i];
  }
}

void Room::process(Side& side, const SubBlock& send, const SubBlock& returnGain, int n,
                   SubBlock& out) const noexcept {
  side.write(send, m_writeIndex, n);
  for (std::size_t i = 0; i < kTapCount; ++i)
    side.taps.first[i] = side.line.get() + ((m_writeIndex - side.delay[i]) & (side.size - 1));
  m_kernels.roomSide(side.taps, out.data(), n);
  for (std::size_t k = 0; k < static_cast<std::size_t>(n); ++k) out[k] *= returnGain[k];
}

void Room::process(const SubBlock& sendLeft, const SubBlock& sendRight, const SubBlock& returnGain,
                   int n, SubBlock& left, SubBlock& right) noexcept {
  process(m_left, sendLeft, returnGain, n, left);
  process(m_right, sendRight, returnGain, n, right);
  m_writeIndex = (m_writeIndex + n) & (m_left.size - 1);
}

} // namespace qlx::engine
