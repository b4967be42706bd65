// SPDX-License-Identifier: ISC
#pragma once

#include <cstdint>

struct xcb_connection_t;

namespace qlx::validate {

/// A host's window for an editor, on the display of the environment, through a connection of its
/// own. Throws CheckSkipped when the display cannot be opened.
class ParentWindow {
 public:
  ParentWindow(int width, int height);
  ~ParentWindow();
  ParentWindow(const ParentWindow&) = delete;
  ParentWindow& operator=(const ParentWindow&) = delete;

  /// As the interface hands it to effects.
  void* handle() const;
  void destroy();
  /// Windows inside it.
  int children() const;
  /// Whether there is none, if need be after a while: what an effect has asked the server to
  /// destroy may still be there.
  bool becomesEmpty() const;

 private:
  xcb_connection_t* m_connection;
  std::uint32_t m_window;
};

} // namespace qlx::validate
