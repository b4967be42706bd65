// SPDX-License-Identifier: ISC
#pragma once

#include "sdk/EditorPicture.h"
#include "sdk/VstTypes.h"

#include <cstdint>
#include <string>

namespace qlx::sdk {

class AudioEffect;

/// Base of an effect's editor. The object lives as long as its effect; only the window comes and
/// goes between open and close. Everything but setParameter is called on the host's user-interface
/// thread. Nothing here may be relied upon to come in order: hosts open twice, close without an
/// open window and send idle with no window.
class AEffGUIEditor {
 public:
  /// `effect` outlives the editor.
  explicit AEffGUIEditor(AudioEffect* effect) noexcept : m_effect(effect) {}
  virtual ~AEffGUIEditor() = default;
  AEffGUIEditor(const AEffGUIEditor&) = delete;
  AEffGUIEditor& operator=(const AEffGUIEditor&) = delete;

  AudioEffect* getEffect() const noexcept { return m_effect; }

  /// Points *rectangle at the window's rectangle, which stays the editor's; false (and *rectangle
  /// untouched) for none.
  virtual bool getRect(EditRectangle** rectangle) {
    (void)rectangle;
    return false;
  }

  /// The host's wish for the window's size: pixels of the screen for one of a plain window. An open
  /// window follows at the next idle.
  virtual void setHostScale(double scale) { (void)scale; }

  /// Builds the window inside the host's `parent` (on X11 the parent window's number).
  virtual bool open(void* parent) {
    (void)parent;
    return false;
  }
  virtual void close() {}
  virtual void idle() {}

  /// Answer whether the key was used.
  virtual bool onKeyDown(const KeyCode& key) {
    (void)key;
    return false;
  }
  virtual bool onKeyUp(const KeyCode& key) {
    (void)key;
    return false;
  }

  /// How the user turns knobs, a KnobMode; answers whether it is supported.
  virtual bool setKnobMode(std::int32_t mode) {
    (void)mode;
    return false;
  }

  /// Draws the editor into the request's pixels; false when it can't.
  virtual bool picture(const EditorPicture& request) {
    (void)request;
    return false;
  }

  /// The controls in words (EditorDescription). Empty when it can't tell.
  virtual std::string description() { return {}; }

  /// A parameter of the effect has changed. Comes on any thread, the audio thread included: only
  /// takes note.
  virtual void setParameter(std::int32_t index, float value) {
    (void)index;
    (void)value;
  }

 private:
  AudioEffect* m_effect;
};

} // namespace qlx::sdk
