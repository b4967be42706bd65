// SPDX-License-Identifier: ISC
#pragma once

#include "lv2/ChangeRequest.h"
#include "lv2/Ports.h"

#include <array>
#include <atomic>
#include <cstdint>

namespace qlx::plugin {
class RotaryEffect;
} // namespace qlx::plugin

namespace qlx::lv2 {

/// Keeps the host's control ports and the effect's parameters in step. A port that the host moves
/// moves its parameter. A parameter that something else moves (a pedal, a preset, the window) keeps
/// its value until the port moves next, and the host is asked to let the port follow.
///
/// What a host is told of comes back late, and after other news: for half a second after the last
/// word about a port its movements count as such echoes, unless it arrives where the parameter
/// stands.
///
/// Audio thread, except where told otherwise.
class ControlPorts {
 public:
  /// `effect` outlives this. `rate` in Hz; `request` null: this host can't be asked.
  ControlPorts(plugin::RotaryEffect& effect, double rate, const ChangeRequest* request);
  ControlPorts(const ControlPorts&) = delete;
  ControlPorts& operator=(const ControlPorts&) = delete;

  /// A port without a `location` never moves.
  void connect(std::size_t control, const float* location) {
    Control& port = m_controls[control];
    port.location = location == nullptr ? &port.seen : location;
  }

  /// Before a block of `frames`.
  void takeFromHost(std::uint32_t frames);
  /// After it.
  void tellHost();

  /// A parameter has been moved by what runs in this block.
  void movedHere(std::int32_t parameter);
  /// A state has been restored: what the ports read next came with it and is no news, even where
  /// the host had not followed when it was saved. Any thread.
  void restored() { m_restored.store(true, std::memory_order_relaxed); }
  /// The host has been told by the window. Any thread.
  void told(std::size_t control) {
    m_told.fetch_or(std::uint32_t{1} << control, std::memory_order_release);
  }

 private:
  /// Whether the host has still to be asked about a port, and since when.
  enum class Untold : unsigned char { kNothing, kSinceThisBlock, kEarlier };

  struct Control {
    const float* location = &seen;
    float seen = 0.0F;          ///< the port when last looked at
    float held = 0.0F;          ///< the parameter, normalised, when last looked at
    float expected = 0.0F;      ///< where the port belongs
    std::uint32_t patience = 0; ///< frames in which a movement is an echo
    bool movedMeanwhile = false;
    bool movedHere = false; ///< by what runs in this block
    Untold untold = Untold::kNothing;
  };

  float valueOf(std::size_t control) const;
  bool isAtRest() const;
  void noticeAll();
  void notice(std::size_t control);
  void wait(Control& control) const;
  void apply(std::size_t control);
  void tell(std::size_t control);
  void forgetNews();

  plugin::RotaryEffect& m_effect;
  const ChangeRequest* m_request;
  std::uint32_t m_patience; ///< frames
  std::array<Control, kNumControlPorts> m_controls{};
  bool m_isBusy = true; ///< something is still to be told or awaited
  static_assert(kNumControlPorts <= 32);
  std::atomic<std::uint32_t> m_told{0}; ///< a bit for each control
  std::atomic<bool> m_restored{false};
};

} // namespace qlx::lv2
