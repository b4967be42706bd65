// SPDX-License-Identifier: ISC
#pragma once

#include "gui/CKeyCode.h"
#include "sdk/VstTypes.h"

#include <string>

namespace qlx::editor {

/// A key that the host hands over instead of the window system.
class HostKey {
 public:
  explicit HostKey(const sdk::KeyCode& key);

  /// The same key in the toolkit's terms; valid as long as this is.
  gui::CKeyCode code() const { return {m_virtualKey, m_character, m_modifiers, m_text}; }

 private:
  gui::VirtualKey m_virtualKey;
  char32_t m_character;
  std::uint32_t m_modifiers;
  std::string m_text;
};

} // namespace qlx::editor
