// SPDX-License-Identifier: ISC
#pragma once

#include "platform/PixelView.h"
#include "platform/linux/x11/X11Connection.h"

#include <xcb/shm.h>

#include <vector>

namespace qlx::platform {

/// Sends pixels to a window: through memory shared with the display, or through the connection
/// where there is none.
class X11Picture {
 public:
  X11Picture(X11Connection& connection, xcb_window_t window, int width, int height);
  ~X11Picture();
  X11Picture(const X11Picture&) = delete;
  X11Picture& operator=(const X11Picture&) = delete;

  /// The area lies inside the picture, and the picture has the window's size.
  void put(const PixelView& picture, const PixelRect& area);

 private:
  bool share();
  void putShared(const PixelView& picture, const PixelRect& area);
  void putCopied(const PixelView& picture, const PixelRect& area);

  X11Connection& m_connection;
  xcb_window_t m_window;
  int m_width;
  int m_height;
  xcb_gcontext_t m_gc;
  xcb_shm_seg_t m_segment = 0;
  std::uint32_t* m_shared = nullptr;
  std::vector<std::uint32_t> m_packed;
};

} // namespace qlx::platform
