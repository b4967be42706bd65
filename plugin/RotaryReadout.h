#pragma once

namespace qlx::plugin {

/// What a display of the running effect may look at. Any thread, never blocks.
class RotaryReadout {
 public:
  /// Rotor phases in turns.
  virtual double hornPhase() const noexcept = 0;
  virtual double drumPhase() const noexcept = 0;
  /// Amplifier only: the rotors are not heard.
  virtual bool speakersBypassed() const noexcept = 0;
  /// 1 when the modulation wheel has just been moved, then falling to 0.
  virtual float modWheelActivity() const noexcept = 0;
  /// 1 while the sustain pedal is down, else 0.
  virtual double sustainState() const noexcept = 0;

 protected:
  ~RotaryReadout() = default;
};

} // namespace qlx::plugin
