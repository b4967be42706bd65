// SPDX-License-Identifier: ISC
#pragma once

#include "engine/RotaryEngine.h"
#include "engine/cabinet/Cabinet.h"
#include "engine/rotor/RotorReadout.h"
#include "engine/settings/SettingMailbox.h"
#include "engine/signal/Amplifier.h"
#include "engine/signal/OnePole.h"
#include "engine/signal/RateConverter.h"
#include "engine/signal/SubBlock.h"

#include <atomic>

namespace qlx::engine {

/// The engine around the cabinet: settings from other threads, the choice of the engine rate,
/// re-initialisation behind a mute, amplifier, rate conversion, dry path and bypass.
class RotaryEngine::Frame {
 public:
  Frame(const Recordings& recordings, MicrophonePlacement& placement);

  // Any thread.
  void set(Setting setting, double value) noexcept;
  void request(std::uint32_t work) noexcept { m_mailbox.request(work); }
  void setHostRate(double hz) noexcept;
  void setCpuMode(CpuMode mode) noexcept { m_cpuMode.store(mode, std::memory_order_relaxed); }
  void switchOff() noexcept;
  void switchOn() noexcept;
  const RotorReadout& rotors() const noexcept { return m_rotors; }
  double hostRate() const noexcept { return m_publishedHostRate.load(std::memory_order_relaxed); }

  // The thread that processes.
  void performAllPendingWork() noexcept;
  template <class Sample>
  void process(const Sample* in0, const Sample* in1, Sample* out0, Sample* out1,
               int frames) noexcept;

 private:
  friend struct SettingTable;
  static constexpr double kNoJump = -1.0;

  enum class State : unsigned char { Running = 0, FadingOut = 1, Reinitialising = 2, FadingIn = 3 };

  /// Longest block for which the state machine takes one step; longer host blocks count as several.
  static constexpr int kLongestBlock = 512;

  /// One sub-block of host samples, in and out.
  struct HostSubBlock {
    SubBlock in0, in1;
    SubBlock out0, out1;
    int n;
  };

  void apply(Setting setting, double value) noexcept;
  void takeSettings() noexcept;
  void applyStop(double v) noexcept;
  void setPan(Smoothed left, Smoothed right, double position) noexcept;
  void setTone(Amplifier::Tone tone, double db) noexcept;
  void setColor(double Frame::*gain, double db) noexcept;
  void updateTone() noexcept;
  void setHornHighPass(double hz) noexcept;
  void setDrumLowPass(double hz) noexcept;

  void beginBlock() noexcept;
  void stepState() noexcept;
  void doPendingGroup() noexcept;
  void doResume() noexcept;
  void doFullReset() noexcept;
  void applyPlacement() noexcept;
  /// Takes work with the settings that were written before it was asked for.
  std::uint32_t take(std::uint32_t bits) noexcept;

  void refreshHostRate() noexcept;
  void setupEngineRate() noexcept;
  void clearState() noexcept;
  void updateFilterRates() noexcept;
  void updateRateCoefficients() noexcept;
  void resetEngine() noexcept;
  void rebuildAll() noexcept;
  void recover() noexcept;

  template <class Sample>
  void processBlock(const Sample* in0, const Sample* in1, Sample* out0, Sample* out1,
                    int frames) noexcept;
  /// False where the output ran into numbers out of hand.
  bool run(HostSubBlock& s) noexcept;
  void blend(HostSubBlock& s, const SubBlock& inputGain, const SubBlock& wetLeft,
             const SubBlock& wetRight) noexcept;

  MicrophonePlacement& m_placement;
  const kernels::Kernels& m_kernels;
  SettingMailbox m_mailbox;
  std::atomic<double> m_wantedBypass{0.0};
  std::atomic<double> m_bypassJump{kNoJump}; ///< level to which a switch-on jumps
  std::atomic<std::uint32_t> m_stopPresses{0}, m_stopReleases{0};
  std::atomic<double> m_wantedHostRate{44100.0};
  std::atomic<bool> m_switchedOn{false};
  std::atomic<CpuMode> m_cpuMode{CpuMode::LowCpu};
  RotorReadout m_rotors;
  std::atomic<double> m_publishedHostRate{44100.0};

  // Audio thread from here on.
  State m_state = State::Running;
  double m_muteLevel = 0.0;
  double m_muteTarget = 0.0;
  double m_bypassLevel = 0.0;
  double m_bypassTarget = 0.0;
  double m_fadeCoefficient = 0.0;
  std::uint32_t m_seenStopPresses = 0, m_seenStopReleases = 0;
  bool m_speakersBypassed = false;
  bool m_toneChanged = false; ///< the tone and colour filters wait for the next block
  std::array<double, static_cast<std::size_t>(Amplifier::Tone::Count)> m_toneDb{};
  double m_colorMidDb = 0.0;
  double m_colorLowDb = 0.0;
  std::array<double, kLongestBlock> m_input0{}, m_input1{}; ///< of the block

  double m_hostRate = 44100.0;
  double m_engineRate = 44100.0;
  int m_engineFactor = 1;
  double m_dryPole = 0.0;
  OnePole m_dryLeft, m_dryRight;

  SmoothedSettings m_settings;
  Amplifier m_amplifier;
  RateConverter m_converter;
  Cabinet m_cabinet;
};

} // namespace qlx::engine
