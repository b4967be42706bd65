// SPDX-License-Identifier: ISC
#pragma once

#include "platform/WindowEvent.h"
#include "platform/linux/x11/X11Connection.h"

#include <array>
#include <string>
#include <string_view>

namespace qlx::platform {

/// Text offered to and taken from other programs by one window. Never waits for them.
class X11Selections {
 public:
  X11Selections(X11Connection& connection, xcb_window_t window)
      : m_connection(connection), m_window(window) {}

  void offer(Selection selection, std::string_view text);
  void request(Selection selection);

  /// Another program asks for what was offered.
  void answer(const xcb_selection_request_event_t& event);
  /// What was asked for has come: the text, empty when there is none, or too much of it to come in
  /// one piece.
  std::string received(const xcb_selection_notify_event_t& event);

 private:
  xcb_atom_t atomOf(Selection selection) const;

  X11Connection& m_connection;
  xcb_window_t m_window;
  std::array<std::string, 2> m_offered;
};

} // namespace qlx::platform
