// SPDX-License-Identifier: ISC
// What the system tells a window, and how it is handed on.
#include "platform/windows/Win32Window.h"

#include "platform/windows/Utf16.h"

#include <array>
#include <utility>
#include <windowsx.h>

namespace qlx::platform {
namespace {

constexpr UINT kDpiChangedAfterParent = 0x02E3; // WM_DPICHANGED_AFTERPARENT of Windows 10

bool isDown(int key) { return (GetKeyState(key) & 0x8000) != 0; }

std::uint32_t modifiers() {
  return (isDown(VK_SHIFT) ? kModifierShift : 0U) | (isDown(VK_CONTROL) ? kModifierControl : 0U) |
         (isDown(VK_MENU) ? kModifierAlt : 0U) |
         (isDown(VK_LWIN) || isDown(VK_RWIN) ? kModifierSuper : 0U);
}

std::uint32_t buttonsOf(WPARAM keys) {
  return ((keys & MK_LBUTTON) != 0 ? kPointerLeft : 0U) |
         ((keys & MK_MBUTTON) != 0 ? kPointerMiddle : 0U) |
         ((keys & MK_RBUTTON) != 0 ? kPointerRight : 0U);
}

VirtualKey virtualKeyOf(WPARAM key, LPARAM details) {
  constexpr LPARAM kOutsideMainBlock = 1 << 24;
  switch (key) {
  case VK_BACK: return VirtualKey::kBack;
  case VK_TAB: return VirtualKey::kTab;
  case VK_RETURN:
    return (details & kOutsideMainBlock) != 0 ? VirtualKey::kEnter : VirtualKey::kReturn;
  case VK_ESCAPE: return VirtualKey::kEscape;
  case VK_SPACE: return VirtualKey::kSpace;
  case VK_END: return VirtualKey::kEnd;
  case VK_HOME: return VirtualKey::kHome;
  case VK_LEFT: return VirtualKey::kLeft;
  case VK_UP: return VirtualKey::kUp;
  case VK_RIGHT: return VirtualKey::kRight;
  case VK_DOWN: return VirtualKey::kDown;
  case VK_PRIOR: return VirtualKey::kPageUp;
  case VK_NEXT: return VirtualKey::kPageDown;
  case VK_INSERT: return VirtualKey::kInsert;
  case VK_DELETE: return VirtualKey::kDelete;
  case VK_F10: return VirtualKey::kF10;
  case VK_APPS: return VirtualKey::kMenu;
  case VK_SHIFT: return VirtualKey::kShift;
  case VK_CONTROL: return VirtualKey::kControl;
  case VK_MENU: return VirtualKey::kAlt;
  default: return VirtualKey::kNone;
  }
}

bool isControlCharacter(wchar_t unit) { return unit < 0x20 || unit == 0x7F; }

} // namespace

// --- Handing on ---

void Win32Window::queue(WindowEvent event) {
  if (event.type == WindowEventType::kMouseMove && !m_happened.empty() &&
      m_happened.back().event.type == event.type)
    m_happened.pop_back();
  m_happened.push_back({.event = std::move(event)});
}

void Win32Window::queue(WindowEventType type) {
  WindowEvent event;
  event.type = type;
  queue(std::move(event));
}

// A key that nobody used goes to the window that had the focus before; a release follows its press.
void Win32Window::tell(const Happening& happening) {
  const bool used = m_listener != nullptr && m_listener->onWindowEvent(happening.event);
  if (happening.message == 0) return;
  const std::size_t key = happening.word & 0xFF;
  const bool press = happening.message == WM_KEYDOWN;
  const bool usedHere = press ? used : m_usedKeys.test(key);
  m_usedKeys.set(key, press && used);
  if (!usedHere && IsWindow(m_focusBefore) != 0)
    PostMessageW(m_focusBefore, happening.message, happening.word, happening.details);
}

namespace {

void fetchMessages() {
  MSG message;
  while (PeekMessageW(&message, nullptr, 0, 0, PM_REMOVE) != 0) {
    TranslateMessage(&message);
    DispatchMessageW(&message);
  }
}

} // namespace

void Win32Window::pump() {
  if (m_owner != nullptr || m_pumping) return;
  m_pumping = true;
  m_lastPump = now();
  if (m_hasLoop) fetchMessages();
  for (Win32Window* const window : {this, m_popup}) {
    if (window == nullptr) continue;
    for (const Happening& happening : std::exchange(window->m_happened, {})) {
      if (window != this && window != m_popup) break; // the popup was closed by the one before
      window->tell(happening);
    }
  }
  watchPopup();
  m_pumping = false;
}

// While the host is in a loop of its own, such as a menu's, nobody calls its idle.
void Win32Window::onTimer() {
  constexpr std::chrono::milliseconds kMissed{100};
  if (m_pumping || m_listener == nullptr || now() - m_lastPump < kMissed) return;
  WindowEvent tick;
  tick.type = WindowEventType::kTick;
  m_listener->onWindowEvent(tick);
}

// --- Pointer ---

void Win32Window::onButton(std::uint32_t button, bool press, bool doubleClick, WPARAM keys,
                           LPARAM where) {
  m_held = press ? m_held | button : m_held & ~button;
  m_pointer = {GET_X_LPARAM(where), GET_Y_LPARAM(where)};
  // The gesture's moves and its end come to us wherever the pointer goes.
  if (press)
    SetCapture(m_window);
  else if (m_held == 0 && GetCapture() == m_window)
    ReleaseCapture();
  WindowEvent event;
  event.type = press ? WindowEventType::kMouseDown : WindowEventType::kMouseUp;
  event.x = m_pointer.x;
  event.y = m_pointer.y;
  event.button = button;
  event.buttons = buttonsOf(keys) | button;
  event.modifiers = modifiers();
  event.doubleClick = doubleClick;
  queue(std::move(event));
}

// Another window has taken the pointer, so the releases won't come here.
void Win32Window::onCaptureLost() {
  for (const std::uint32_t button : {kPointerLeft, kPointerMiddle, kPointerRight}) {
    if ((m_held & button) == 0) continue;
    WindowEvent event;
    event.type = WindowEventType::kMouseUp;
    event.x = m_pointer.x;
    event.y = m_pointer.y;
    event.button = button;
    event.buttons = m_held;
    event.modifiers = modifiers();
    queue(std::move(event));
    m_held &= ~button;
  }
}

void Win32Window::onMove(WPARAM keys, LPARAM where) {
  if (!m_leaveWanted) {
    TRACKMOUSEEVENT track{sizeof(TRACKMOUSEEVENT), TME_LEAVE, m_window, 0};
    m_leaveWanted = TrackMouseEvent(&track) != 0;
  }
  m_pointer = {GET_X_LPARAM(where), GET_Y_LPARAM(where)};
  WindowEvent event;
  event.type = WindowEventType::kMouseMove;
  event.x = m_pointer.x;
  event.y = m_pointer.y;
  event.buttons = buttonsOf(keys);
  event.modifiers = modifiers();
  queue(std::move(event));
}

void Win32Window::onWheel(WPARAM word, LPARAM where) {
  POINT place{GET_X_LPARAM(where), GET_Y_LPARAM(where)}; // of the screen, unlike all others
  ScreenToClient(m_window, &place);
  WindowEvent event;
  event.type = WindowEventType::kWheel;
  event.x = place.x;
  event.y = place.y;
  event.buttons = buttonsOf(GET_KEYSTATE_WPARAM(word));
  event.modifiers = modifiers();
  event.distance = static_cast<float>(GET_WHEEL_DELTA_WPARAM(word)) / WHEEL_DELTA;
  queue(std::move(event));
}

bool Win32Window::onPointerMessage(UINT message, WPARAM word, LPARAM where) {
  switch (message) {
  case WM_LBUTTONDOWN:
  case WM_LBUTTONDBLCLK:
    onButton(kPointerLeft, true, message == WM_LBUTTONDBLCLK, word, where);
    return true;
  case WM_MBUTTONDOWN:
  case WM_MBUTTONDBLCLK:
    onButton(kPointerMiddle, true, message == WM_MBUTTONDBLCLK, word, where);
    return true;
  case WM_RBUTTONDOWN:
  case WM_RBUTTONDBLCLK:
    onButton(kPointerRight, true, message == WM_RBUTTONDBLCLK, word, where);
    return true;
  case WM_LBUTTONUP: onButton(kPointerLeft, false, false, word, where); return true;
  case WM_MBUTTONUP: onButton(kPointerMiddle, false, false, word, where); return true;
  case WM_RBUTTONUP: onButton(kPointerRight, false, false, word, where); return true;
  case WM_MOUSEMOVE: onMove(word, where); return true;
  case WM_MOUSEWHEEL: onWheel(word, where); return true;
  case WM_MOUSELEAVE:
    m_leaveWanted = false;
    if (m_held == 0) queue(WindowEventType::kMouseLeave);
    return true;
  case WM_CAPTURECHANGED:
    if (reinterpret_cast<HWND>(where) != m_window) onCaptureLost();
    return true;
  default: return false;
  }
}

// --- Keyboard ---

void Win32Window::onKey(UINT message, WPARAM key, LPARAM details) {
  const bool press = message == WM_KEYDOWN;
  WindowEvent event;
  event.type = press ? WindowEventType::kKeyDown : WindowEventType::kKeyUp;
  event.key = virtualKeyOf(key, details);
  event.modifiers = modifiers();
  const UINT character =
      MapVirtualKeyW(static_cast<UINT>(key), MAPVK_VK_TO_CHAR) & 0xFFFFU; // without the dead mark
  if (!isControlCharacter(static_cast<wchar_t>(character))) event.character = character;
  // What the host's loop has made of this key lies behind it in the queue.
  MSG typed;
  while (press && PeekMessageW(&typed, m_window, WM_CHAR, WM_CHAR, PM_REMOVE) != 0) {
    const auto unit = static_cast<wchar_t>(typed.wParam);
    if (IS_HIGH_SURROGATE(unit)) {
      m_highSurrogate = unit;
      continue;
    }
    std::wstring text;
    if (IS_LOW_SURROGATE(unit) && m_highSurrogate != 0) text += m_highSurrogate;
    text += unit;
    m_highSurrogate = 0;
    if (!isControlCharacter(unit)) event.text += toUtf8(text);
  }
  m_happened.push_back({std::move(event), message, key, details});
}

void Win32Window::onFocus(bool gained) {
  if (!gained) m_usedKeys.reset();
  const bool bounced =
      gained && !m_happened.empty() && m_happened.back().event.type == WindowEventType::kFocusLost;
  if (bounced)
    m_happened.pop_back(); // it has come back before anybody was told
  else
    queue(gained ? WindowEventType::kFocusGained : WindowEventType::kFocusLost);
}

// --- Messages ---

LRESULT Win32Window::handle(HWND window, UINT message, WPARAM word, LPARAM details) {
  if (onPointerMessage(message, word, details)) return 0;
  switch (message) {
  case WM_PAINT: paint(); return 0;
  case WM_ERASEBKGND: return 1;
  case WM_TIMER: onTimer(); return 0;
  case WM_SETCURSOR:
    if (LOWORD(details) != HTCLIENT) break;
    SetCursor(m_cursor);
    return TRUE;
  case WM_GETDLGCODE: return DLGC_WANTALLKEYS;
  case WM_MOUSEACTIVATE: return m_owner != nullptr ? MA_NOACTIVATE : MA_ACTIVATE;
  case WM_KEYDOWN:
  case WM_KEYUP: onKey(message, word, details); return 0;
  case WM_SYSKEYDOWN: // as this key's presses come, which with Shift opens a menu
    if (word != VK_F10 || !isDown(VK_SHIFT)) break;
    onKey(WM_KEYDOWN, word, details);
    return 0;
  case WM_SETFOCUS: onFocus(true); return 0;
  case WM_KILLFOCUS:
    // To the text box the keyboard goes within the window.
    if (m_textBox == nullptr || !m_textBox->is(reinterpret_cast<HWND>(word))) onFocus(false);
    return 0;
  case kDpiChangedAfterParent: queueScale(); return 0;
  case WM_CTLCOLOREDIT:
    if (m_textBox == nullptr || !m_textBox->is(reinterpret_cast<HWND>(details))) break;
    return reinterpret_cast<LRESULT>(m_textBox->prepare(reinterpret_cast<HDC>(word)));
  case WM_COMMAND:
    if (m_textBox == nullptr || !m_textBox->is(reinterpret_cast<HWND>(details))) break;
    m_textBox->onNotice(HIWORD(word));
    return 0;
  case WM_CLOSE: queue(WindowEventType::kClosed); return 0;
  case WM_DESTROY:
    queue(WindowEventType::kClosed);
    SetWindowLongPtrW(window, GWLP_USERDATA, 0);
    m_window = nullptr;
    return 0;
  default: break;
  }
  return DefWindowProcW(window, message, word, details);
}

LRESULT CALLBACK Win32Window::procedure(HWND window, UINT message, WPARAM word, LPARAM details) {
  if (message == WM_NCCREATE) {
    const auto* const creation = reinterpret_cast<const CREATESTRUCTW*>(details);
    auto* const created = static_cast<Win32Window*>(creation->lpCreateParams);
    created->m_window = window;
    SetWindowLongPtrW(window, GWLP_USERDATA, reinterpret_cast<LONG_PTR>(created));
  }
  auto* const self = reinterpret_cast<Win32Window*>(GetWindowLongPtrW(window, GWLP_USERDATA));
  return self == nullptr ? DefWindowProcW(window, message, word, details)
                         : self->handle(window, message, word, details);
}

} // namespace qlx::platform
