// SPDX-License-Identifier: ISC
#pragma once

#include "editor/EffectReadout.h"
#include "engine/RotaryEngine.h"
#include "midi/MidiLever.h"
#include "plugin/ParameterApplication.h"
#include "plugin/parameters/ParameterFormatter.h"
#include "presets/store/CPresetSystemEffect.h"
#include "sdk/VstTypes.h"

#include <atomic>
#include <cstdint>

namespace qlx::plugin {

/// The effect that the host loads: identity, channel layouts, parameters and the way of a block to
/// the engine and back. Threads as in sdk::AudioEffect.
class RotaryEffect final : public presets::CPresetSystemEffect, public editor::EffectReadout {
 public:
  static constexpr std::int32_t kUniqueId = sdk::fourCharacters("QbrZ");

  /// Ready to play at 44100 Hz with the first preset, switched off. `host` may be null.
  explicit RotaryEffect(sdk::HostCallback host);
  /// The editor goes first: its window may be open, and it looks at the effect.
  ~RotaryEffect() override { destroyEditor(); }

  void suspend() override;
  /// The first of all instances to be resumed unpacks the recordings that they share.
  void resume() override;
  void setSampleRate(float hz) override;
  void processReplacing(float** inputs, float** outputs, std::int32_t frames) override;
  void processDoubleReplacing(double** inputs, double** outputs, std::int32_t frames) override;
  std::int32_t processEvents(const sdk::EventList* events) override;

  std::intptr_t dispatch(std::int32_t opcode, std::int32_t index, std::intptr_t value, void* ptr,
                         float opt) override;
  /// Indices 0..119 change the sound; any other only reaches the editor. Not-a-number is ignored.
  void setParameter(std::int32_t index, float value) override;
  float getParameter(std::int32_t index) override;
  void getParameterLabel(std::int32_t index, char* text) override;
  void getParameterDisplay(std::int32_t index, char* text) override;
  void getParameterName(std::int32_t index, char* text) override;
  bool canParameterBeAutomated(std::int32_t index) override;
  bool getParameterProperties(std::int32_t index, sdk::ParameterProperties* properties) override;

  bool getInputProperties(std::int32_t index, sdk::PinProperties* properties) override;
  bool getOutputProperties(std::int32_t index, sdk::PinProperties* properties) override;
  bool setSpeakerArrangement(const sdk::SpeakerArrangement* input,
                             const sdk::SpeakerArrangement* output) override;

  bool getEffectName(char* text) override;
  bool getVendorString(char* text) override;
  bool getProductString(char* text) override;
  std::int32_t getVendorVersion() override;
  std::int32_t canDo(const char* text) override;

  double hornPhase(std::chrono::steady_clock::time_point now) const noexcept override {
    return m_engine.hornPhase(now);
  }
  double drumPhase(std::chrono::steady_clock::time_point now) const noexcept override {
    return m_engine.drumPhase(now);
  }
  bool speakersBypassed() const noexcept override;
  float modWheelActivity() const noexcept override { return m_midiLever.modWheelActivity(); }
  double sustainState() const noexcept override { return m_midiLever.sustainState(); }

 private:
  void switchOn();
  void createEditor();
  void fillFactoryPresets();
  void applyParameterDefaults();
  template <typename Sample>
  void processBlock(Sample** inputs, Sample** outputs, std::int32_t frames);

  midi::MidiLever m_midiLever;
  ParameterApplication m_parameters;
  engine::RotaryEngine m_engine;
  std::atomic<bool> m_stereoInput{true};
  std::atomic<bool> m_stereoOutput{true};
  ParameterFormatter m_formatter; ///< what the editor's displays share with the host's
};

} // namespace qlx::plugin
