// SPDX-License-Identifier: ISC
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

  /// To be called with events of the keyboard extension and MappingNotify: after a change of the
  /// keyboard's map it is read anew at the next key.
  void handleEvent(const xcb_generic_event_t& event);

  /// Fills in key, character and, for a press, text.
  void translate(const xcb_key_press_event_t& from, WindowEvent& to);

 private:
  template <typename T, void (*Release)(T*)>
  struct Releaser {
    void operator()(T* object) const { Release(object); }
  };
  template <typename T, void (*Release)(T*)>
  using Owned = std::unique_ptr<T, Releaser<T, Release>>;

  void startExtension();
  void load();
  bool loadMap();
  void loadCoreMap();
  void loadCompose();
  xkb_keysym_t symbolOf(const xcb_key_press_event_t& event);
  xkb_keysym_t coreSymbolOf(const xcb_key_press_event_t& event) const;
  std::string textOf(xkb_keysym_t symbol) const;

  X11Connection& m_connection;
  Owned<xkb_context, xkb_context_unref> m_context;
  Owned<xkb_keymap, xkb_keymap_unref> m_map;
  Owned<xkb_state, xkb_state_unref> m_state;
  Owned<xkb_compose_table, xkb_compose_table_unref> m_composeTable;
  Owned<xkb_compose_state, xkb_compose_state_unref> m_compose;
  std::vector<xcb_keysym_t> m_coreSymbols;
  std::size_t m_corePerKey = 0;
  xcb_keycode_t m_coreFirst = 0;
  std::int32_t m_device = -1;       ///< the extension's keyboard; negative without the extension
  std::uint8_t m_extensionCode = 0; ///< of the extension's events
  bool m_stale = true;
};

} // namespace qlx::platform
