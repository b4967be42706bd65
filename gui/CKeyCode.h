// SPDX-License-Identifier: ISC
#pragma once

#include "platform/WindowEvent.h"

#include <cstdint>
#include <string_view>

namespace qlx::gui {

using platform::VirtualKey;

/// One key press or release.
struct CKeyCode {
  VirtualKey virtualKey = VirtualKey::kNone;
  char32_t character = 0;      ///< 0 when the key has none
  std::uint32_t modifiers = 0; ///< platform::Modifier bits
  std::string_view text;       ///< what the key types (UTF-8), valid during the call only
};

/// What a key does to the control that the keyboard has been brought to.
enum class KeyAction : std::uint8_t {
  kNone,
  kStepDown, ///< Left, Down
  kStepUp,   ///< Right, Up
  kPageDown,
  kPageUp,
  kFirst, ///< Home
  kLast,  ///< End
  kPress, ///< Enter
};

/// None for keys that mean something else: with Alt or the system's own key, and with Control all
/// but presses. The space bar starts and stops the hosts' transport and is left to them.
KeyAction keyActionOf(const CKeyCode& key);

} // namespace qlx::gui
