// SPDX-License-Identifier: ISC
#include "editor/HostKey.h"

#include "gui/drawing/Utf8.h"

#include <algorithm>
#include <iterator>
#include <utility>

namespace qlx::editor {

namespace {

// Host and toolkit have the same numbers, so a key is cast. (Neither of sdk/ and platform/ may
// include the other.)
constexpr std::pair<gui::VirtualKey, sdk::VirtualKey> kKeys[]{
    {gui::VirtualKey::kNone, sdk::kKeyNone},       {gui::VirtualKey::kBack, sdk::kKeyBack},
    {gui::VirtualKey::kTab, sdk::kKeyTab},         {gui::VirtualKey::kReturn, sdk::kKeyReturn},
    {gui::VirtualKey::kEscape, sdk::kKeyEscape},   {gui::VirtualKey::kSpace, sdk::kKeySpace},
    {gui::VirtualKey::kEnd, sdk::kKeyEnd},         {gui::VirtualKey::kHome, sdk::kKeyHome},
    {gui::VirtualKey::kLeft, sdk::kKeyLeft},       {gui::VirtualKey::kUp, sdk::kKeyUp},
    {gui::VirtualKey::kRight, sdk::kKeyRight},     {gui::VirtualKey::kDown, sdk::kKeyDown},
    {gui::VirtualKey::kPageUp, sdk::kKeyPageUp},   {gui::VirtualKey::kPageDown, sdk::kKeyPageDown},
    {gui::VirtualKey::kEnter, sdk::kKeyEnter},     {gui::VirtualKey::kInsert, sdk::kKeyInsert},
    {gui::VirtualKey::kDelete, sdk::kKeyDelete},   {gui::VirtualKey::kShift, sdk::kKeyShift},
    {gui::VirtualKey::kControl, sdk::kKeyControl}, {gui::VirtualKey::kAlt, sdk::kKeyAlt},
    {gui::VirtualKey::kF10, sdk::kKeyF10},
};
static_assert(std::all_of(std::begin(kKeys), std::end(kKeys), [](const auto& key) {
  return static_cast<int>(key.first) == static_cast<int>(key.second);
}));

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
