// SPDX-License-Identifier: ISC
#include "platform/windows/Win32Window.h"

#include "platform/windows/Utf16.h"
#include "platform/windows/WorkerTask.h"

#include <algorithm>
#include <utility>

namespace qlx::platform {
namespace {

/// Windows of this library that share its class. User-interface thread.
int classUsers = 0;

BITMAPINFO bitmapInfo(int width, int height) {
  BITMAPINFO info{};
  info.bmiHeader.biSize = sizeof info.bmiHeader;
  info.bmiHeader.biWidth = width;
  info.bmiHeader.biHeight = -height; // rows from the top
  info.bmiHeader.biPlanes = 1;
  info.bmiHeader.biBitCount = 32;
  info.bmiHeader.biCompression = BI_RGB;
  return info;
}

HCURSOR cursorOf(PointerShape shape) {
  switch (shape) {
  case PointerShape::kUpDown: return LoadCursorW(nullptr, IDC_SIZENS);
  case PointerShape::kHand: return LoadCursorW(nullptr, IDC_HAND);
  case PointerShape::kText: return LoadCursorW(nullptr, IDC_IBEAM);
  case PointerShape::kArrow: break;
  }
  return LoadCursorW(nullptr, IDC_ARROW);
}

constexpr double kPlainDpi = 96.0;

/// Of the screen that the user's session began with. 1 in a process that leaves scaling to the
/// system.
double systemScale() {
  const HDC screen = GetDC(nullptr);
  const int dpi = GetDeviceCaps(screen, LOGPIXELSX);
  ReleaseDC(nullptr, screen);
  return dpi > 0 ? dpi / kPlainDpi : 1.0;
}

/// Of the screen that a window is on; Windows before 10 have one scale for all.
double scaleOf(HWND window) {
  using GetDpi = UINT(WINAPI*)(HWND);
  static const auto getDpi = reinterpret_cast<GetDpi>(
      reinterpret_cast<void*>(GetProcAddress(GetModuleHandleW(L"user32"), "GetDpiForWindow")));
  const UINT dpi = getDpi == nullptr ? 0 : getDpi(window);
  return dpi > 0 ? dpi / kPlainDpi : systemScale();
}

bool isPressed(int key) { return (GetAsyncKeyState(key) & 0x8000) != 0; }

} // namespace

// Several copies of this library may live in one process, so the name tells whose class it is.
WindowClass::WindowClass(WNDPROC procedure)
    : m_name(L"QLXWindow" + std::to_wstring(reinterpret_cast<std::uintptr_t>(ownModule()))) {
  if (classUsers++ > 0) return;
  WNDCLASSEXW description{};
  description.cbSize = sizeof description;
  description.style = CS_DBLCLKS;
  description.lpfnWndProc = procedure;
  description.hInstance = ownModule();
  description.lpszClassName = m_name.c_str();
  RegisterClassExW(&description);
}

WindowClass::~WindowClass() {
  if (--classUsers == 0) UnregisterClassW(m_name.c_str(), ownModule());
}

HBITMAP createPicture(int width, int height, std::uint32_t** pixels) {
  const BITMAPINFO info = bitmapInfo(width, height);
  void* memory = nullptr;
  const HBITMAP bitmap = CreateDIBSection(nullptr, &info, DIB_RGB_COLORS, &memory, nullptr, 0);
  *pixels = static_cast<std::uint32_t*>(memory);
  return bitmap;
}

WindowPicture::WindowPicture(int width, int height)
    : m_context(CreateCompatibleDC(nullptr)), m_bitmap(createPicture(width, height, &m_pixels)) {
  if (m_bitmap == nullptr) return;
  m_bitmapBefore = SelectObject(m_context, m_bitmap);
}

WindowPicture::~WindowPicture() {
  if (m_bitmap != nullptr) {
    SelectObject(m_context, m_bitmapBefore);
    DeleteObject(m_bitmap);
  }
  if (m_context != nullptr) DeleteDC(m_context);
}

void WindowPicture::copy(const PixelView& picture, const PixelRect& area) {
  if (!isGood()) return;
  GdiFlush(); // it may still be painting from these pixels
  for (int y = area.top; y < area.bottom; ++y) {
    const auto row = static_cast<std::ptrdiff_t>(y) * picture.width;
    std::copy(picture.pixels + row + area.left, picture.pixels + row + area.right,
              m_pixels + row + area.left);
  }
}

// --- Life ---

Win32Window::Win32Window(Win32Window* owner, int width, int height)
    : m_owner(owner), m_width(width), m_height(height), m_place{0, 0, width, height},
      m_picture(std::in_place, width, height), m_cursor(cursorOf(PointerShape::kArrow)) {}

bool Win32Window::create(const Manner& manner, RECT outside) {
  if (!m_picture->isGood()) return false;
  CreateWindowExW(manner.extendedStyle, m_class.name(), manner.title, manner.style, outside.left,
                  outside.top, outside.right - outside.left, outside.bottom - outside.top,
                  manner.parent, nullptr, ownModule(), this);
  if (m_window == nullptr) return false;
  constexpr UINT kTimerMilliseconds = 30;
  if (m_owner == nullptr) SetTimer(m_window, 1, kTimerMilliseconds, nullptr);
  return true;
}

std::unique_ptr<Win32Window> Win32Window::createChild(HWND parent, int width, int height) {
  std::unique_ptr<Win32Window> window(new Win32Window(nullptr, width, height));
  const Manner child{.style = WS_CHILD | WS_CLIPSIBLINGS | WS_CLIPCHILDREN, .parent = parent};
  if (!window->create(child, {0, 0, width, height})) return nullptr;
  window->queueScale(systemScale());
  return window;
}

std::unique_ptr<Win32Window> Win32Window::createTopLevel(const TopLevelLook& look, int width,
                                                         int height) {
  std::unique_ptr<Win32Window> window(new Win32Window(nullptr, width, height));
  const std::wstring title = toUtf16(look.title);
  const Manner fixedSize{.style = WS_OVERLAPPED | WS_CAPTION | WS_SYSMENU | WS_MINIMIZEBOX,
                         .title = title.c_str()};
  RECT outside{0, 0, width, height};
  AdjustWindowRectEx(&outside, fixedSize.style, FALSE, 0);
  constexpr int kFromScreensCorner = 100;
  OffsetRect(&outside, kFromScreensCorner - outside.left, kFromScreensCorner - outside.top);
  if (!window->create(fixedSize, outside)) return nullptr;
  window->m_hasLoop = true;
  if (look.icon.pixels != nullptr) window->setIcon(look.icon);
  return window;
}

void Win32Window::setIcon(const PixelView& icon) {
  const std::vector<std::uint8_t> opaque(static_cast<std::size_t>((icon.width + 15) / 16 * 2) *
                                         static_cast<std::size_t>(icon.height));
  ICONINFO parts{};
  parts.fIcon = TRUE;
  parts.hbmColor = CreateBitmap(icon.width, icon.height, 1, 32, icon.pixels);
  parts.hbmMask = CreateBitmap(icon.width, icon.height, 1, 1, opaque.data());
  m_icon = CreateIconIndirect(&parts);
  DeleteObject(parts.hbmColor);
  DeleteObject(parts.hbmMask);
  for (const WPARAM size : {ICON_SMALL, ICON_BIG})
    SendMessageW(m_window, WM_SETICON, size, reinterpret_cast<LPARAM>(m_icon));
}

Win32Window::~Win32Window() {
  m_listener = nullptr;
  if (m_owner != nullptr) m_owner->m_popup = nullptr;
  giveFocusBack();
  if (m_window != nullptr) {
    SetWindowLongPtrW(m_window, GWLP_USERDATA, 0);
    DestroyWindow(m_window);
  }
  if (m_icon != nullptr) DestroyIcon(m_icon);
}

// --- Picture ---

void Win32Window::present(const PixelView& picture, std::span<const PixelRect> areas) {
  if (!isOpen()) return;
  const PixelRect all{0, 0, m_width, m_height};
  for (const PixelRect& wanted : areas) {
    const PixelRect area = intersection(wanted, all);
    if (area.empty()) continue;
    m_picture->copy(picture, area);
    const RECT dirty{area.left, area.top, area.right, area.bottom};
    InvalidateRect(m_window, &dirty, FALSE);
  }
  UpdateWindow(m_window);
}

void Win32Window::paint() {
  PAINTSTRUCT paint;
  const HDC to = BeginPaint(m_window, &paint);
  const RECT& area = paint.rcPaint;
  BitBlt(to, area.left, area.top, area.right - area.left, area.bottom - area.top,
         m_picture->context(), area.left, area.top, SRCCOPY);
  EndPaint(m_window, &paint);
}

void Win32Window::queueScale(double unless) {
  WindowEvent event;
  event.type = WindowEventType::kScaleChanged;
  event.scale = scaleOf(m_window);
  if (event.scale != unless) queue(std::move(event));
}

void Win32Window::show() { ShowWindow(m_window, m_owner != nullptr ? SW_SHOWNOACTIVATE : SW_SHOW); }

void Win32Window::resize(int width, int height) {
  if (m_textBox != nullptr) queue(WindowEventType::kFocusLost); // it lies where the field was
  m_width = width;
  m_height = height;
  m_place = {m_place.left, m_place.top, m_place.left + width, m_place.top + height};
  m_picture.emplace(width, height);
  if (!isOpen()) return;
  RECT outside{0, 0, width, height};
  AdjustWindowRectEx(&outside, static_cast<DWORD>(GetWindowLongW(m_window, GWL_STYLE)), FALSE,
                     static_cast<DWORD>(GetWindowLongW(m_window, GWL_EXSTYLE)));
  SetWindowPos(m_window, nullptr, 0, 0, outside.right - outside.left, outside.bottom - outside.top,
               SWP_NOMOVE | SWP_NOZORDER | SWP_NOACTIVATE);
}

void Win32Window::setPointerShape(PointerShape shape) {
  const HCURSOR cursor = cursorOf(shape);
  if (cursor == m_cursor) return;
  m_cursor = cursor;
  POINT pointer{};
  GetCursorPos(&pointer);
  if (isOpen() && WindowFromPoint(pointer) == m_window) SetCursor(m_cursor);
}

std::chrono::milliseconds Win32Window::now() const {
  return std::chrono::milliseconds(static_cast<std::int64_t>(GetTickCount64()));
}

// --- Keyboard focus ---

void Win32Window::takeFocus() {
  if (!isOpen() || GetFocus() == m_window || m_textBox != nullptr) return;
  m_focusBefore = SetFocus(m_window);
}

void Win32Window::giveFocusBack() {
  if (!isOpen() || m_owner != nullptr || m_focusBefore == nullptr || GetFocus() != m_window) return;
  SetFocus(m_focusBefore);
}

std::unique_ptr<TextBox> Win32Window::openTextBox(const TextBoxLook& look) {
  if (!isOpen() || m_textBox != nullptr) return nullptr;
  auto box = std::make_unique<Win32TextBox>(*this, look);
  if (!box->isOpen()) return nullptr;
  m_textBox = box.get();
  box->begin();
  return box;
}

// --- Popups ---

std::unique_ptr<NativeWindow> Win32Window::openPopup(int x, int y, int width, int height) {
  if (!isOpen() || m_popup != nullptr || IsWindowVisible(m_window) == 0) return nullptr;
  POINT origin{0, 0};
  ClientToScreen(m_window, &origin);
  MONITORINFO monitor{};
  monitor.cbSize = sizeof monitor;
  if (GetMonitorInfoW(MonitorFromWindow(m_window, MONITOR_DEFAULTTONEAREST), &monitor) == 0)
    return nullptr;
  const RECT& screen = monitor.rcMonitor;
  const LONG left = std::max(screen.left, std::min(origin.x + x, screen.right - width));
  const LONG top = std::max(screen.top, std::min(origin.y + y, screen.bottom - height));
  std::unique_ptr<Win32Window> popup(new Win32Window(this, width, height));
  const Manner aboveAll{.style = WS_POPUP,
                        .extendedStyle = WS_EX_TOOLWINDOW | WS_EX_NOACTIVATE | WS_EX_TOPMOST,
                        .parent = GetAncestor(m_window, GA_ROOT)};
  if (!popup->create(aboveAll, {left, top, left + width, top + height})) return nullptr;
  const int inX = static_cast<int>(left - origin.x);
  const int inY = static_cast<int>(top - origin.y);
  popup->m_place = {inX, inY, inX + width, inY + height};
  m_popup = popup.get();
  m_originAtPopup = origin;
  return popup;
}

// Presses in other windows are told to nobody, so while a popup is open we look.
void Win32Window::watchPopup() {
  if (m_popup == nullptr || !isOpen()) return;
  POINT origin{0, 0};
  ClientToScreen(m_window, &origin);
  bool outside = IsWindowVisible(m_window) == 0 || origin.x != m_originAtPopup.x ||
                 origin.y != m_originAtPopup.y;
  const bool pressed = isPressed(VK_LBUTTON) || isPressed(VK_RBUTTON) || isPressed(VK_MBUTTON);
  if (pressed && m_held == 0 && m_popup->m_held == 0) {
    POINT pointer{};
    GetCursorPos(&pointer);
    const HWND under = WindowFromPoint(pointer);
    outside = outside || (under != m_window && under != m_popup->m_window);
  }
  if (!outside || m_listener == nullptr) return;
  WindowEvent event;
  event.type = WindowEventType::kPressOutside;
  m_listener->onWindowEvent(event);
}

// --- Clipboard; there is no primary selection ---

void Win32Window::offerText(Selection selection, std::string_view text) {
  if (selection != Selection::kClipboard || OpenClipboard(m_window) == 0) return;
  const std::wstring wide = toUtf16(text);
  const HGLOBAL memory = GlobalAlloc(GMEM_MOVEABLE, (wide.size() + 1) * sizeof(wchar_t));
  if (memory != nullptr) {
    std::copy_n(wide.c_str(), wide.size() + 1, static_cast<wchar_t*>(GlobalLock(memory)));
    GlobalUnlock(memory);
    EmptyClipboard();
    if (SetClipboardData(CF_UNICODETEXT, memory) == nullptr) GlobalFree(memory);
  }
  CloseClipboard();
}

void Win32Window::requestText(Selection selection) {
  WindowEvent event;
  event.type = WindowEventType::kSelectionText;
  if (selection == Selection::kClipboard && OpenClipboard(m_window) != 0) {
    const HANDLE memory = GetClipboardData(CF_UNICODETEXT);
    const auto* text =
        memory == nullptr ? nullptr : static_cast<const wchar_t*>(GlobalLock(memory));
    if (text != nullptr) {
      const std::size_t room = GlobalSize(memory) / sizeof(wchar_t);
      event.text =
          toUtf8({text, static_cast<std::size_t>(std::find(text, text + room, L'\0') - text)});
      GlobalUnlock(memory);
    }
    CloseClipboard();
  }
  queue(std::move(event));
}

namespace {

class Win32WindowSystem final : public WindowSystem {
 public:
  std::optional<double> scale() const override { return systemScale(); }

  constexpr Win32WindowSystem() = default;
  // Nothing is to be done when the library is unloaded.
  constexpr ~Win32WindowSystem() override;

  std::unique_ptr<NativeWindow> openChild(std::uintptr_t parent, int width,
                                          int height) const override {
    const auto window = reinterpret_cast<HWND>(parent);
    if (IsWindow(window) == 0) return nullptr;
    return Win32Window::createChild(window, width, height);
  }

  std::unique_ptr<NativeWindow> openTopLevel(const TopLevelLook& look, int width,
                                             int height) const override {
    return Win32Window::createTopLevel(look, width, height);
  }
};

constexpr Win32WindowSystem::~Win32WindowSystem() = default;

} // namespace

const WindowSystem& nativeWindowSystem() {
  static constexpr Win32WindowSystem kSystem;
  return kSystem;
}

} // namespace qlx::platform
