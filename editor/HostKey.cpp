// SPDX-License-Identifier: ISC
#include "editor/HostKey.h"

#include "gui/drawing/Utf8.h"

namespace qlx::editor {

namespace {

constexpr char32_t kFirstPrintable = U' ';
constexpr char32_t kDeleteCharacter = 127;
constexpr char32_t kLastCharacter = 0x10FFFF;

std::uint32_t modifiersOf(const sdk::KeyCode& key) {
  const auto bit = [&key](unsigned char host, std::uint32_t ours) {
    return (key.modifiers & host) != 0 ? ours : 0U;
  };
  // Hosts call the key that shortcuts go by "command": Control on most systems.
  return bit(sdk::kModifierShift, platform::kModifierShift) |
         bit(sdk::kModifierAlternate, platform::kModifierAlt) |
         bit(sdk::kModifierCommand | sdk::kModifierControl, platform::kModifierControl);
}

} // namespace

HostKey::HostKey(const sdk::KeyCode& key)
    : m_virtualKey(static_cast<gui::VirtualKey>(key.virt)),
      m_character(static_cast<char32_t>(key.character)), m_modifiers(modifiersOf(key)) {
  if (m_virtualKey == gui::VirtualKey::kSpace) m_character = U' ';
  const bool types =
      m_character >= kFirstPrintable && m_character <= kLastCharacter &&
      m_character != kDeleteCharacter &&
      (m_virtualKey == gui::VirtualKey::kNone || m_virtualKey == gui::VirtualKey::kSpace) &&
      (m_modifiers & platform::kModifierControl) == 0;
  if (types) m_text = gui::toUtf8({&m_character, 1});
}

} // namespace qlx::editor
