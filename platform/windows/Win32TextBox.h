// SPDX-License-Identifier: ISC
#pragma once

#include "platform/TextBox.h"
#include "platform/windows/Windows.h"

namespace qlx::platform {

class Win32Window;

/// The system's edit control as a child of one of our windows, transparent over the field's
/// picture.
class Win32TextBox final : public TextBox {
 public:
  Win32TextBox(Win32Window& window, const TextBoxLook& look);
  ~Win32TextBox() override;

  std::string text() const override;
  void setText(std::string_view utf8) override;

  /// Whether there is a control.
  bool isOpen() const { return m_edit != nullptr; }
  /// Takes the keyboard, with all text selected.
  void begin();
  /// Whether this is the edit control's window.
  bool is(HWND window) const { return window != nullptr && window == m_edit; }
  /// What the control asks of its parent: colours and background.
  HBRUSH prepare(HDC context) const;
  /// What it tells its parent: WM_COMMAND's upper word.
  void onNotice(int code);

 private:
  static LRESULT CALLBACK procedure(HWND edit, UINT message, WPARAM word, LPARAM details);
  LRESULT handle(HWND edit, UINT message, WPARAM word, LPARAM details);

  Win32Window& m_window;
  HWND m_edit = nullptr; ///< null when it has gone with its parent
  WNDPROC m_plain = nullptr;
  HFONT m_font;
  HBITMAP m_picture = nullptr;
  HBRUSH m_background = nullptr;
  COLORREF m_colour;
  int m_belowFieldsTop = 0;
};

} // namespace qlx::platform
