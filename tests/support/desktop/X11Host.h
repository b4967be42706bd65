// SPDX-License-Identifier: ISC
#pragma once

#include "platform/NativeWindow.h"

#include <gtest/gtest.h>
#include <xcb/xcb.h>

#include <array>
#include <cstdlib>
#include <memory>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace qlx::test {

/// A reply of xcb's, which is to be freed.
template <typename T>
std::unique_ptr<T, void (*)(void*)> owned(T* reply) {
  return {reply, std::free};
}

/// Plays the host: a connection of its own and a window that editors are put into.
class X11Host {
 public:
  /// `managed`: a window manager may put a frame around the window; of keys it hears the presses
  /// only.
  explicit X11Host(platform::PixelRect place, bool managed = false)
      : m_xcb(xcb_connect(nullptr, nullptr)), m_window(xcb_generate_id(m_xcb)) {
    m_root = xcb_setup_roots_iterator(xcb_get_setup(m_xcb)).data->root;
    std::uint32_t keys = XCB_EVENT_MASK_KEY_PRESS;
    if (!managed) keys |= XCB_EVENT_MASK_KEY_RELEASE;
    const std::array<std::uint32_t, 2> values{managed ? 0U : 1U, keys};
    xcb_create_window(
        m_xcb, XCB_COPY_FROM_PARENT, m_window, m_root, static_cast<std::int16_t>(place.left),
        static_cast<std::int16_t>(place.top), static_cast<std::uint16_t>(place.right - place.left),
        static_cast<std::uint16_t>(place.bottom - place.top), 0, XCB_WINDOW_CLASS_INPUT_OUTPUT,
        XCB_COPY_FROM_PARENT, XCB_CW_OVERRIDE_REDIRECT | XCB_CW_EVENT_MASK, values.data());
    xcb_map_window(m_xcb, m_window);
    sync();
  }
  ~X11Host() { xcb_disconnect(m_xcb); }
  X11Host(const X11Host&) = delete;
  X11Host& operator=(const X11Host&) = delete;

  xcb_connection_t* xcb() const { return m_xcb; }
  xcb_window_t window() const { return m_window; }
  xcb_window_t root() const { return m_root; }

  void sync() { owned(xcb_get_input_focus_reply(m_xcb, xcb_get_input_focus(m_xcb), nullptr)); }
  void focus(xcb_window_t window) {
    xcb_set_input_focus(m_xcb, XCB_INPUT_FOCUS_PARENT, window, XCB_CURRENT_TIME);
    sync();
  }
  xcb_window_t focused() {
    return owned(xcb_get_input_focus_reply(m_xcb, xcb_get_input_focus(m_xcb), nullptr))->focus;
  }
  /// Where the window lies on the screen, inside a window manager's frame.
  std::pair<int, int> corner() {
    const auto at = owned(xcb_translate_coordinates_reply(
        m_xcb, xcb_translate_coordinates(m_xcb, m_window, m_root, 0, 0), nullptr));
    return {at->dst_x, at->dst_y};
  }
  /// The desktop's settings, as the session's programs leave them at the display.
  void setResources(std::string_view text) {
    xcb_change_property(m_xcb, XCB_PROP_MODE_REPLACE, m_root, XCB_ATOM_RESOURCE_MANAGER,
                        XCB_ATOM_STRING, 8, static_cast<std::uint32_t>(text.size()), text.data());
    sync();
  }
  void destroyWindow() {
    xcb_destroy_window(m_xcb, m_window);
    sync();
  }
  void moveWindow(std::uint32_t x, std::uint32_t y) {
    const std::array<std::uint32_t, 2> place{x, y};
    xcb_configure_window(m_xcb, m_window, XCB_CONFIG_WINDOW_X | XCB_CONFIG_WINDOW_Y, place.data());
    sync();
  }
  void resizeWindow(int width, int height) {
    const std::array<std::uint32_t, 2> size{static_cast<std::uint32_t>(width),
                                            static_cast<std::uint32_t>(height)};
    xcb_configure_window(m_xcb, m_window, XCB_CONFIG_WINDOW_WIDTH | XCB_CONFIG_WINDOW_HEIGHT,
                         size.data());
    sync();
  }
  void warp(std::int16_t x, std::int16_t y) {
    xcb_warp_pointer(m_xcb, XCB_NONE, m_window, 0, 0, 0, 0, x, y);
    sync();
  }
  std::vector<std::uint32_t> pixels(xcb_window_t window, std::uint16_t width,
                                    std::uint16_t height) {
    const auto image = owned(xcb_get_image_reply(
        m_xcb, xcb_get_image(m_xcb, XCB_IMAGE_FORMAT_Z_PIXMAP, window, 0, 0, width, height, ~0U),
        nullptr));
    if (image == nullptr) return {};
    const auto* words = reinterpret_cast<const std::uint32_t*>(xcb_get_image_data(image.get()));
    std::vector<std::uint32_t> result(words, words + width * height);
    for (std::uint32_t& pixel : result) pixel |= 0xFF000000U;
    return result;
  }
  std::size_t children(xcb_window_t window) {
    const auto tree = owned(xcb_query_tree_reply(m_xcb, xcb_query_tree(m_xcb, window), nullptr));
    return tree == nullptr ? 0
                           : static_cast<std::size_t>(xcb_query_tree_children_length(tree.get()));
  }
  /// The button and key records have one layout.
  void send(std::uintptr_t to, std::uint8_t type, std::uint8_t detail, std::int16_t x,
            std::int16_t y, std::uint16_t state, xcb_timestamp_t time = 0,
            std::uint32_t toWhoAskedFor = XCB_EVENT_MASK_NO_EVENT) {
    xcb_button_press_event_t event{};
    event.response_type = type;
    event.detail = detail;
    event.time = time;
    event.root = root();
    event.event = static_cast<xcb_window_t>(to);
    event.event_x = x;
    event.event_y = y;
    event.state = state;
    event.same_screen = 1;
    xcb_send_event(m_xcb, 0, event.event, toWhoAskedFor, reinterpret_cast<const char*>(&event));
    sync();
  }
  /// The keys that came to the window since the last call: "code" pressed, "-code" released.
  std::string keys() {
    sync();
    std::string all;
    while (const auto event = owned(xcb_poll_for_event(m_xcb))) {
      const auto type = event->response_type & 0x7F;
      if (type != XCB_KEY_PRESS && type != XCB_KEY_RELEASE) continue;
      const auto& key = reinterpret_cast<const xcb_key_press_event_t&>(*event);
      EXPECT_EQ(key.event, m_window);
      all += (all.empty() ? "" : " ") + std::string(type == XCB_KEY_PRESS ? "" : "-") +
             std::to_string(key.detail);
    }
    return all;
  }

 private:
  xcb_connection_t* m_xcb;
  xcb_window_t m_window;
  xcb_window_t m_root = 0;
};

} // namespace qlx::test
