// SPDX-License-Identifier: ISC
#pragma once

#include "platform/PointerShape.h"

#include <xcb/xcb.h>

#include <array>
#include <csignal>
#include <cstdint>
#include <cstdlib>
#include <memory>
#include <optional>
#include <vector>

namespace qlx::platform {

class X11Window;

/// Keeps a display that hangs up in the middle of a write from ending the host's process: while one
/// lives, SIGPIPE is held back on this thread, and one that came meanwhile is thrown away.
class BrokenPipeGuard {
 public:
  BrokenPipeGuard();
  ~BrokenPipeGuard();
  BrokenPipeGuard(const BrokenPipeGuard&) = delete;
  BrokenPipeGuard& operator=(const BrokenPipeGuard&) = delete;

 private:
  sigset_t m_before{};
  bool m_wasPending = false;
};

/// Owns what XCB allocated with malloc.
struct FreeDeleter {
  void operator()(void* memory) const { std::free(memory); }
};
template <typename T>
using Reply = std::unique_ptr<T, FreeDeleter>;

/// Atoms that the windows use.
struct X11Atoms {
  xcb_atom_t clipboard;
  xcb_atom_t utf8String;
  xcb_atom_t targets;
  xcb_atom_t transfer; ///< our property for incoming text
  xcb_atom_t wmProtocols;
  xcb_atom_t wmDeleteWindow;
  xcb_atom_t netWmName;
  xcb_atom_t netWmWindowType;
  xcb_atom_t netWmWindowTypePopupMenu;
  xcb_atom_t xembedInfo;
  xcb_atom_t netWmIcon;
};

/// A connection to the display of our own, so that neither the host's error handlers nor its event
/// loop ever see anything of us. Errors of single requests are thrown away.
class X11Connection {
 public:
  /// Null when there is no display, or none with 24-bit colours in 32-bit words of this machine's
  /// byte order.
  static std::unique_ptr<X11Connection> open();
  ~X11Connection();
  X11Connection(const X11Connection&) = delete;
  X11Connection& operator=(const X11Connection&) = delete;

  xcb_connection_t* xcb() const { return m_xcb; }
  const xcb_screen_t& screen() const { return *m_screen; }
  xcb_visualid_t visual() const { return m_visual; }
  std::uint8_t depth() const { return m_depth; }
  xcb_colormap_t colormap() const { return m_colormap; }
  const X11Atoms& atoms() const { return m_atoms; }
  bool hasShm() const { return m_hasShm; }
  bool isAlive() const { return xcb_connection_has_error(m_xcb) == 0; }

  /// The display's picture for a shape of the pointer; 0 for the arrow, which is everybody's.
  xcb_cursor_t cursor(PointerShape shape);

  /// The display's setting of dots an inch (the resource Xft.dpi), as a multiple of 96. Nothing
  /// when it isn't set.
  std::optional<double> scale() const;

  void addWindow(X11Window& window) { m_windows.push_back(&window); }
  void removeWindow(X11Window& window);

  /// Reads everything that has come and gives it to the windows it is for.
  void drain();

 private:
  X11Connection(xcb_connection_t* xcb, const xcb_screen_t& screen);
  bool chooseVisual();
  void internAtoms();
  void askForShm();
  void route(const xcb_generic_event_t& event);

  xcb_connection_t* m_xcb;
  const xcb_screen_t* m_screen;
  xcb_visualid_t m_visual = 0;
  std::uint8_t m_depth = 0;
  xcb_colormap_t m_colormap = 0;
  X11Atoms m_atoms{};
  bool m_hasShm = false;
  std::array<xcb_cursor_t, 4> m_cursors{}; ///< by PointerShape; 0: not made yet
  std::vector<X11Window*> m_windows;
};

} // namespace qlx::platform
