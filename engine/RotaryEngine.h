// SPDX-License-Identifier: ISC
#pragma once

#include "engine/rotor/Recordings.h"
#include "engine/rotor/RotorReadout.h"
#include "engine/settings/PendingWork.h"
#include "engine/settings/Setting.h"
#include "engine/settings/SettingMailbox.h"

#include <atomic>
#include <chrono>
#include <cstdint>
#include <memory>

namespace qlx::engine {

class SignalPath;

/// Who knows the microphone placements and what the lever was told. Called on the audio thread
/// behind the mute (and once while constructing).
class MicrophonePlacement {
 public:
  /// Writes the current placement's settings with RotaryEngine::set.
  virtual void applyPlacement() noexcept = 0;

  /// A full reset begins: the next write of the lever reaches the rotors, also one that repeats the
  /// last.
  virtual void forgetLever() noexcept = 0;

 protected:
  ~MicrophonePlacement() = default;
};

/// The rotary cabinet from the amplifier's input to the stereo microphones' output: takes settings
/// from all threads and, block by block, hands them and the samples to the signal path; what needs
/// more than a new number is done behind a short mute.
///
/// Threads: set, request, setHostRate, setCpuMode, switchOff, switchOn and the read-outs may be
/// called from any thread at any time, none of them blocks; process and performAllPendingWork
/// belong to the one thread that processes audio. process neither allocates, locks nor throws.
class RotaryEngine {
 public:
  /// Starts at 44100 Hz, low-CPU mode, switched off, with all work requested. `placement` and the
  /// recordings' memory must outlive the engine.
  RotaryEngine(const Recordings& recordings, MicrophonePlacement& placement);
  ~RotaryEngine();
  RotaryEngine(const RotaryEngine&) = delete;
  RotaryEngine& operator=(const RotaryEngine&) = delete;

  /// Gives a physical value; see Setting for units. Asks for the work that the value makes
  /// necessary (SettingTable), as request does.
  void set(Setting setting, double value) noexcept;

  /// Asks for re-initialisation: the output fades to the dry signal within about 60 ms, the work
  /// named by `work` is done one group a block, and the cabinet fades back in.
  void request(std::uint32_t work) noexcept;

  /// The host's sample rate in Hz; read at the next re-initialisation that refreshes the rate,
  /// which a new rate asks for itself while switched on. Below 22050 counts as 22050; zero,
  /// negative and not finite values are ignored.
  void setHostRate(double hz) noexcept;

  /// Takes effect with the next rate set-up (request kPendingFullReset).
  void setCpuMode(CpuMode mode) noexcept;

  /// The host's switch-off and switch-on: both only raise work for the next processed blocks.
  void switchOff() noexcept;
  void switchOn() noexcept;

  /// Does all pending work at once, without a mute; for construction, while nothing processes.
  void performAllPendingWork() noexcept;

  /// Processes one block of any length. in1 may equal in0 (mono); out1 may equal out0 or be null,
  /// then out0 receives the left result. Input and output buffers may be the same memory, also
  /// crossed. Samples that are not finite count as 0.
  void process(const float* in0, const float* in1, float* out0, float* out1, int frames) noexcept;
  void process(const double* in0, const double* in1, double* out0, double* out1,
               int frames) noexcept;

  /// Rotor phases at `now` in turns, 0 <= phase < 1, carried on from the end of the last block by
  /// at most one block; for displays.
  double hornPhase(std::chrono::steady_clock::time_point now) const noexcept;
  double drumPhase(std::chrono::steady_clock::time_point now) const noexcept;

  /// The host rate that the engine works with, Hz.
  double hostRate() const noexcept;

 private:
  static constexpr double kNoJump = -1.0;

  /// The mute: FadingOut to the dry signal, Reinitialising one group of work a block, FadingIn.
  enum class State : unsigned char { Running, FadingOut, Reinitialising, FadingIn };

  // Audio thread.
  void takeSettings() noexcept;
  void apply(Setting setting, double value) noexcept;
  void applyStop(double v) noexcept;
  /// Takes work with the settings that were written before it was asked for.
  std::uint32_t take(std::uint32_t work) noexcept;
  void beginBlock() noexcept;
  void stepState() noexcept;
  void doPendingGroup() noexcept;
  void doFullReset() noexcept;
  void fadeIn() noexcept;
  void applyPlacement() noexcept;
  void refreshHostRate() noexcept;
  void reset() noexcept;
  CpuMode cpuMode() const noexcept { return m_cpuMode.load(std::memory_order_relaxed); }
  template <class Sample>
  void processBlocks(const Sample* in0, const Sample* in1, Sample* out0, Sample* out1,
                     int frames) noexcept;
  template <class Sample>
  void processBlock(const Sample* in0, const Sample* in1, Sample* out0, Sample* out1,
                    int frames) noexcept;

  // Any thread.
  SettingMailbox m_mailbox;
  std::atomic<double> m_wantedBypass{0.0};
  std::atomic<double> m_bypassJump{kNoJump}; ///< share to which a switch-on jumps
  std::atomic<std::uint32_t> m_stopPresses{0}, m_stopReleases{0};
  std::atomic<double> m_wantedHostRate{44100.0};
  std::atomic<bool> m_switchedOn{false};
  std::atomic<CpuMode> m_cpuMode{CpuMode::LowCpu};
  RotorReadout m_rotors;
  std::atomic<double> m_publishedHostRate{44100.0};

  // Audio thread.
  MicrophonePlacement& m_placement;
  State m_state = State::Running;
  std::uint32_t m_seenStopPresses = 0, m_seenStopReleases = 0;
  std::unique_ptr<SignalPath>
      m_path; ///< behind a pointer: whoever includes this header gets no filters
};

} // namespace qlx::engine
