// SPDX-License-Identifier: ISC
#pragma once

#include "platform/NativeWindow.h"
#include "platform/windows/Win32TextBox.h"
#include "platform/windows/Windows.h"

#include <array>
#include <bitset>
#include <vector>

namespace qlx::platform {

/// The class of our windows, known to the system while there are any: an unloaded library must not
/// leave its procedure behind.
class WindowClass {
 public:
  explicit WindowClass(WNDPROC procedure);
  ~WindowClass();
  WindowClass(const WindowClass&) = delete;
  WindowClass& operator=(const WindowClass&) = delete;

  const wchar_t* name() const { return m_name.c_str(); }

 private:
  std::wstring m_name;
};

/// Memory for a picture that the system can paint from, rows from the top. Null when there is none.
HBITMAP createPicture(int width, int height, std::uint32_t** pixels);

/// A picture in memory that the system can paint from.
class WindowPicture {
 public:
  WindowPicture(int width, int height);
  ~WindowPicture();
  WindowPicture(const WindowPicture&) = delete;
  WindowPicture& operator=(const WindowPicture&) = delete;

  bool isGood() const { return m_pixels != nullptr; }
  /// @param area inside the picture, which has this one's size
  void copy(const PixelView& picture, const PixelRect& area);
  HDC context() const { return m_context; }

 private:
  HDC m_context;
  std::uint32_t* m_pixels = nullptr;
  HBITMAP m_bitmap;
  HGDIOBJ m_bitmapBefore = nullptr;
};

/// A window of the Windows desktop. What happens to it is kept until the next pump; its picture is
/// kept, too, so that it can be painted at any time.
class Win32Window final : public NativeWindow {
 public:
  static std::unique_ptr<Win32Window> createChild(HWND parent, int width, int height);
  static std::unique_ptr<Win32Window> createTopLevel(const TopLevelLook& look, int width,
                                                     int height);
  ~Win32Window() override;

  void setListener(WindowListener* listener) override { m_listener = listener; }
  void pump() override;
  void present(const PixelView& picture, std::span<const PixelRect> areas) override;
  void show() override;
  bool isOpen() const override { return m_window != nullptr; }
  std::uintptr_t handle() const override { return reinterpret_cast<std::uintptr_t>(m_window); }
  void takeFocus() override;
  void giveFocusBack() override;
  void setPointerShape(PointerShape shape) override;
  std::unique_ptr<NativeWindow> openPopup(int x, int y, int width, int height) override;
  void resize(int width, int height) override;
  PixelRect place() const override { return m_place; }
  void offerText(Selection selection, std::string_view text) override;
  void requestText(Selection selection) override;
  std::unique_ptr<TextBox> openTextBox(const TextBoxLook& look) override;
  std::chrono::milliseconds now() const override;

 private:
  friend class Win32TextBox; // it is a part of the window that happens to have a handle of its own

  /// What happened, and for keys the message that told it.
  struct Happening {
    WindowEvent event;
    UINT message = 0;
    WPARAM word = 0;
    LPARAM details = 0;
  };

  /// How a window is made, in the system's terms.
  struct Manner {
    DWORD style;
    DWORD extendedStyle = 0;
    HWND parent = nullptr;
    const wchar_t* title = L"";
  };

  Win32Window(Win32Window* owner, int width, int height);
  bool create(const Manner& manner, RECT outside);
  void setIcon(const PixelView& icon);
  static LRESULT CALLBACK procedure(HWND window, UINT message, WPARAM word, LPARAM details);
  LRESULT handle(HWND window, UINT message, WPARAM word, LPARAM details);
  bool onPointerMessage(UINT message, WPARAM word, LPARAM where);
  void onButton(std::uint32_t button, bool press, bool doubleClick, WPARAM keys, LPARAM where);
  void onMove(WPARAM keys, LPARAM where);
  void onWheel(WPARAM word, LPARAM where);
  void onCaptureLost();
  void onKey(UINT message, WPARAM key, LPARAM details);
  void onFocus(bool gained);
  void textBoxTold(WindowEvent event) { queue(std::move(event)); }
  void textBoxGone() { m_textBox = nullptr; }
  void onTimer();
  /// Tells the scale of the screen that the window is on, unless it is this one.
  void queueScale(double unless = 0.0);
  void paint();
  void watchPopup();
  void tell(const Happening& happening);
  void queue(WindowEventType type);
  void queue(WindowEvent event);

  WindowClass m_class{procedure};
  Win32Window* m_owner;
  Win32Window* m_popup = nullptr;
  Win32TextBox* m_textBox = nullptr; ///< its owner's
  WindowListener* m_listener = nullptr;
  int m_width;
  int m_height;
  PixelRect m_place;
  std::optional<WindowPicture> m_picture;
  HWND m_window = nullptr; ///< null when it has gone
  HWND m_focusBefore = nullptr;
  HCURSOR m_cursor;
  HICON m_icon = nullptr;
  POINT m_originAtPopup{};
  std::vector<Happening> m_happened;
  std::bitset<256> m_usedKeys; ///< held keys whose press was used, by virtual-key code
  std::uint32_t m_held = 0;
  POINT m_pointer{};
  wchar_t m_highSurrogate = 0; ///< first half of a character whose second half is to come
  bool m_leaveWanted = false;  ///< the system will tell when the pointer leaves
  bool m_pumping = false;
  bool m_hasLoop = false; ///< the thread's messages are this window's to fetch: there is no host
  std::chrono::milliseconds m_lastPump{0};
};

} // namespace qlx::platform
