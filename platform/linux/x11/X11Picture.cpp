// SPDX-License-Identifier: ISC
#include "platform/linux/x11/X11Picture.h"

#include <sys/ipc.h>
#include <sys/shm.h>

#include <algorithm>
#include <cstring>

namespace qlx::platform {

X11Picture::X11Picture(X11Connection& connection, xcb_window_t window, int width, int height)
    : m_connection(connection), m_window(window), m_width(width), m_height(height),
      m_gc(xcb_generate_id(connection.xcb())) {
  const std::uint32_t noExposures = 0;
  xcb_create_gc(connection.xcb(), m_gc, window, XCB_GC_GRAPHICS_EXPOSURES, &noExposures);
  if (connection.hasShm()) share();
}

X11Picture::~X11Picture() {
  if (m_shared != nullptr) {
    xcb_shm_detach(m_connection.xcb(), m_segment);
    shmdt(m_shared);
  }
  xcb_free_gc(m_connection.xcb(), m_gc);
}

bool X11Picture::share() {
  const std::size_t size = static_cast<std::size_t>(m_width) * static_cast<std::size_t>(m_height) *
                           sizeof(std::uint32_t);
  const int id = shmget(IPC_PRIVATE, size, IPC_CREAT | 0600);
  if (id < 0) return false;
  void* memory = shmat(id, nullptr, 0);
  bool attached = false;
  if (reinterpret_cast<std::intptr_t>(memory) != -1) {
    m_segment = xcb_generate_id(m_connection.xcb());
    const auto asked =
        xcb_shm_attach_checked(m_connection.xcb(), m_segment, static_cast<std::uint32_t>(id), 0);
    // A display on another machine, or in another container, can't.
    const Reply<xcb_generic_error_t> error(xcb_request_check(m_connection.xcb(), asked));
    attached = error == nullptr && m_connection.isAlive();
    if (attached)
      m_shared = static_cast<std::uint32_t*>(memory);
    else
      shmdt(memory);
  }
  // The system removes it with its last user, even after a crash.
  shmctl(id, IPC_RMID, nullptr);
  return attached;
}

void X11Picture::put(const PixelView& picture, const PixelRect& area) {
  if (area.empty()) return;
  if (m_shared != nullptr)
    putShared(picture, area);
  else
    putCopied(picture, area);
}

void X11Picture::putShared(const PixelView& picture, const PixelRect& area) {
  const auto bytes = static_cast<std::size_t>(area.width()) * sizeof(std::uint32_t);
  for (int y = area.top; y < area.bottom; ++y) {
    const std::ptrdiff_t at = static_cast<std::ptrdiff_t>(y) * m_width + area.left;
    std::memcpy(m_shared + at, picture.pixels + at, bytes);
  }
  xcb_shm_put_image(m_connection.xcb(), m_window, m_gc, static_cast<std::uint16_t>(m_width),
                    static_cast<std::uint16_t>(m_height), static_cast<std::uint16_t>(area.left),
                    static_cast<std::uint16_t>(area.top), static_cast<std::uint16_t>(area.width()),
                    static_cast<std::uint16_t>(area.height()), static_cast<std::int16_t>(area.left),
                    static_cast<std::int16_t>(area.top), m_connection.depth(),
                    XCB_IMAGE_FORMAT_Z_PIXMAP, 0, m_segment, 0);
}

void X11Picture::putCopied(const PixelView& picture, const PixelRect& area) {
  // A request has a largest size, counted in words; its head takes six.
  constexpr std::uint32_t kLargestUsed = 1U << 16;
  const std::uint32_t words =
      std::min(xcb_get_maximum_request_length(m_connection.xcb()), kLargestUsed) - 8;
  const int rows = std::max(1, static_cast<int>(words) / area.width());
  for (int top = area.top; top < area.bottom; top += rows) {
    const int bottom = std::min(area.bottom, top + rows);
    m_packed.clear();
    for (int y = top; y < bottom; ++y) {
      const std::uint32_t* row = picture.pixels + static_cast<std::ptrdiff_t>(y) * m_width;
      m_packed.insert(m_packed.end(), row + area.left, row + area.right);
    }
    xcb_put_image(m_connection.xcb(), XCB_IMAGE_FORMAT_Z_PIXMAP, m_window, m_gc,
                  static_cast<std::uint16_t>(area.width()),
                  static_cast<std::uint16_t>(bottom - top), static_cast<std::int16_t>(area.left),
                  static_cast<std::int16_t>(top), 0, m_connection.depth(),
                  static_cast<std::uint32_t>(m_packed.size() * sizeof(std::uint32_t)),
                  reinterpret_cast<const std::uint8_t*>(m_packed.data()));
  }
}

} // namespace qlx::platform
