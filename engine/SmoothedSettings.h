#pragma once

#include "engine/Acoustics.h"

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

/// All smoothed settings, advanced once per host sample. Audio thread only.
class SmoothedSettings {
 public:
  static constexpr std::size_t kCount = static_cast<std::size_t>(Smoothed::Count);

  void setSampleRate(double hz) noexcept;
  void setTarget(Smoothed setting, double value) noexcept { m_target[index(setting)] = value; }
  double target(Smoothed setting) const noexcept { return m_target[index(setting)]; }
  void snap() noexcept { m_current = m_target; }
  void snap(Smoothed setting) noexcept { m_current[index(setting)] = m_target[index(setting)]; }

  /// Moves on by n samples (at most kRun).
  void advance(int n) noexcept;

  /// Values of the samples that advance passed through.
  const RunBuffer& operator[](Smoothed setting) const noexcept { return m_run[index(setting)]; }

  /// Keeps, of the samples that advance passed through, only the given ones (the host samples on
  /// which the engine runs).
  void thin(std::span<const int> hostSamples) noexcept;

 private:
  static constexpr std::size_t index(Smoothed setting) { return static_cast<std::size_t>(setting); }

  std::array<double, kCount> m_target{};
  std::array<double, kCount> m_current{};
  std::array<RunBuffer, kCount> m_run{};
  double m_coefficient = 0.0;
  double m_driveCoefficient = 0.0;
};

} // namespace qlx::engine
