// SPDX-License-Identifier: ISC
#include "platform/linux/x11/X11Connection.h"

#include "platform/linux/x11/X11Window.h"

#include <xcb/shm.h>

#include <algorithm>
#include <array>
#include <bit>
#include <charconv>
#include <ctime>
#include <string_view>

namespace qlx::platform {

namespace {

constexpr std::uint8_t kEventCode = 0x7F; // the top bit only says that another program sent it

sigset_t brokenPipe() {
  sigset_t set;
  sigemptyset(&set);
  sigaddset(&set, SIGPIPE);
  return set;
}

bool isPending() {
  sigset_t pending;
  return sigpending(&pending) == 0 && sigismember(&pending, SIGPIPE) == 1;
}

bool isOurColour(const xcb_visualtype_t& visual) {
  return visual._class == XCB_VISUAL_CLASS_TRUE_COLOR && visual.red_mask == 0xFF0000U &&
         visual.green_mask == 0xFF00U && visual.blue_mask == 0xFFU;
}

} // namespace

BrokenPipeGuard::BrokenPipeGuard() : m_wasPending(isPending()) {
  const sigset_t set = brokenPipe();
  pthread_sigmask(SIG_BLOCK, &set, &m_before);
}

BrokenPipeGuard::~BrokenPipeGuard() {
  if (!m_wasPending && isPending()) {
    const sigset_t set = brokenPipe();
    const timespec now{};
    sigtimedwait(&set, nullptr, &now);
  }
  pthread_sigmask(SIG_SETMASK, &m_before, nullptr);
}

std::unique_ptr<X11Connection> X11Connection::open() {
  int screenNumber = 0;
  xcb_connection_t* xcb = xcb_connect(nullptr, &screenNumber);
  const xcb_screen_t* screen = nullptr;
  if (xcb_connection_has_error(xcb) == 0) {
    xcb_screen_iterator_t screens = xcb_setup_roots_iterator(xcb_get_setup(xcb));
    for (; screens.rem > 0 && screenNumber > 0; --screenNumber) xcb_screen_next(&screens);
    if (screens.rem > 0) screen = screens.data;
  }
  if (screen == nullptr) {
    xcb_disconnect(xcb);
    return nullptr;
  }
  std::unique_ptr<X11Connection> connection(new X11Connection(xcb, *screen));
  if (!connection->chooseVisual()) return nullptr;
  connection->internAtoms();
  connection->askForShm();
  return connection;
}

X11Connection::X11Connection(xcb_connection_t* xcb, const xcb_screen_t& screen)
    : m_xcb(xcb), m_screen(&screen) {}

X11Connection::~X11Connection() {
  const BrokenPipeGuard guard;
  xcb_disconnect(m_xcb);
}

bool X11Connection::chooseVisual() {
  const xcb_setup_t* setup = xcb_get_setup(m_xcb);
  const auto order = std::endian::native == std::endian::little ? XCB_IMAGE_ORDER_LSB_FIRST
                                                                : XCB_IMAGE_ORDER_MSB_FIRST;
  if (setup->image_byte_order != order) return false;
  xcb_depth_iterator_t depths = xcb_screen_allowed_depths_iterator(m_screen);
  for (; depths.rem > 0; xcb_depth_next(&depths)) {
    if (depths.data->depth != 24) continue;
    const xcb_visualtype_t* visuals = xcb_depth_visuals(depths.data);
    for (int i = 0; i < xcb_depth_visuals_length(depths.data); ++i) {
      // The screen's own is best, any other will do.
      const bool better = m_visual == 0 || visuals[i].visual_id == m_screen->root_visual;
      if (isOurColour(visuals[i]) && better) m_visual = visuals[i].visual_id;
    }
  }
  const xcb_format_t* formats = xcb_setup_pixmap_formats(setup);
  const int count = xcb_setup_pixmap_formats_length(setup);
  const bool wholeWords = std::any_of(formats, formats + count, [](const xcb_format_t& f) {
    return f.depth == 24 && f.bits_per_pixel == 32;
  });
  if (m_visual == 0 || !wholeWords) return false;
  m_depth = 24;
  m_colormap = m_screen->default_colormap;
  if (m_visual != m_screen->root_visual) {
    m_colormap = xcb_generate_id(m_xcb);
    xcb_create_colormap(m_xcb, XCB_COLORMAP_ALLOC_NONE, m_colormap, m_screen->root, m_visual);
  }
  return true;
}

void X11Connection::internAtoms() {
  struct Wanted {
    std::string_view name;
    xcb_atom_t X11Atoms::*place;
  };
  constexpr std::array<Wanted, 11> kWanted{{
      {"CLIPBOARD", &X11Atoms::clipboard},
      {"UTF8_STRING", &X11Atoms::utf8String},
      {"TARGETS", &X11Atoms::targets},
      {"PLUGIN_TEXT_TRANSFER", &X11Atoms::transfer},
      {"WM_PROTOCOLS", &X11Atoms::wmProtocols},
      {"WM_DELETE_WINDOW", &X11Atoms::wmDeleteWindow},
      {"_NET_WM_NAME", &X11Atoms::netWmName},
      {"_NET_WM_WINDOW_TYPE", &X11Atoms::netWmWindowType},
      {"_NET_WM_WINDOW_TYPE_POPUP_MENU", &X11Atoms::netWmWindowTypePopupMenu},
      {"_XEMBED_INFO", &X11Atoms::xembedInfo},
      {"_NET_WM_ICON", &X11Atoms::netWmIcon},
  }};
  std::array<xcb_intern_atom_cookie_t, kWanted.size()> asked{};
  for (std::size_t i = 0; i < kWanted.size(); ++i)
    asked[i] = xcb_intern_atom(m_xcb, 0, static_cast<std::uint16_t>(kWanted[i].name.size()),
                               kWanted[i].name.data());
  for (std::size_t i = 0; i < kWanted.size(); ++i) {
    const Reply<xcb_intern_atom_reply_t> reply(xcb_intern_atom_reply(m_xcb, asked[i], nullptr));
    if (reply != nullptr) m_atoms.*kWanted[i].place = reply->atom;
  }
}

void X11Connection::askForShm() {
  const xcb_query_extension_reply_t* extension = xcb_get_extension_data(m_xcb, &xcb_shm_id);
  m_hasShm = extension != nullptr && extension->present != 0;
}

// From the font that every display has.
xcb_cursor_t X11Connection::cursor(PointerShape shape) {
  constexpr std::array<std::uint16_t, 4> kGlyphs{0, 116, 60,
                                                 152}; // sb_v_double_arrow, hand2, xterm
  const auto index = static_cast<std::size_t>(shape);
  xcb_cursor_t& cursor = m_cursors[index];
  if (shape == PointerShape::kArrow || cursor != 0) return cursor;
  constexpr std::string_view kName = "cursor";
  const xcb_font_t font = xcb_generate_id(m_xcb);
  cursor = xcb_generate_id(m_xcb);
  xcb_open_font(m_xcb, font, static_cast<std::uint16_t>(kName.size()), kName.data());
  // A glyph is followed by its mask: black, with a white edge.
  xcb_create_glyph_cursor(m_xcb, cursor, font, font, kGlyphs[index],
                          static_cast<std::uint16_t>(kGlyphs[index] + 1), 0, 0, 0, 0xFFFF, 0xFFFF,
                          0xFFFF);
  xcb_close_font(m_xcb, font);
  return cursor;
}

// The resources are lines of "name:<tab>value".
std::optional<double> X11Connection::scale() const {
  constexpr std::string_view kName = "Xft.dpi:";
  constexpr double kPlainDpi = 96.0;
  constexpr std::uint32_t kMostWords = 1U << 16;
  const BrokenPipeGuard guard;
  const Reply<xcb_get_property_reply_t> reply(
      xcb_get_property_reply(m_xcb,
                             xcb_get_property(m_xcb, 0, m_screen->root, XCB_ATOM_RESOURCE_MANAGER,
                                              XCB_ATOM_STRING, 0, kMostWords),
                             nullptr));
  if (reply == nullptr || reply->format != 8) return std::nullopt;
  std::string_view rest(static_cast<const char*>(xcb_get_property_value(reply.get())),
                        static_cast<std::size_t>(xcb_get_property_value_length(reply.get())));
  while (!rest.empty()) {
    std::string_view line = rest.substr(0, rest.find('\n'));
    rest.remove_prefix(std::min(line.size() + 1, rest.size()));
    if (!line.starts_with(kName)) continue;
    line.remove_prefix(std::min(line.find_first_not_of(" \t", kName.size()), line.size()));
    double dpi = 0.0;
    const auto read = std::from_chars(line.data(), line.data() + line.size(), dpi);
    if (read.ec == std::errc() && dpi > 0.0) return dpi / kPlainDpi;
  }
  return std::nullopt;
}

void X11Connection::removeWindow(X11Window& window) { std::erase(m_windows, &window); }

void X11Connection::drain() {
  while (const Reply<xcb_generic_event_t> event{xcb_poll_for_event(m_xcb)}) {
    const std::uint8_t code = event->response_type & kEventCode;
    if (code != 0) route(*event); // 0 is an error of one of our requests
  }
}

namespace {

// The window that an event is for; 0 for none.
xcb_window_t targetOf(const xcb_generic_event_t& event) {
  const auto as = [&event]<typename E>() { return reinterpret_cast<const E*>(&event); };
  switch (event.response_type & kEventCode) {
  case XCB_KEY_PRESS:
  case XCB_KEY_RELEASE: return as.operator()<xcb_key_press_event_t>()->event;
  case XCB_BUTTON_PRESS:
  case XCB_BUTTON_RELEASE: return as.operator()<xcb_button_press_event_t>()->event;
  case XCB_MOTION_NOTIFY: return as.operator()<xcb_motion_notify_event_t>()->event;
  case XCB_ENTER_NOTIFY:
  case XCB_LEAVE_NOTIFY: return as.operator()<xcb_enter_notify_event_t>()->event;
  case XCB_FOCUS_IN:
  case XCB_FOCUS_OUT: return as.operator()<xcb_focus_in_event_t>()->event;
  case XCB_EXPOSE: return as.operator()<xcb_expose_event_t>()->window;
  case XCB_DESTROY_NOTIFY: return as.operator()<xcb_destroy_notify_event_t>()->window;
  case XCB_CLIENT_MESSAGE: return as.operator()<xcb_client_message_event_t>()->window;
  case XCB_SELECTION_REQUEST: return as.operator()<xcb_selection_request_event_t>()->owner;
  case XCB_SELECTION_NOTIFY: return as.operator()<xcb_selection_notify_event_t>()->requestor;
  default: return 0;
  }
}

// Changes of the keyboard, as the core protocol and as the keyboard extension tell them.
bool isForAll(const xcb_generic_event_t& event) {
  constexpr std::uint8_t kFirstOfExtensions = 64;
  const std::uint8_t code = event.response_type & kEventCode;
  return code == XCB_MAPPING_NOTIFY || code >= kFirstOfExtensions;
}

} // namespace

void X11Connection::route(const xcb_generic_event_t& event) {
  const bool forAll = isForAll(event);
  const xcb_window_t target = targetOf(event);
  // By number: a listener may open or close windows meanwhile.
  for (std::size_t i = 0; i < m_windows.size(); ++i)
    if (forAll || m_windows[i]->number() == target) m_windows[i]->handleEvent(event);
}

} // namespace qlx::platform
