// SPDX-License-Identifier: ISC
#pragma once

#include "engine/RotaryEngine.h"
#include "engine/settings/PendingWork.h"
#include "engine/settings/Setting.h"
#include "midi/MidiLever.h"
#include "plugin/ParameterTable.h"
#include "presets/store/CPresetSystemEffect.h"

#include <array>
#include <atomic>
#include <cstdint>

namespace qlx::plugin {

/// Holds the 120 normalised values and turns each new one into what the engine is told. What one
/// parameter does to another goes through the effect's own operations, so that presets, editor and
/// host follow.
///
/// Every operation may come on any thread, also while audio runs: all memories are whole single
/// values.
class ParameterApplication final : public engine::MicrophonePlacement {
 public:
  /// All three outlive this; none is called before apply.
  ParameterApplication(presets::CPresetSystemEffect& effect, engine::RotaryEngine& engine,
                       midi::MidiLever& midiLever) noexcept
      : m_effect(effect), m_engine(engine), m_midiLever(midiLever) {}

  virtual ~ParameterApplication() = default;
  ParameterApplication(const ParameterApplication&) = delete;
  ParameterApplication& operator=(const ParameterApplication&) = delete;

  /// The stored value; 0 outside 0..119.
  float value(std::int32_t index) const noexcept;

  /// Stores a value and does nothing with it.
  void store(std::int32_t index, float value) noexcept;

  /// Stores a new value and hands it on. `value` is a number, not necessarily in 0..1.
  void apply(const ParameterRow& row, float value);

  /// The microphone placement that Setup names; see engine::MicrophonePlacement.
  void applyPlacement() noexcept override;
  void forgetLever() noexcept override { m_lastLever.store(kNoLever, std::memory_order_relaxed); }

  // What the rows of the parameter table do.
  void set(engine::Setting setting, double value) noexcept { m_engine.set(setting, value); }
  void request(std::uint32_t work) noexcept { m_engine.request(work); }
  void applyCpuMode(float v);
  void applyLever(float v);
  void applyStop(float v);
  void applyMech(float v);
  void applyDrumSampleVolume(float v);
  void applySetup(float v);
  void applySize(float v);
  void applyHornDistance(float v);
  void applyMic2Distance(float v);
  void applyDrumDistance(float v);
  void applyMidiChannel(float v);

 private:
  void setNoiseLevels(double factor) noexcept;
  void setMic2Distance() noexcept;

  presets::CPresetSystemEffect& m_effect;
  engine::RotaryEngine& m_engine;
  midi::MidiLever& m_midiLever;

  std::array<std::atomic<float>, kNumParameters> m_values{};

  // What was last acted upon: a value that comes to the same changes nothing.
  static constexpr float kNoLever = -1.0F;
  std::atomic<float> m_lastLever{kNoLever};
  std::atomic<int> m_lastCpuMode{-1};
  std::atomic<int> m_lastSetup{-1};
  std::atomic<int> m_lastRoomSize{-1};
  std::atomic<float> m_hornDistance{0.0F}; ///< metres
  std::atomic<float> m_drumDistance{0.0F}; ///< metres
};

} // namespace qlx::plugin
