// SPDX-License-Identifier: ISC
#pragma once

#include "live/EffectPlayer.h"

#include <functional>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace qlx::live {

/// Which controller moves which parameter: one parameter for a controller, one controller for a
/// parameter.
class MidiMap {
 public:
  using Find = std::function<std::optional<int>(std::string_view name)>;
  using Name = std::function<std::string(int parameter)>;

  /// Reads lines "CHANNEL CONTROLLER NAME" of decimal numbers; '#' begins a comment, and of two
  /// lines for the same controller or parameter the last counts. Lines that say nothing of the kind
  /// are left out, with a sentence each in `faults` that begins with the line's number.
  static MidiMap parse(std::string_view text, const Find& find, std::vector<std::string>& faults);
  std::string text(const Name& name) const;

  void assign(Controller controller, int parameter);
  void forget(int parameter);
  std::optional<Controller> controllerOf(int parameter) const;
  const std::map<Controller, int>& entries() const { return m_entries; }

  /// Makes the player's assignments these.
  void apply(EffectPlayer& player) const;

 private:
  std::map<Controller, int> m_entries;
};

} // namespace qlx::live
