// SPDX-License-Identifier: ISC
#pragma once

#include "engine/rotor/Recordings.h"
#include "engine/settings/PendingWork.h"
#include "engine/settings/Setting.h"

#include <chrono>
#include <cstdint>
#include <memory>

namespace qlx::engine {

/// Internal quality: LowCpu runs the rotors at a half to an eighth of the host's rate, Brilliant at
/// the host's rate up to 50 kHz and at half or a quarter of it above.
enum class CpuMode : unsigned char { LowCpu = 0, Brilliant = 1 };

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

/// The rotary cabinet from the amplifier's input to the stereo microphones' output.
///
/// Threads: set, request, setHostRate, setCpuMode, switchOff, switchOn and the read-outs may be
/// called from any thread at any time, none of them blocks; process and performAllPendingWork
/// belong to the one thread that processes audio. process neither allocates, locks nor throws.
class RotaryEngine {
 public:
  /// Starts at 44100 Hz, low-CPU mode, switched off, everything pending. `placement` and the
  /// recordings' memory must outlive the engine.
  RotaryEngine(const Recordings& recordings, MicrophonePlacement& placement);
  ~RotaryEngine();
  RotaryEngine(const RotaryEngine&) = delete;
  RotaryEngine& operator=(const RotaryEngine&) = delete;

  /// Gives a physical value; see Setting for units.
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
  friend struct SettingTable;
  class Frame;
  std::unique_ptr<Frame> m_frame;
};

} // namespace qlx::engine
