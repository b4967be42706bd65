// SPDX-License-Identifier: ISC
#pragma once

#include "engine/signal/SubBlock.h"

#include <array>
#include <cstddef>
#include <span>

namespace qlx::engine {

/// Settings of the sample loop that follow their targets exponentially, so that a moved control
/// does not click.
enum class Smoothed : unsigned char {
  InputGain,
  DriveGain, ///< with a slower coefficient than all others
  PostDriveGain,
  HornGain,
  HornMic2Gain,
  Mic1PanLeft,
  Mic1PanRight,
  Mic2PanLeft,
  Mic2PanRight,
  DrumPanLeft,
  DrumPanRight,
  DrumGain,
  HornFeedGain,
  DrumFeedGain,
  DrumToHornGain,
  HornToDrumGain,
  PortToHornGain,
  PortToDrumGain,
  DrumToHornDelay, ///< the delays in samples
  PortToHornDelay,
  HornToDrumDelay,
  PortToDrumDelay,
  HornEchoDelay,
  DrumToHornLevel,
  PortToHornLevel,
  HornToDrumLevel,
  PortToDrumLevel,
  HornEchoLevel,
  HornHighPassOn,
  DrumLowPassOn,
  RoomReturnGain,
  NoisePanA,
  NoisePanB,
  Count
};

/// Values of all smoothed settings over one sub-block, one each sample.
class SmoothedValues {
 public:
  const SubBlock& operator[](Smoothed setting) const noexcept {
    return m_values[static_cast<std::size_t>(setting)];
  }

 private:
  friend class SmoothedSettings;
  std::array<SubBlock, static_cast<std::size_t>(Smoothed::Count)> m_values{};
};

/// All smoothed settings, advanced once per host sample. Audio thread only.
class SmoothedSettings {
 public:
  void setSampleRate(double hz) noexcept;
  void setTarget(Smoothed setting, double value) noexcept {
    m_target[index(setting)] = value;
    m_moving = true;
  }
  double target(Smoothed setting) const noexcept { return m_target[index(setting)]; }
  void snap() noexcept {
    m_current = m_target;
    m_moving = true;
  }

  /// Moves on by n host samples (at most kSubBlock) and gives their values; they hold until the
  /// next call.
  const SmoothedValues& advance(int n) noexcept;

  /// The values of the given host samples of the last sub-block, those on which the engine runs.
  const SmoothedValues& pick(std::span<const int> hostSamples) noexcept;

 private:
  static constexpr std::size_t kCount = static_cast<std::size_t>(Smoothed::Count);
  static constexpr std::size_t index(Smoothed setting) { return static_cast<std::size_t>(setting); }

  std::array<double, kCount> m_target{};
  std::array<double, kCount> m_current{};
  SmoothedValues m_hostValues, m_engineValues;
  std::array<bool, kCount> m_flat{}; ///< arrived, both filled with the target
  bool m_moving = true;              ///< not all are known to be flat
  double m_coefficient = 0.0;
  double m_driveCoefficient = 0.0;
};

} // namespace qlx::engine
