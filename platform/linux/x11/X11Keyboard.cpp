// SPDX-License-Identifier: ISC
#include "platform/linux/x11/X11Keyboard.h"

// A member of a record in there has a name that C++ keeps for itself.
#define explicit explicitMember
#include <xcb/xkb.h>
#undef explicit

#include <xkbcommon/xkbcommon-keysyms.h>
#include <xkbcommon/xkbcommon-x11.h>

#include <algorithm>
#include <array>
#include <cstdlib>
#include <string_view>

namespace qlx::platform {

namespace {

struct KeyName {
  xkb_keysym_t symbol;
  VirtualKey key;
};

constexpr std::array<KeyName, 38> kKeyNames{{
    {XKB_KEY_BackSpace, VirtualKey::kBack},
    {XKB_KEY_Tab, VirtualKey::kTab},
    {XKB_KEY_ISO_Left_Tab, VirtualKey::kTab},
    {XKB_KEY_KP_Tab, VirtualKey::kTab},
    {XKB_KEY_Return, VirtualKey::kReturn},
    {XKB_KEY_KP_Enter, VirtualKey::kEnter},
    {XKB_KEY_Escape, VirtualKey::kEscape},
    {XKB_KEY_space, VirtualKey::kSpace},
    {XKB_KEY_KP_Space, VirtualKey::kSpace},
    {XKB_KEY_End, VirtualKey::kEnd},
    {XKB_KEY_KP_End, VirtualKey::kEnd},
    {XKB_KEY_Home, VirtualKey::kHome},
    {XKB_KEY_KP_Home, VirtualKey::kHome},
    {XKB_KEY_Left, VirtualKey::kLeft},
    {XKB_KEY_KP_Left, VirtualKey::kLeft},
    {XKB_KEY_Up, VirtualKey::kUp},
    {XKB_KEY_KP_Up, VirtualKey::kUp},
    {XKB_KEY_Right, VirtualKey::kRight},
    {XKB_KEY_KP_Right, VirtualKey::kRight},
    {XKB_KEY_Down, VirtualKey::kDown},
    {XKB_KEY_KP_Down, VirtualKey::kDown},
    {XKB_KEY_Page_Up, VirtualKey::kPageUp},
    {XKB_KEY_KP_Page_Up, VirtualKey::kPageUp},
    {XKB_KEY_Page_Down, VirtualKey::kPageDown},
    {XKB_KEY_KP_Page_Down, VirtualKey::kPageDown},
    {XKB_KEY_Insert, VirtualKey::kInsert},
    {XKB_KEY_KP_Insert, VirtualKey::kInsert},
    {XKB_KEY_Delete, VirtualKey::kDelete},
    {XKB_KEY_KP_Delete, VirtualKey::kDelete},
    {XKB_KEY_F10, VirtualKey::kF10},
    {XKB_KEY_Menu, VirtualKey::kMenu},
    {XKB_KEY_Shift_L, VirtualKey::kShift},
    {XKB_KEY_Shift_R, VirtualKey::kShift},
    {XKB_KEY_Control_L, VirtualKey::kControl},
    {XKB_KEY_Control_R, VirtualKey::kControl},
    {XKB_KEY_Alt_L, VirtualKey::kAlt},
    {XKB_KEY_Alt_R, VirtualKey::kAlt},
    {XKB_KEY_Meta_L, VirtualKey::kAlt},
}};

VirtualKey virtualKeyOf(xkb_keysym_t symbol) {
  const auto* found = std::find_if(kKeyNames.begin(), kKeyNames.end(),
                                   [symbol](const KeyName& k) { return k.symbol == symbol; });
  return found == kKeyNames.end() ? VirtualKey::kNone : found->key;
}

// The language that the process was started in; the host's own settings stay untouched.
std::string_view localeName() {
  for (const char* variable : {"LC_ALL", "LC_CTYPE", "LANG"}) {
    const char* value = std::getenv(variable);
    if (value != nullptr && *value != '\0') return value;
  }
  return "C";
}

} // namespace

X11Keyboard::X11Keyboard(X11Connection& connection)
    : m_connection(connection), m_context(xkb_context_new(XKB_CONTEXT_NO_FLAGS)) {
  if (m_context == nullptr) return;
  // A keyboard that can't be read must not write into the host's output.
  xkb_context_set_log_level(m_context.get(), XKB_LOG_LEVEL_CRITICAL);
  loadCompose();
  startExtension();
}

// Asks to be told of every change of the map. A program that uses the extension no longer hears of
// it by MappingNotify. The group in force needs no notice: every key event carries it.
void X11Keyboard::startExtension() {
  xcb_connection_t* xcb = m_connection.xcb();
  if (xkb_x11_setup_xkb_extension(xcb, XKB_X11_MIN_MAJOR_XKB_VERSION, XKB_X11_MIN_MINOR_XKB_VERSION,
                                  XKB_X11_SETUP_XKB_EXTENSION_NO_FLAGS, nullptr, nullptr,
                                  &m_extensionCode, nullptr) == 0)
    return;
  m_device = xkb_x11_get_core_keyboard_device_id(xcb);
  if (m_device < 0) return;
  constexpr std::uint16_t kEvents =
      XCB_XKB_EVENT_TYPE_NEW_KEYBOARD_NOTIFY | XCB_XKB_EVENT_TYPE_MAP_NOTIFY;
  constexpr std::uint16_t kMapParts = 0xFF;
  xcb_xkb_select_events(xcb, static_cast<xcb_xkb_device_spec_t>(m_device), kEvents, 0, kEvents,
                        kMapParts, kMapParts, nullptr);
}

void X11Keyboard::handleEvent(const xcb_generic_event_t& event) {
  const std::uint8_t code = event.response_type & 0x7F;
  m_stale = m_stale || code == XCB_MAPPING_NOTIFY || (m_device >= 0 && code == m_extensionCode);
}

void X11Keyboard::load() {
  m_stale = false;
  if (!loadMap()) loadCoreMap();
}

bool X11Keyboard::loadMap() {
  if (m_device < 0) return false;
  m_state.reset();
  m_map.reset(xkb_x11_keymap_new_from_device(m_context.get(), m_connection.xcb(), m_device,
                                             XKB_KEYMAP_COMPILE_NO_FLAGS));
  if (m_map != nullptr) m_state.reset(xkb_state_new(m_map.get()));
  return m_state != nullptr;
}

void X11Keyboard::loadCoreMap() {
  const xcb_setup_t* setup = xcb_get_setup(m_connection.xcb());
  m_coreFirst = setup->min_keycode;
  const auto count = static_cast<std::uint8_t>(setup->max_keycode - setup->min_keycode + 1);
  const Reply<xcb_get_keyboard_mapping_reply_t> reply(xcb_get_keyboard_mapping_reply(
      m_connection.xcb(), xcb_get_keyboard_mapping(m_connection.xcb(), m_coreFirst, count),
      nullptr));
  if (reply == nullptr) return;
  const xcb_keysym_t* symbols = xcb_get_keyboard_mapping_keysyms(reply.get());
  m_corePerKey = reply->keysyms_per_keycode;
  m_coreSymbols.assign(symbols, symbols + m_corePerKey * count);
}

void X11Keyboard::loadCompose() {
  std::string locale(localeName());
  if (locale == "C" || locale == "POSIX" || locale == "C.UTF-8") locale = "en_US.UTF-8";
  m_composeTable.reset(xkb_compose_table_new_from_locale(m_context.get(), locale.c_str(),
                                                         XKB_COMPOSE_COMPILE_NO_FLAGS));
  if (m_composeTable != nullptr)
    m_compose.reset(xkb_compose_state_new(m_composeTable.get(), XKB_COMPOSE_STATE_NO_FLAGS));
}

// The event itself says which modifiers and which group were in force, also when another program
// forwards it.
xkb_keysym_t X11Keyboard::symbolOf(const xcb_key_press_event_t& event) {
  if (m_state == nullptr) return coreSymbolOf(event);
  constexpr unsigned kModifiers = 0xFF;
  constexpr unsigned kGroupShift = 13;
  constexpr unsigned kGroups = 3;
  const auto group = (static_cast<unsigned>(event.state) >> kGroupShift) & kGroups;
  xkb_state_update_mask(m_state.get(), event.state & kModifiers, 0, 0, 0, 0, group);
  return xkb_state_key_get_one_sym(m_state.get(), event.detail);
}

xkb_keysym_t X11Keyboard::coreSymbolOf(const xcb_key_press_event_t& event) const {
  const auto first = static_cast<std::size_t>(event.detail - m_coreFirst) * m_corePerKey;
  if (event.detail < m_coreFirst || m_corePerKey == 0 || first >= m_coreSymbols.size())
    return XKB_KEY_NoSymbol;
  const xkb_keysym_t plain = m_coreSymbols[first];
  xkb_keysym_t shifted = m_corePerKey > 1 ? m_coreSymbols[first + 1] : XKB_KEY_NoSymbol;
  if (shifted == XKB_KEY_NoSymbol) shifted = xkb_keysym_to_upper(plain);
  const bool letter = xkb_keysym_to_upper(plain) != plain;
  const bool shift = (event.state & XCB_MOD_MASK_SHIFT) != 0;
  const bool lock = letter && (event.state & XCB_MOD_MASK_LOCK) != 0;
  return shift != lock ? shifted : plain;
}

std::string X11Keyboard::textOf(xkb_keysym_t symbol) const {
  std::array<char, 64> text{};
  if (m_compose != nullptr &&
      xkb_compose_state_feed(m_compose.get(), symbol) == XKB_COMPOSE_FEED_ACCEPTED) {
    switch (xkb_compose_state_get_status(m_compose.get())) {
    case XKB_COMPOSE_COMPOSING:
    case XKB_COMPOSE_CANCELLED: return {};
    case XKB_COMPOSE_COMPOSED:
      xkb_compose_state_get_utf8(m_compose.get(), text.data(), text.size());
      return text.data();
    case XKB_COMPOSE_NOTHING: break;
    }
  }
  xkb_keysym_to_utf8(symbol, text.data(), text.size());
  // Keys such as Return and Escape have control characters, which type nothing.
  const auto first = static_cast<unsigned char>(text.front());
  return first < 0x20 || first == 0x7F ? std::string() : std::string(text.data());
}

void X11Keyboard::translate(const xcb_key_press_event_t& from, WindowEvent& to) {
  if (m_stale) load();
  const xkb_keysym_t symbol = symbolOf(from);
  to.key = virtualKeyOf(symbol);
  to.character = static_cast<char32_t>(xkb_keysym_to_utf32(symbol));
  if (to.character < 0x20 || to.character == 0x7F) to.character = 0;
  const bool command = (from.state & XCB_MOD_MASK_CONTROL) != 0;
  if (to.type == WindowEventType::kKeyDown && !command) to.text = textOf(symbol);
}

} // namespace qlx::platform
