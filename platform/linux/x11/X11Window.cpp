// SPDX-License-Identifier: ISC
#include "platform/linux/x11/X11Window.h"

#include <algorithm>
#include <array>
#include <cctype>
#include <cstdlib>
#include <string>
#include <vector>

namespace qlx::platform {

namespace {

constexpr std::uint32_t kEvents = XCB_EVENT_MASK_EXPOSURE | XCB_EVENT_MASK_STRUCTURE_NOTIFY |
                                  XCB_EVENT_MASK_BUTTON_PRESS | XCB_EVENT_MASK_BUTTON_RELEASE |
                                  XCB_EVENT_MASK_POINTER_MOTION | XCB_EVENT_MASK_ENTER_WINDOW |
                                  XCB_EVENT_MASK_LEAVE_WINDOW | XCB_EVENT_MASK_FOCUS_CHANGE;
constexpr std::uint32_t kKeyEvents = XCB_EVENT_MASK_KEY_PRESS | XCB_EVENT_MASK_KEY_RELEASE;

constexpr xcb_timestamp_t kDoubleClickMilliseconds = 400;
constexpr int kDoubleClickPixels = 4;

std::uint32_t modifiersOf(std::uint16_t state) {
  return ((state & XCB_MOD_MASK_SHIFT) != 0 ? kModifierShift : 0U) |
         ((state & XCB_MOD_MASK_CONTROL) != 0 ? kModifierControl : 0U) |
         ((state & XCB_MOD_MASK_1) != 0 ? kModifierAlt : 0U) |
         ((state & XCB_MOD_MASK_4) != 0 ? kModifierSuper : 0U);
}

std::uint32_t buttonsOf(std::uint16_t state) {
  return ((state & XCB_BUTTON_MASK_1) != 0 ? kPointerLeft : 0U) |
         ((state & XCB_BUTTON_MASK_2) != 0 ? kPointerMiddle : 0U) |
         ((state & XCB_BUTTON_MASK_3) != 0 ? kPointerRight : 0U);
}

std::uint32_t buttonOf(xcb_button_t detail) {
  constexpr std::array<std::uint32_t, 4> kButtons{0, kPointerLeft, kPointerMiddle, kPointerRight};
  return detail < kButtons.size() ? kButtons[detail] : 0U;
}

} // namespace

X11Window::X11Window(std::unique_ptr<X11Connection> owned, X11Connection& connection,
                     X11Window* owner, int width, int height)
    : m_owned(std::move(owned)), m_connection(connection), m_owner(owner), m_width(width),
      m_height(height), m_place{0, 0, width, height} {}

X11Window::~X11Window() {
  const BrokenPipeGuard guard;
  if (m_owner != nullptr) m_owner->m_popup = nullptr;
  m_connection.removeWindow(*this);
  if (m_focused) giveFocusBack();
  m_picture.reset();
  if (m_window != 0 && m_open) xcb_destroy_window(m_connection.xcb(), m_window);
  xcb_flush(m_connection.xcb());
}

bool X11Window::create(xcb_window_t parent, int x, int y, bool overrideRedirect) {
  xcb_connection_t* xcb = m_connection.xcb();
  const xcb_window_t window = xcb_generate_id(xcb);
  // No background: what is newly exposed stays as it is until it is presented, without a flash.
  const std::array<std::uint32_t, 4> values{0, overrideRedirect ? 1U : 0U, kEvents,
                                            m_connection.colormap()};
  const auto asked = xcb_create_window_checked(
      xcb, m_connection.depth(), window, parent, static_cast<std::int16_t>(x),
      static_cast<std::int16_t>(y), static_cast<std::uint16_t>(m_width),
      static_cast<std::uint16_t>(m_height), 0, XCB_WINDOW_CLASS_INPUT_OUTPUT, m_connection.visual(),
      XCB_CW_BORDER_PIXEL | XCB_CW_OVERRIDE_REDIRECT | XCB_CW_EVENT_MASK | XCB_CW_COLORMAP,
      values.data());
  const Reply<xcb_generic_error_t> error(xcb_request_check(xcb, asked));
  if (error != nullptr || !m_connection.isAlive()) return false;
  m_window = window;
  m_parent = parent;
  m_open = true;
  m_picture.emplace(m_connection, window, m_width, m_height);
  m_selections.emplace(m_connection, window);
  m_connection.addWindow(*this);
  return true;
}

std::unique_ptr<X11Window> X11Window::createChild(std::unique_ptr<X11Connection> connection,
                                                  xcb_window_t parent, int width, int height) {
  const BrokenPipeGuard guard;
  X11Connection& shared = *connection;
  std::unique_ptr<X11Window> window(
      new X11Window(std::move(connection), shared, nullptr, width, height));
  if (!window->create(parent, 0, 0, false)) return nullptr;
  // Version 0 of the embedding protocol; 1: to be shown.
  const std::array<std::uint32_t, 2> embed{0, 1};
  window->setProperty(shared.atoms().xembedInfo, shared.atoms().xembedInfo, embed);
  xcb_flush(shared.xcb());
  return window;
}

std::unique_ptr<X11Window> X11Window::createTopLevel(std::unique_ptr<X11Connection> connection,
                                                     const TopLevelLook& look, int width,
                                                     int height) {
  const BrokenPipeGuard guard;
  X11Connection& shared = *connection;
  std::unique_ptr<X11Window> window(
      new X11Window(std::move(connection), shared, nullptr, width, height));
  if (!window->create(shared.screen().root, 0, 0, false)) return nullptr;
  window->setLook(look);
  xcb_flush(shared.xcb());
  return window;
}

void X11Window::setProperty(xcb_atom_t name, xcb_atom_t type, std::string_view text) {
  xcb_change_property(m_connection.xcb(), XCB_PROP_MODE_REPLACE, m_window, name, type, 8,
                      static_cast<std::uint32_t>(text.size()), text.data());
}

void X11Window::setProperty(xcb_atom_t name, xcb_atom_t type,
                            std::span<const std::uint32_t> words) {
  xcb_change_property(m_connection.xcb(), XCB_PROP_MODE_REPLACE, m_window, name, type, 32,
                      static_cast<std::uint32_t>(words.size()), words.data());
}

void X11Window::setLook(const TopLevelLook& look) {
  const X11Atoms& atoms = m_connection.atoms();
  setProperty(XCB_ATOM_WM_NAME, XCB_ATOM_STRING, look.title);
  setProperty(atoms.netWmName, atoms.utf8String, look.title);
  setProperty(atoms.wmProtocols, XCB_ATOM_ATOM, std::array{std::uint32_t{atoms.wmDeleteWindow}});
  m_topLevel = true;
  selectKeys(false);
  fixSize();
  if (!look.program.empty()) {
    // Instance and class, each with its end: brezan, Brezan.
    std::string name(look.program);
    std::string instanceAndClass = name + '\0';
    name.front() = static_cast<char>(std::toupper(static_cast<unsigned char>(name.front())));
    instanceAndClass += name + '\0';
    setProperty(XCB_ATOM_WM_CLASS, XCB_ATOM_STRING, instanceAndClass);
  }
  if (look.icon.pixels != nullptr) {
    std::vector<std::uint32_t> icon{static_cast<std::uint32_t>(look.icon.width),
                                    static_cast<std::uint32_t>(look.icon.height)};
    icon.insert(icon.end(), look.icon.pixels,
                look.icon.pixels + static_cast<std::ptrdiff_t>(look.icon.width) * look.icon.height);
    setProperty(atoms.netWmIcon, XCB_ATOM_CARDINAL, icon);
  }
}

// Size hints: 18 words, of which smallest (5, 6) and largest size (7, 8) count.
void X11Window::fixSize() {
  constexpr std::uint32_t kMinAndMaxSize = (1U << 4) | (1U << 5);
  std::array<std::uint32_t, 18> hints{kMinAndMaxSize};
  hints[5] = hints[7] = static_cast<std::uint32_t>(m_width);
  hints[6] = hints[8] = static_cast<std::uint32_t>(m_height);
  setProperty(XCB_ATOM_WM_NORMAL_HINTS, XCB_ATOM_WM_SIZE_HINTS, hints);
}

void X11Window::resize(int width, int height) {
  m_width = width;
  m_height = height;
  m_place = {m_place.left, m_place.top, m_place.left + width, m_place.top + height};
  if (!isOpen()) return;
  const BrokenPipeGuard guard;
  if (m_topLevel) fixSize();
  const std::array<std::uint32_t, 2> size{static_cast<std::uint32_t>(width),
                                          static_cast<std::uint32_t>(height)};
  xcb_configure_window(m_connection.xcb(), m_window,
                       XCB_CONFIG_WINDOW_WIDTH | XCB_CONFIG_WINDOW_HEIGHT, size.data());
  m_picture.emplace(m_connection, m_window, width, height);
  xcb_flush(m_connection.xcb());
}

void X11Window::show() {
  const BrokenPipeGuard guard;
  xcb_map_window(m_connection.xcb(), m_window);
  xcb_flush(m_connection.xcb());
}

void X11Window::present(const PixelView& picture, std::span<const PixelRect> areas) {
  if (!isOpen()) return;
  const BrokenPipeGuard guard;
  const PixelRect all{0, 0, m_width, m_height};
  for (const PixelRect& area : areas) m_picture->put(picture, intersection(area, all));
  xcb_flush(m_connection.xcb());
}

std::chrono::milliseconds X11Window::now() const {
  return std::chrono::duration_cast<std::chrono::milliseconds>(
      std::chrono::steady_clock::now().time_since_epoch());
}

void X11Window::offerText(Selection selection, std::string_view text) {
  const BrokenPipeGuard guard;
  m_selections->offer(selection, text);
}

void X11Window::requestText(Selection selection) {
  const BrokenPipeGuard guard;
  m_selections->request(selection);
}

// --- Keyboard focus ---

// Keys are asked for only while the window has the focus. Otherwise the display would bring it,
// instead of the host's window, every key that is pressed while the pointer is over it. A top-level
// window gets those, too, that a window within it passes on.
void X11Window::selectKeys(bool wanted) {
  const std::uint32_t events = wanted || m_topLevel ? kEvents | kKeyEvents : kEvents;
  xcb_change_window_attributes(m_connection.xcb(), m_window, XCB_CW_EVENT_MASK, &events);
  xcb_flush(m_connection.xcb());
}

void X11Window::takeFocus() {
  if (!isOpen() || m_focused) return;
  const BrokenPipeGuard guard;
  xcb_connection_t* xcb = m_connection.xcb();
  const Reply<xcb_get_input_focus_reply_t> before(
      xcb_get_input_focus_reply(xcb, xcb_get_input_focus(xcb), nullptr));
  if (before != nullptr && before->focus != m_window) m_focusBefore = before->focus;
  selectKeys(true);
  xcb_set_input_focus(xcb, XCB_INPUT_FOCUS_PARENT, m_window, XCB_CURRENT_TIME);
  xcb_flush(xcb);
}

void X11Window::giveFocusBack() {
  if (!isOpen() || m_owner != nullptr) return;
  const BrokenPipeGuard guard;
  xcb_connection_t* xcb = m_connection.xcb();
  const Reply<xcb_get_input_focus_reply_t> now(
      xcb_get_input_focus_reply(xcb, xcb_get_input_focus(xcb), nullptr));
  if (now == nullptr || now->focus != m_window || m_focusBefore == 0) return;
  xcb_set_input_focus(xcb, XCB_INPUT_FOCUS_PARENT, m_focusBefore, XCB_CURRENT_TIME);
  xcb_flush(xcb);
}

void X11Window::onFocus(const xcb_focus_in_event_t& event, bool in) {
  // Grabs of the window manager or a menu don't move the focus, and the pointer doesn't have it.
  const bool grab = event.mode == XCB_NOTIFY_MODE_GRAB || event.mode == XCB_NOTIFY_MODE_UNGRAB;
  if (grab || event.detail >= XCB_NOTIFY_DETAIL_POINTER || in == m_focused) return;
  m_focused = in;
  selectKeys(in);
  m_usedKeys.reset();
  if (!in) {
    m_loss = FocusLoss::kNoticed;
  } else if (m_loss != FocusLoss::kNone) {
    m_loss = FocusLoss::kNone; // it has come back before anybody was told
  } else {
    WindowEvent out;
    out.type = WindowEventType::kFocusGained;
    emit(out);
  }
}

// Some window managers give the focus to the top-level window at every click, so a click on this
// window takes the focus from it first. The click may arrive a moment after the loss: a loss is
// told at the pump after the one that it came with, unless a press comes before.
void X11Window::settleFocusLoss() {
  const FocusLoss loss = m_loss;
  if (loss == FocusLoss::kNoticed) m_loss = FocusLoss::kDue;
  if (loss != FocusLoss::kDue) return;
  m_loss = FocusLoss::kNone;
  WindowEvent out;
  out.type = WindowEventType::kFocusLost;
  emit(out);
}

void X11Window::setPointerShape(PointerShape shape) {
  if (!isOpen() || shape == m_pointerShape) return;
  const BrokenPipeGuard guard;
  m_pointerShape = shape;
  const std::uint32_t cursor = m_connection.cursor(shape);
  xcb_change_window_attributes(m_connection.xcb(), m_window, XCB_CW_CURSOR, &cursor);
  xcb_flush(m_connection.xcb());
}

// --- Popups ---

std::optional<std::pair<int, int>> X11Window::origin() const {
  xcb_connection_t* xcb = m_connection.xcb();
  const auto place = xcb_translate_coordinates(xcb, m_window, m_connection.screen().root, 0, 0);
  const auto shown = xcb_get_window_attributes(xcb, m_window);
  const Reply<xcb_translate_coordinates_reply_t> corner(
      xcb_translate_coordinates_reply(xcb, place, nullptr));
  const Reply<xcb_get_window_attributes_reply_t> attributes(
      xcb_get_window_attributes_reply(xcb, shown, nullptr));
  const bool viewable = attributes != nullptr && attributes->map_state == XCB_MAP_STATE_VIEWABLE;
  if (corner == nullptr || !viewable) return std::nullopt;
  return std::pair<int, int>{corner->dst_x, corner->dst_y};
}

std::unique_ptr<NativeWindow> X11Window::openPopup(int x, int y, int width, int height) {
  if (!isOpen() || m_popup != nullptr) return nullptr;
  const BrokenPipeGuard guard;
  const auto corner = origin();
  if (!corner) return nullptr;
  const xcb_screen_t& screen = m_connection.screen();
  const int left =
      std::max(0, std::min(corner->first + x, static_cast<int>(screen.width_in_pixels) - width));
  const int top =
      std::max(0, std::min(corner->second + y, static_cast<int>(screen.height_in_pixels) - height));
  std::unique_ptr<X11Window> popup(new X11Window(nullptr, m_connection, this, width, height));
  if (!popup->create(screen.root, left, top, true)) return nullptr;
  const X11Atoms& atoms = m_connection.atoms();
  xcb_change_property(m_connection.xcb(), XCB_PROP_MODE_REPLACE, popup->m_window,
                      atoms.netWmWindowType, XCB_ATOM_ATOM, 32, 1, &atoms.netWmWindowTypePopupMenu);
  popup->m_place = {left - corner->first, top - corner->second, left - corner->first + width,
                    top - corner->second + height};
  m_popup = popup.get();
  m_originAtPopup = *corner;
  return popup;
}

// Without a grab nobody tells us of presses in other windows, so while a popup is open we look.
void X11Window::watchPopup() {
  if (m_popup == nullptr || !isOpen()) return;
  xcb_connection_t* xcb = m_connection.xcb();
  const auto asked = xcb_query_pointer(xcb, m_window);
  const auto corner = origin();
  const Reply<xcb_query_pointer_reply_t> pointer(xcb_query_pointer_reply(xcb, asked, nullptr));
  bool outside = !corner || *corner != m_originAtPopup;
  if (pointer != nullptr && buttonsOf(pointer->mask) != 0 && m_held == 0 && m_popup->m_held == 0) {
    const int x = pointer->win_x;
    const int y = pointer->win_y;
    const auto within = [x, y](const PixelRect& r) {
      return x >= r.left && x < r.right && y >= r.top && y < r.bottom;
    };
    outside = outside || (!within(m_place) && !within(m_popup->m_place));
  }
  if (!outside) return;
  WindowEvent out;
  out.type = WindowEventType::kPressOutside;
  emit(out);
}

// --- Events ---

void X11Window::pump() {
  if (m_owned == nullptr) return;
  const BrokenPipeGuard guard;
  m_connection.drain();
  emitMotion();
  if (m_popup != nullptr) m_popup->emitMotion();
  watchPopup();
  settleFocusLoss();
  if (!m_connection.isAlive()) closed();
}

bool X11Window::emit(const WindowEvent& event) {
  return m_listener != nullptr && m_listener->onWindowEvent(event);
}

void X11Window::emitMotion() {
  if (!m_motion) return;
  const WindowEvent motion = *m_motion;
  m_motion.reset();
  emit(motion);
}

void X11Window::closed() {
  m_open = false;
  if (m_goneTold) return;
  m_goneTold = true;
  WindowEvent out;
  out.type = WindowEventType::kClosed;
  emit(out);
}

void X11Window::onPointer(int x, int y, std::uint16_t state) {
  WindowEvent out;
  out.type = WindowEventType::kMouseMove;
  out.x = x;
  out.y = y;
  out.buttons = buttonsOf(state);
  out.modifiers = modifiersOf(state);
  m_motion = out;
}

void X11Window::onLeave(const xcb_leave_notify_event_t& event) {
  // A grab that begins is no leaving; after one that ends the pointer may be elsewhere.
  if (event.mode == XCB_NOTIFY_MODE_GRAB || m_held != 0) return;
  emitMotion();
  WindowEvent out;
  out.type = WindowEventType::kMouseLeave;
  emit(out);
}

void X11Window::onButton(const xcb_button_press_event_t& event, bool press) {
  emitMotion();
  WindowEvent out;
  out.x = event.event_x;
  out.y = event.event_y;
  out.modifiers = modifiersOf(event.state);
  out.button = buttonOf(event.detail);
  out.buttons = buttonsOf(event.state) | out.button;
  if (out.button == 0) {
    // The wheel is buttons 4 and 5, one press a notch.
    if (!press || event.detail < 4 || event.detail > 5) return;
    out.type = WindowEventType::kWheel;
    out.distance = event.detail == 4 ? 1.0F : -1.0F;
    emit(out);
    return;
  }
  out.type = press ? WindowEventType::kMouseDown : WindowEventType::kMouseUp;
  m_held = press ? m_held | out.button : m_held & ~out.button;
  if (press && m_loss != FocusLoss::kNone) {
    m_loss = FocusLoss::kNone;
    takeFocus();
  }
  if (press) {
    const Press& last = m_lastPress;
    out.doubleClick = last.button == out.button &&
                      event.time - last.time <= kDoubleClickMilliseconds &&
                      std::abs(out.x - last.x) <= kDoubleClickPixels &&
                      std::abs(out.y - last.y) <= kDoubleClickPixels;
    // A third press starts anew.
    m_lastPress = out.doubleClick ? Press{} : Press{out.button, event.time, out.x, out.y};
  }
  emit(out);
}

void X11Window::onKey(const xcb_key_press_event_t& event, bool press) {
  if (m_keyboard == nullptr) m_keyboard = std::make_unique<X11Keyboard>(m_connection);
  WindowEvent out;
  out.type = press ? WindowEventType::kKeyDown : WindowEventType::kKeyUp;
  out.modifiers = modifiersOf(event.state);
  m_keyboard->translate(event, out);
  const bool used = emit(out);
  const bool usedHere = press ? used : m_usedKeys.test(event.detail); // a release follows its press
  m_usedKeys.set(event.detail, press && used);
  if (!usedHere) passOn(event);
}

// To the window that had the focus before. Where the focus followed the pointer that is the one
// around this window, or the next one outwards that wants keys.
void X11Window::passOn(xcb_key_press_event_t event) const {
  if (m_focusBefore == 0) return;
  xcb_connection_t* xcb = m_connection.xcb();
  const bool followedPointer = m_focusBefore == XCB_INPUT_FOCUS_POINTER_ROOT;
  const xcb_window_t target = followedPointer ? m_parent : m_focusBefore;
  const Reply<xcb_translate_coordinates_reply_t> place(xcb_translate_coordinates_reply(
      xcb, xcb_translate_coordinates(xcb, event.root, target, event.root_x, event.root_y),
      nullptr));
  if (place == nullptr) return; // the window is gone
  event.event = target;
  event.child = XCB_NONE;
  event.event_x = place->dst_x;
  event.event_y = place->dst_y;
  const bool press = (event.response_type & 0x7F) == XCB_KEY_PRESS;
  xcb_send_event(xcb, 1, target, press ? XCB_EVENT_MASK_KEY_PRESS : XCB_EVENT_MASK_KEY_RELEASE,
                 reinterpret_cast<const char*>(&event));
  xcb_flush(xcb);
}

void X11Window::handleEvent(const xcb_generic_event_t& event) {
  const auto as = [&event]<typename E>() -> const E& { return reinterpret_cast<const E&>(event); };
  const std::uint8_t code = event.response_type & 0x7F;
  switch (code) {
  case XCB_KEY_PRESS:
  case XCB_KEY_RELEASE: onKey(as.operator()<xcb_key_press_event_t>(), code == XCB_KEY_PRESS); break;
  case XCB_BUTTON_PRESS:
  case XCB_BUTTON_RELEASE:
    onButton(as.operator()<xcb_button_press_event_t>(), code == XCB_BUTTON_PRESS);
    break;
  case XCB_MOTION_NOTIFY: {
    const auto& motion = as.operator()<xcb_motion_notify_event_t>();
    onPointer(motion.event_x, motion.event_y, motion.state);
    break;
  }
  case XCB_ENTER_NOTIFY: {
    const auto& enter = as.operator()<xcb_enter_notify_event_t>();
    onPointer(enter.event_x, enter.event_y, enter.state);
    break;
  }
  case XCB_LEAVE_NOTIFY: onLeave(as.operator()<xcb_leave_notify_event_t>()); break;
  case XCB_FOCUS_IN:
  case XCB_FOCUS_OUT: onFocus(as.operator()<xcb_focus_in_event_t>(), code == XCB_FOCUS_IN); break;
  case XCB_EXPOSE: {
    const auto& area = as.operator()<xcb_expose_event_t>();
    WindowEvent out;
    out.type = WindowEventType::kExpose;
    out.x = area.x;
    out.y = area.y;
    out.width = area.width;
    out.height = area.height;
    emit(out);
    break;
  }
  case XCB_DESTROY_NOTIFY: closed(); break;
  case XCB_CLIENT_MESSAGE: {
    const auto& message = as.operator()<xcb_client_message_event_t>();
    WindowEvent out;
    out.type = WindowEventType::kClosed;
    if (message.type == m_connection.atoms().wmProtocols &&
        message.data.data32[0] == m_connection.atoms().wmDeleteWindow)
      emit(out);
    break;
  }
  case XCB_SELECTION_REQUEST:
    m_selections->answer(as.operator()<xcb_selection_request_event_t>());
    break;
  case XCB_SELECTION_NOTIFY: {
    WindowEvent out;
    out.type = WindowEventType::kSelectionText;
    out.text = m_selections->received(as.operator()<xcb_selection_notify_event_t>());
    emit(out);
    break;
  }
  default: // a change of the keyboard
    if (m_keyboard != nullptr) m_keyboard->handleEvent(event);
    break;
  }
}

} // namespace qlx::platform
