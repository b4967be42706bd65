#pragma once

#include "platform/WindowEvent.h"
#include "platform/linux/x11/X11Connection.h"

#include <xkbcommon/xkbcommon-compose.h>
#include <xkbcommon/xkbcommon.h>

#include <memory>
#include <string>
#include <vector>

namespace qlx::platform {

/// Turns key events into keys and text with the display's keyboard map and the user's compose
/// sequences. A display without the keyboard extension gives plain keys, without groups.
class X11Keyboard {
 public:
  explicit X11Keyboard(X11Connection& connection);

  /// Fills in key, character and, for a press, text.
  void translate(const xcb_key_press_event_t& from, WindowEvent& to);

 private:
  template <typename T, void (*Release)(T*)>
  struct Releaser {
    void operator()(T* object) const { Release(object); }
  };
  template <typename T, void (*Release)(T*)>
  using Owned = std::unique_ptr<T, Releaser<T, Release>>;

  void loadMap(X11Connection& connection);
  void loadCoreMap(X11Connection& connection);
  void loadCompose();
  xkb_keysym_t symbolOf(const xcb_key_press_event_t& event);
  xkb_keysym_t coreSymbolOf(const xcb_key_press_event_t& event) const;
  std::string textOf(xkb_keysym_t symbol) const;

  Owned<xkb_context, xkb_context_unref> m_context;
  Owned<xkb_keymap, xkb_keymap_unref> m_map;
  Owned<xkb_state, xkb_state_unref> m_state;
  Owned<xkb_compose_table, xkb_compose_table_unref> m_composeTable;
  Owned<xkb_compose_state, xkb_compose_state_unref> m_compose;
  std::vector<xcb_keysym_t> m_coreSymbols;
  std::size_t m_corePerKey = 0;
  xcb_keycode_t m_coreFirst = 0;
};

} // namespace qlx::platform
