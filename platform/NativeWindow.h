// SPDX-License-Identifier: ISC
#pragma once

#include "platform/PixelView.h"
#include "platform/PointerShape.h"
#include "platform/TextBox.h"
#include "platform/WindowEvent.h"

#include <chrono>
#include <cstdint>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <string_view>

namespace qlx::platform {

/// Receives what happens to a window, one call per event, out of NativeWindow::pump.
class WindowListener {
 public:
  virtual ~WindowListener() = default;
  /// Answers whether the event was used. It counts for keys: a press that isn't used, and the
  /// release that belongs to it, go on to what had the keyboard before NativeWindow::takeFocus.
  virtual bool onWindowEvent(const WindowEvent& event) = 0;
};

/// A window of the desktop whose picture is made elsewhere. User-interface thread only. No
/// operation throws, and none fails loudly: a window that has gone (its parent destroyed, the
/// display lost) accepts every call and does nothing.
class NativeWindow {
 public:
  virtual ~NativeWindow() = default;
  NativeWindow() = default;
  NativeWindow(const NativeWindow&) = delete;
  NativeWindow& operator=(const NativeWindow&) = delete;

  /// Who gets the events; null for nobody. The listener outlives the window or is taken away
  /// before.
  virtual void setListener(WindowListener* listener) = 0;

  /// Fetches everything that has happened, merges consecutive pointer moves and exposed areas, and
  /// hands it to the listeners of this window and its popups. Never waits. Popups are served by
  /// their owner's pump.
  virtual void pump() = 0;

  /// Shows the given areas of the picture, which has the window's size.
  virtual void present(const PixelView& picture, std::span<const PixelRect> areas) = 0;

  /// Makes the window visible.
  virtual void show() = 0;

  /// Whether the window is still there.
  virtual bool isOpen() const = 0;

  /// The system's number of the window, to be handed to a child as its parent.
  virtual std::uintptr_t handle() const = 0;

  /// Asks for the keyboard. What had it is remembered, and gets the keys that the listener doesn't
  /// use.
  virtual void takeFocus() = 0;

  /// Gives the keyboard back to what had it before takeFocus, if this window still has it.
  virtual void giveFocusBack() = 0;

  /// Shows this pointer over the window from now on; the arrow unless set.
  virtual void setPointerShape(PointerShape shape) = 0;

  /// Opens an undecorated window of the given size above all others with its corner at (x, y) of
  /// this window's coordinates, moved as far as needed to lie inside the screen. It takes neither
  /// focus nor any grab. Null when it can't be had. The popup is destroyed before its owner.
  virtual std::unique_ptr<NativeWindow> openPopup(int x, int y, int width, int height) = 0;

  /// Gives the window another size; pictures have that size from now on.
  virtual void resize(int width, int height) = 0;

  /// Of a popup: where it lies, in its owner's coordinates. Of others: their size at (0, 0).
  virtual PixelRect place() const = 0;

  /// Offers text (UTF-8) to other programs.
  virtual void offerText(Selection selection, std::string_view text) = 0;

  /// Asks for the text that is on offer; it arrives as a kSelectionText event at a later pump, or
  /// never when its owner doesn't answer.
  virtual void requestText(Selection selection) = 0;

  /// Opens the system's own text box over a field of this window, one at a time. Null when the
  /// system has none; the field is then edited by its own means.
  virtual std::unique_ptr<TextBox> openTextBox(const TextBoxLook& /*look*/) { return nullptr; }

  /// A steady clock for blinking and the like.
  virtual std::chrono::milliseconds now() const = 0;
};

/// How a window of our own presents itself to the desktop.
struct TopLevelLook {
  std::string_view title;
  /// The program's name in lower case, by which the desktop groups its windows and finds its
  /// entry. Empty: none is told.
  std::string_view program = {};
  /// Opaque. Null pixels: the desktop chooses one.
  PixelView icon = {};
};

/// Makes windows. The desktop's own is nativeWindowSystem(); tests and pictures without a screen
/// use platform/offscreen/OffscreenWindow.h.
class WindowSystem {
 public:
  virtual ~WindowSystem() = default;

  /// A window inside another program's window (`parent` is the system's number for it, not 0),
  /// hidden until show(). Null when there is no display or no such parent.
  virtual std::unique_ptr<NativeWindow> openChild(std::uintptr_t parent, int width,
                                                  int height) const = 0;

  /// A window of our own on the desktop with a title bar and a fixed size. Null when there is no
  /// display.
  virtual std::unique_ptr<NativeWindow> openTopLevel(const TopLevelLook& look, int width,
                                                     int height) const = 0;

  /// How large the user wants things: pixels of the screen for each that a screen of 96 pixels an
  /// inch would have. Nothing when the desktop doesn't say.
  virtual std::optional<double> scale() const { return std::nullopt; }
};

/// The window system of the desktop that this was built for; stateless, never destroyed.
const WindowSystem& nativeWindowSystem();

} // namespace qlx::platform
