// SPDX-License-Identifier: ISC
#pragma once

#include <chrono>

namespace qlx::editor {

/// What the editor looks at in the running effect. Any thread, never blocks.
class EffectReadout {
 public:
  /// Rotor phases at `now` in turns.
  virtual double hornPhase(std::chrono::steady_clock::time_point now) const noexcept = 0;
  virtual double drumPhase(std::chrono::steady_clock::time_point now) const noexcept = 0;
  /// Amplifier only: the rotors are not heard.
  virtual bool speakersBypassed() const noexcept = 0;
  /// 1 when the modulation wheel has just been moved, then falling to 0.
  virtual float modWheelActivity() const noexcept = 0;
  /// 1 while the sustain pedal is down, else 0.
  virtual double sustainState() const noexcept = 0;

 protected:
  ~EffectReadout() = default;
};

} // namespace qlx::editor
