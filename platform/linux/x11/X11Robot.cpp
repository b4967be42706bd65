// SPDX-License-Identifier: ISC
#include "platform/WindowRobot.h"

#include "platform/PixelView.h"
#include "platform/linux/x11/X11Connection.h"

#include <cstring>

namespace qlx::platform {

namespace {

constexpr std::uint32_t kOpaque = 0xFF000000U;

class X11Robot final : public WindowRobot {
 public:
  explicit X11Robot(std::unique_ptr<X11Connection> connection)
      : m_connection(std::move(connection)), m_xcb(m_connection->xcb()) {}

  std::optional<Picture> picture(std::uintptr_t window, int margin) override {
    const auto area = placeOnScreen(static_cast<xcb_window_t>(window), margin);
    if (!area || area->empty()) return std::nullopt;
    const Reply<xcb_get_image_reply_t> image(xcb_get_image_reply(
        m_xcb,
        xcb_get_image(m_xcb, XCB_IMAGE_FORMAT_Z_PIXMAP, m_connection->screen().root,
                      static_cast<std::int16_t>(area->left), static_cast<std::int16_t>(area->top),
                      static_cast<std::uint16_t>(area->width()),
                      static_cast<std::uint16_t>(area->height()), ~0U),
        nullptr));
    if (image == nullptr) return std::nullopt;
    Picture picture{area->width(), area->height(), {}};
    picture.pixels.resize(static_cast<std::size_t>(picture.width) *
                          static_cast<std::size_t>(picture.height));
    const std::size_t bytes = picture.pixels.size() * sizeof(std::uint32_t);
    if (static_cast<std::size_t>(xcb_get_image_data_length(image.get())) < bytes) {
      return std::nullopt;
    }
    std::memcpy(picture.pixels.data(), xcb_get_image_data(image.get()), bytes);
    for (std::uint32_t& pixel : picture.pixels) pixel |= kOpaque;
    return picture;
  }

  bool click(std::uintptr_t window, int x, int y) override {
    xcb_button_press_event_t event{};
    event.event = static_cast<xcb_window_t>(window);
    event.event_x = static_cast<std::int16_t>(x);
    event.event_y = static_cast<std::int16_t>(y);
    event.root = m_connection->screen().root;
    event.detail = XCB_BUTTON_INDEX_1;
    event.same_screen = 1;
    if (!goToInnermost(event)) return false;
    event.response_type = XCB_BUTTON_PRESS;
    send(event, XCB_EVENT_MASK_BUTTON_PRESS);
    event.response_type = XCB_BUTTON_RELEASE;
    event.state = XCB_BUTTON_MASK_1;
    send(event, XCB_EVENT_MASK_BUTTON_RELEASE);
    return true;
  }

 private:
  std::optional<PixelRect> placeOnScreen(xcb_window_t window, int margin) {
    const xcb_screen_t& screen = m_connection->screen();
    const auto sizeAsked = xcb_get_geometry(m_xcb, window);
    const auto placeAsked = xcb_translate_coordinates(m_xcb, window, screen.root, 0, 0);
    const Reply<xcb_get_geometry_reply_t> size(xcb_get_geometry_reply(m_xcb, sizeAsked, nullptr));
    const Reply<xcb_translate_coordinates_reply_t> place(
        xcb_translate_coordinates_reply(m_xcb, placeAsked, nullptr));
    if (size == nullptr || place == nullptr) return std::nullopt;
    const PixelRect grown{place->dst_x - margin, place->dst_y - margin,
                          place->dst_x + size->width + margin,
                          place->dst_y + size->height + margin};
    return intersection(grown, {0, 0, screen.width_in_pixels, screen.height_in_pixels});
  }

  /// Moves the event from its window into the child under it, as deep as there are any.
  bool goToInnermost(xcb_button_press_event_t& event) {
    for (xcb_window_t from = event.event;;) {
      const Reply<xcb_translate_coordinates_reply_t> place(xcb_translate_coordinates_reply(
          m_xcb, xcb_translate_coordinates(m_xcb, from, event.event, event.event_x, event.event_y),
          nullptr));
      if (place == nullptr) return false;
      event.event_x = place->dst_x;
      event.event_y = place->dst_y;
      if (place->child == XCB_NONE) return true;
      from = event.event;
      event.event = place->child;
    }
  }

  void send(const xcb_button_press_event_t& event, std::uint32_t mask) {
    xcb_send_event(m_xcb, 0, event.event, mask, reinterpret_cast<const char*>(&event));
    xcb_flush(m_xcb);
  }

  std::unique_ptr<X11Connection> m_connection;
  xcb_connection_t* m_xcb;
};

} // namespace

std::unique_ptr<WindowRobot> openWindowRobot() {
  auto connection = X11Connection::open();
  return connection == nullptr ? nullptr : std::make_unique<X11Robot>(std::move(connection));
}

} // namespace qlx::platform
