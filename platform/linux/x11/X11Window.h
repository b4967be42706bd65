// SPDX-License-Identifier: ISC
#pragma once

#include "platform/NativeWindow.h"
#include "platform/linux/x11/X11Connection.h"
#include "platform/linux/x11/X11Keyboard.h"
#include "platform/linux/x11/X11Picture.h"
#include "platform/linux/x11/X11Selections.h"

#include <bitset>
#include <memory>
#include <optional>

namespace qlx::platform {

/// A window on an X11 display.
class X11Window final : public NativeWindow {
 public:
  /// A window inside `parent`; null when the display refuses.
  static std::unique_ptr<X11Window> createChild(std::unique_ptr<X11Connection> connection,
                                                xcb_window_t parent, int width, int height);
  static std::unique_ptr<X11Window> createTopLevel(std::unique_ptr<X11Connection> connection,
                                                   const TopLevelLook& look, int width, int height);
  ~X11Window() override;

  void setListener(WindowListener* listener) override { m_listener = listener; }
  void pump() override;
  void present(const PixelView& picture, std::span<const PixelRect> areas) override;
  void show() override;
  bool isOpen() const override { return m_open && m_connection.isAlive(); }
  std::uintptr_t handle() const override { return m_window; }
  void takeFocus() override;
  void giveFocusBack() override;
  void setPointerShape(PointerShape shape) override;
  std::unique_ptr<NativeWindow> openPopup(int x, int y, int width, int height) override;
  void resize(int width, int height) override;
  PixelRect place() const override { return m_place; }
  void offerText(Selection selection, std::string_view text) override;
  void requestText(Selection selection) override;
  std::chrono::milliseconds now() const override;

  /// For the connection: the window's number, and an event for it.
  xcb_window_t number() const { return m_window; }
  void handleEvent(const xcb_generic_event_t& event);

 private:
  /// A loss of the focus is told one pump after it was noticed.
  enum class FocusLoss : std::uint8_t { kNone, kNoticed, kDue };
  struct Press {
    std::uint32_t button = 0;
    xcb_timestamp_t time = 0;
    int x = 0;
    int y = 0;
  };

  X11Window(std::unique_ptr<X11Connection> owned, X11Connection& connection, X11Window* owner,
            int width, int height);
  bool create(xcb_window_t parent, int x, int y, bool overrideRedirect);
  void setLook(const TopLevelLook& look);
  void fixSize();
  void setProperty(xcb_atom_t name, xcb_atom_t type, std::string_view text);
  void setProperty(xcb_atom_t name, xcb_atom_t type, std::span<const std::uint32_t> words);
  void selectKeys(bool wanted);
  bool emit(const WindowEvent& event);
  void emitMotion();
  void onButton(const xcb_button_press_event_t& event, bool press);
  void onPointer(int x, int y, std::uint16_t state);
  void onLeave(const xcb_leave_notify_event_t& event);
  void onFocus(const xcb_focus_in_event_t& event, bool in);
  void onKey(const xcb_key_press_event_t& event, bool press);
  void passOn(xcb_key_press_event_t event) const;
  void watchPopup();
  void settleFocusLoss();
  void closed();
  std::optional<std::pair<int, int>> origin() const;

  std::unique_ptr<X11Connection> m_owned;
  X11Connection& m_connection;
  X11Window* m_owner;
  X11Window* m_popup = nullptr;
  int m_width;
  int m_height;
  PixelRect m_place;
  xcb_window_t m_window = 0;
  std::optional<X11Picture> m_picture;
  std::optional<X11Selections> m_selections;
  std::unique_ptr<X11Keyboard> m_keyboard;
  WindowListener* m_listener = nullptr;
  std::optional<WindowEvent> m_motion;
  Press m_lastPress;
  std::uint32_t m_held = 0;
  xcb_window_t m_parent = 0;
  xcb_window_t m_focusBefore = 0;
  std::bitset<256> m_usedKeys; ///< held, and their press was used here
  FocusLoss m_loss = FocusLoss::kNone;
  PointerShape m_pointerShape = PointerShape::kArrow;
  std::pair<int, int> m_originAtPopup{0, 0};
  bool m_topLevel = false;
  bool m_focused = false;
  bool m_open = false;
  bool m_goneTold = false;
};

} // namespace qlx::platform
