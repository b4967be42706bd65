// SPDX-License-Identifier: ISC
#include "brezan/validate/host/ParentWindow.h"

#include "brezan/validate/CheckRun.h"

#include <bit>
#include <chrono>
#include <cstdlib>
#include <memory>
#include <thread>
#include <xcb/xcb.h>

namespace qlx::validate {

namespace {

void sync(xcb_connection_t* connection) {
  std::free(xcb_get_input_focus_reply(connection, xcb_get_input_focus(connection), nullptr));
}

} // namespace

ParentWindow::ParentWindow(int width, int height)
    : m_connection(xcb_connect(nullptr, nullptr)), m_window(0) {
  if (xcb_connection_has_error(m_connection) != 0) {
    xcb_disconnect(m_connection);
    throw CheckSkipped("the display cannot be opened");
  }
  const xcb_screen_t* screen = xcb_setup_roots_iterator(xcb_get_setup(m_connection)).data;
  m_window = xcb_generate_id(m_connection);
  xcb_create_window(m_connection, XCB_COPY_FROM_PARENT, m_window, screen->root, 0, 0,
                    static_cast<std::uint16_t>(width), static_cast<std::uint16_t>(height), 0,
                    XCB_WINDOW_CLASS_INPUT_OUTPUT, XCB_COPY_FROM_PARENT, 0, nullptr);
  xcb_map_window(m_connection, m_window);
  sync(m_connection);
}

ParentWindow::~ParentWindow() { xcb_disconnect(m_connection); }

void* ParentWindow::handle() const { return std::bit_cast<void*>(std::uintptr_t{m_window}); }

void ParentWindow::destroy() {
  xcb_destroy_window(m_connection, m_window);
  sync(m_connection);
}

int ParentWindow::children() const {
  const std::unique_ptr<xcb_query_tree_reply_t, decltype(&std::free)> tree(
      xcb_query_tree_reply(m_connection, xcb_query_tree(m_connection, m_window), nullptr),
      std::free);
  return tree == nullptr ? 0 : xcb_query_tree_children_length(tree.get());
}

bool ParentWindow::becomesEmpty() const {
  for (int i = 0; i < 600; ++i) {
    if (children() == 0) return true;
    std::this_thread::sleep_for(std::chrono::milliseconds(5));
  }
  return false;
}

} // namespace qlx::validate
