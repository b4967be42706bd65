// SPDX-License-Identifier: ISC
#include "gui/CKeyCode.h"

namespace qlx::gui {

KeyAction keyActionOf(const CKeyCode& key) {
  if ((key.modifiers & (platform::kModifierAlt | platform::kModifierSuper)) != 0)
    return KeyAction::kNone;
  const bool control = (key.modifiers & platform::kModifierControl) != 0;
  const auto plain = [control](KeyAction action) { return control ? KeyAction::kNone : action; };
  switch (key.virtualKey) {
  case VirtualKey::kReturn:
  case VirtualKey::kEnter: return KeyAction::kPress;
  case VirtualKey::kLeft:
  case VirtualKey::kDown: return plain(KeyAction::kStepDown);
  case VirtualKey::kRight:
  case VirtualKey::kUp: return plain(KeyAction::kStepUp);
  case VirtualKey::kPageDown: return plain(KeyAction::kPageDown);
  case VirtualKey::kPageUp: return plain(KeyAction::kPageUp);
  case VirtualKey::kHome: return plain(KeyAction::kFirst);
  case VirtualKey::kEnd: return plain(KeyAction::kLast);
  default: return KeyAction::kNone;
  }
}

} // namespace qlx::gui
