// SPDX-License-Identifier: ISC
#pragma once

#include <cstdint>
#include <string>

namespace qlx::platform {

/// Modifier keys held during an event, as bits.
enum Modifier : std::uint32_t {
  kModifierShift = 1U << 0,
  kModifierControl = 1U << 1,
  kModifierAlt = 1U << 2,
  kModifierSuper = 1U << 3,
};

/// Pointer buttons, as bits.
enum PointerButton : std::uint32_t {
  kPointerLeft = 1U << 0,
  kPointerMiddle = 1U << 1,
  kPointerRight = 1U << 2,
};

/// Keys that have no character of their own. The numbers are those that plug-in hosts use when they
/// hand key presses to an effect, so that one table serves both ways in.
enum class VirtualKey : std::uint8_t {
  kNone = 0,
  kBack = 1,
  kTab = 2,
  kReturn = 4,
  kEscape = 6,
  kSpace = 7,
  kEnd = 9,
  kHome = 10,
  kLeft = 11,
  kUp = 12,
  kRight = 13,
  kDown = 14,
  kPageUp = 15,
  kPageDown = 16,
  kEnter = 19,
  kInsert = 21,
  kDelete = 22,
  kF10 = 49,
  kShift = 54,
  kControl = 55,
  kAlt = 56,
  kMenu = 255, ///< no host has a number for it
};

/// The two places that text can be copied to.
enum class Selection : std::uint8_t { kClipboard, kPrimary };

enum class WindowEventType : std::uint8_t {
  kMouseDown,    ///< x, y, button, buttons, modifiers, doubleClick
  kMouseUp,      ///< x, y, button, buttons, modifiers
  kMouseMove,    ///< x, y, buttons, modifiers; consecutive moves are merged
  kMouseLeave,   ///< the pointer left the window and no button is held
  kWheel,        ///< x, y, distance (notches, up is positive), modifiers
  kKeyDown,      ///< key, character, text, modifiers; repeats while the key is held
  kKeyUp,        ///< key, character, modifiers
  kExpose,       ///< x, y, width, height: this area of the window has to be presented again
  kFocusGained,  ///< the window has the keyboard
  kFocusLost,    ///< the keyboard went elsewhere, and not for a press on this window
  kPressOutside, ///< to a popup's owner: a button went down outside both, or the owner moved or was
                 ///< hidden
  kTick,         ///< time to do what is done at an idle: whoever calls pump doesn't at present
  kTextBoxChanged, ///< the user has edited the window's TextBox: its whole text
  kScaleChanged,   ///< the window has come to a screen of another scale
  kSelectionText,  ///< answer to NativeWindow::requestText: text (empty when there is none)
  kClosed,         ///< the window is gone or, at top level, the user asked to close it
};

/// One thing that happened to a window. Coordinates are whole pixels from the window's top left
/// corner.
struct WindowEvent {
  WindowEventType type = WindowEventType::kMouseMove;
  int x = 0;
  int y = 0;
  int width = 0;
  int height = 0;
  std::uint32_t button = 0;    ///< the one PointerButton that changed
  std::uint32_t buttons = 0;   ///< the PointerButton bits held (after a press, before a release)
  std::uint32_t modifiers = 0; ///< Modifier bits
  bool doubleClick = false;
  float distance = 0.0F;
  double scale = 0.0; ///< as WindowSystem::scale
  VirtualKey key = VirtualKey::kNone;
  char32_t character = 0; ///< the key's own character without compose, 0 when it has none
  std::string text;       ///< what the key types (UTF-8, composed), or selected text
};

} // namespace qlx::platform
