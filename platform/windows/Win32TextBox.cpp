// SPDX-License-Identifier: ISC
#include "platform/windows/Win32TextBox.h"

#include "platform/windows/Utf16.h"
#include "platform/windows/Win32Window.h"
#include "platform/windows/WorkerTask.h"

#include <algorithm>

namespace qlx::platform {
namespace {

int lineHeight(HFONT font) {
  const HDC context = CreateCompatibleDC(nullptr);
  const HGDIOBJ before = SelectObject(context, font);
  TEXTMETRICW metrics{};
  GetTextMetricsW(context, &metrics);
  SelectObject(context, before);
  DeleteDC(context);
  return static_cast<int>(metrics.tmHeight);
}

DWORD styleOf(TextBoxLook::Align align) {
  switch (align) {
  case TextBoxLook::Align::Centre: return ES_CENTER;
  case TextBoxLook::Align::Right: return ES_RIGHT;
  case TextBoxLook::Align::Left: break;
  }
  return ES_LEFT;
}

bool endsTyping(WPARAM key) { return key == VK_RETURN || key == VK_TAB || key == VK_ESCAPE; }

} // namespace

Win32TextBox::Win32TextBox(Win32Window& window, const TextBoxLook& look)
    : m_window(window),
      m_font(CreateFontW(-look.fontHeight, 0, 0, 0, FW_NORMAL, FALSE, FALSE, FALSE, DEFAULT_CHARSET,
                         OUT_DEFAULT_PRECIS, CLIP_DEFAULT_PRECIS, DEFAULT_QUALITY,
                         DEFAULT_PITCH | FF_SWISS, L"Arial")),
      m_colour(RGB(look.colour >> 16 & 0xFF, look.colour >> 8 & 0xFF, look.colour & 0xFF)) {
  const PixelView& back = look.background;
  std::uint32_t* pixels = nullptr;
  m_picture = createPicture(back.width, back.height, &pixels);
  if (m_picture != nullptr) {
    const auto count = static_cast<std::ptrdiff_t>(back.width) * back.height;
    std::copy_n(back.pixels, count, pixels);
    m_background = CreatePatternBrush(m_picture);
  }
  const int height = lineHeight(m_font);
  m_belowFieldsTop = (look.field.height() - height) / 2;
  m_edit = CreateWindowExW(0, L"EDIT", toUtf16(look.text).c_str(),
                           WS_CHILD | ES_AUTOHSCROLL | styleOf(look.align), look.field.left,
                           look.field.top + m_belowFieldsTop, look.field.width(), height,
                           reinterpret_cast<HWND>(window.handle()), nullptr, ownModule(), nullptr);
  if (m_edit == nullptr) return;
  SendMessageW(m_edit, WM_SETFONT, reinterpret_cast<WPARAM>(m_font), FALSE);
  SendMessageW(m_edit, EM_SETLIMITTEXT, look.limit, 0);
  SendMessageW(m_edit, EM_SETMARGINS, EC_LEFTMARGIN | EC_RIGHTMARGIN, 0);
  SetWindowLongPtrW(m_edit, GWLP_USERDATA, reinterpret_cast<LONG_PTR>(this));
  m_plain = reinterpret_cast<WNDPROC>(
      SetWindowLongPtrW(m_edit, GWLP_WNDPROC, reinterpret_cast<LONG_PTR>(procedure)));
}

Win32TextBox::~Win32TextBox() {
  if (m_edit != nullptr) {
    if (GetFocus() == m_edit) SetFocus(GetParent(m_edit));
    m_window.textBoxGone();
    DestroyWindow(m_edit);
  } else {
    m_window.textBoxGone();
  }
  if (m_background != nullptr) DeleteObject(m_background);
  if (m_picture != nullptr) DeleteObject(m_picture);
  DeleteObject(m_font);
}

void Win32TextBox::begin() {
  ShowWindow(m_edit, SW_SHOW);
  SetFocus(m_edit);
  SendMessageW(m_edit, EM_SETSEL, 0, -1);
}

std::string Win32TextBox::text() const {
  if (m_edit == nullptr) return {};
  std::wstring text(static_cast<std::size_t>(GetWindowTextLengthW(m_edit)) + 1, L'\0');
  const int length = GetWindowTextW(m_edit, text.data(), static_cast<int>(text.size()));
  return toUtf8(std::wstring_view(text).substr(0, static_cast<std::size_t>(length)));
}

void Win32TextBox::setText(std::string_view utf8) {
  if (m_edit == nullptr) return;
  SetWindowTextW(m_edit, toUtf16(utf8).c_str());
  SendMessageW(m_edit, EM_SETSEL, 0, -1);
}

HBRUSH Win32TextBox::prepare(HDC context) const {
  SetTextColor(context, m_colour);
  SetBkMode(context, TRANSPARENT);
  SetBrushOrgEx(context, 0, -m_belowFieldsTop, nullptr);
  return m_background != nullptr ? m_background : static_cast<HBRUSH>(GetStockObject(WHITE_BRUSH));
}

void Win32TextBox::onNotice(int code) {
  if (code != EN_CHANGE) return;
  WindowEvent event;
  event.type = WindowEventType::kTextBoxChanged;
  event.text = text();
  m_window.textBoxTold(std::move(event));
}

LRESULT Win32TextBox::handle(HWND edit, UINT message, WPARAM word, LPARAM details) {
  switch (message) {
  case WM_GETDLGCODE: return DLGC_WANTALLKEYS;
  case WM_KEYDOWN:
    if (!endsTyping(word)) break;
    m_window.onKey(message, word, details);
    return 0;
  case WM_CHAR:
    if (endsTyping(word)) return 0; // their characters, for which there would be a warning sound
    break;
  case WM_KILLFOCUS:
    if (reinterpret_cast<HWND>(word) == GetParent(edit)) break;
    m_window.onFocus(false);
    break;
  case WM_NCDESTROY: m_edit = nullptr; break;
  default: break;
  }
  const LRESULT result = CallWindowProcW(m_plain, edit, message, word, details);
  // Letters move over a picture that stands still, so what the control doesn't redraw is wrong.
  const bool dragged = message == WM_MOUSEMOVE && (word & MK_LBUTTON) != 0;
  if (message == WM_KEYDOWN || message == WM_CHAR || message == WM_LBUTTONDOWN || dragged)
    InvalidateRect(edit, nullptr, TRUE);
  return result;
}

LRESULT CALLBACK Win32TextBox::procedure(HWND edit, UINT message, WPARAM word, LPARAM details) {
  auto* const self = reinterpret_cast<Win32TextBox*>(GetWindowLongPtrW(edit, GWLP_USERDATA));
  return self->handle(edit, message, word, details);
}

} // namespace qlx::platform
