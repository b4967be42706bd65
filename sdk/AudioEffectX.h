// SPDX-License-Identifier: ISC
#pragma once

#include "sdk/AudioEffect.h"
#include "sdk/EditorMenu.h"

#include <cstdint>

namespace qlx::sdk {

/// The newer half of the interface: properties, texts about the effect, events, speaker
/// arrangements and requests to the host. Rules and threads as in AudioEffect.
class AudioEffectX : public AudioEffect {
 public:
  using AudioEffect::AudioEffect;

  std::intptr_t dispatch(std::int32_t opcode, std::int32_t index, std::intptr_t value, void* ptr,
                         float opt) override;

  /// Tells older hosts that the effect listens to MIDI, if it says so in canDo. Overriders call it.
  void resume() override;

  /// On the audio thread, before the block that the events belong to.
  virtual std::int32_t processEvents(const EventList* events);

  virtual bool canParameterBeAutomated(std::int32_t index);
  virtual bool getParameterProperties(std::int32_t index, ParameterProperties* properties);
  virtual bool string2parameter(std::int32_t index, const char* text); ///< text null: possible?
  virtual bool getProgramNameIndexed(std::int32_t category, std::int32_t index, char* text);

  virtual bool getInputProperties(std::int32_t index, PinProperties* properties);
  virtual bool getOutputProperties(std::int32_t index, PinProperties* properties);
  virtual bool setSpeakerArrangement(const SpeakerArrangement* input,
                                     const SpeakerArrangement* output);
  virtual bool setBypass(bool onOff);

  virtual bool getEffectName(char* text);
  virtual bool getVendorString(char* text);
  virtual bool getProductString(char* text);
  virtual std::int32_t getVendorVersion();
  virtual std::int32_t getVstVersion();
  virtual std::int32_t getPlugCategory();
  virtual std::int32_t canDo(const char* text);
  virtual std::int32_t getTailSize();

  /// Brackets of one gesture of the user.
  void beginEdit(std::int32_t index);
  void endEdit(std::int32_t index);

  /// Asks the host for another size of the editor's window, in pixels. False when it won't.
  bool sizeWindow(std::int32_t width, std::int32_t height);

  /// Asks the host what it has for the menu of the editor. False: nothing.
  bool askEditorMenu(EditorMenu& menu);

  /// Names, displays or the program have changed.
  void updateDisplay();

 protected:
  /// Whether the host has something plugged into a pin. Hosts that don't know the question count as
  /// connected.
  bool isInputConnected(std::int32_t pin);
  bool isOutputConnected(std::int32_t pin);
};

} // namespace qlx::sdk
