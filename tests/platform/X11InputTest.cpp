// SPDX-License-Identifier: ISC
// Pointer, keys, focus and selections.
#include "tests/platform/X11Rig.h"

namespace qlx::test {
namespace {

struct ButtonCase {
  const char* what;
  std::uint8_t detail;
  std::uint16_t state;
  xcb_timestamp_t after; // milliseconds since the last one
  std::int16_t x;
  WindowEventType type;
  std::uint32_t button;
  bool doubleClick;
  float distance;
};

TEST_F(X11Windows, ButtonsAndDoubleClicks) {
  using enum WindowEventType;
  const ButtonCase cases[]{
      {"first", 1, 0, 1000, 10, kMouseDown, kPointerLeft, false, 0},
      {"soon after", 1, 0, 300, 12, kMouseDown, kPointerLeft, true, 0},
      {"a third starts anew", 1, 0, 100, 12, kMouseDown, kPointerLeft, false, 0},
      {"too late", 1, 0, 500, 12, kMouseDown, kPointerLeft, false, 0},
      {"too far", 1, 0, 100, 30, kMouseDown, kPointerLeft, false, 0},
      {"another button", 3, 0, 100, 30, kMouseDown, kPointerRight, false, 0},
      {"middle", 2, XCB_MOD_MASK_SHIFT, 900, 30, kMouseDown, kPointerMiddle, false, 0},
      {"wheel up", 4, 0, 1, 30, kWheel, 0, false, 1.0F},
      {"wheel down", 5, 0, 1, 30, kWheel, 0, false, -1.0F},
  };
  open();
  xcb_timestamp_t time = 5000;
  for (const ButtonCase& c : cases) {
    SCOPED_TRACE(c.what);
    listener.events.clear();
    time += c.after;
    host->send(window->handle(), XCB_BUTTON_PRESS, c.detail, c.x, 20, c.state, time);
    ASSERT_TRUE(comes(c.type));
    const WindowEvent& event = *listener.last(c.type);
    EXPECT_EQ(event.button, c.button);
    EXPECT_EQ(event.doubleClick, c.doubleClick);
    EXPECT_EQ(event.distance, c.distance);
    EXPECT_EQ(event.x, c.x);
    EXPECT_EQ(event.modifiers, c.state != 0 ? kModifierShift : 0U);
    host->send(window->handle(), XCB_BUTTON_RELEASE, c.detail, c.x, 20, 0, time);
  }
}

TEST_F(X11Windows, MovesAreMergedAndLeavingIsTold) {
  open();
  host->warp(10, 10);
  host->warp(20, 20);
  host->warp(30, 35);
  host->sync();
  ASSERT_TRUE(comes(WindowEventType::kMouseMove));
  EXPECT_EQ(listener.count(WindowEventType::kMouseMove), 1U);
  EXPECT_EQ(listener.last(WindowEventType::kMouseMove)->x, 30);
  EXPECT_EQ(listener.last(WindowEventType::kMouseMove)->y, 35);
  host->warp(290, 190);
  EXPECT_TRUE(comes(WindowEventType::kMouseLeave));
}

TEST_F(X11Windows, FocusIsTakenAndGivenBack) {
  open();
  host->focus(host->window());
  window->takeFocus();
  EXPECT_TRUE(comes(WindowEventType::kFocusGained));
  EXPECT_EQ(host->focused(), window->handle());
  window->giveFocusBack();
  EXPECT_TRUE(comes(WindowEventType::kFocusLost));
  EXPECT_EQ(host->focused(), host->window());
  window->takeFocus();
  host->focus(XCB_INPUT_FOCUS_POINTER_ROOT);
  window->giveFocusBack();
  EXPECT_EQ(host->focused(), static_cast<xcb_window_t>(XCB_INPUT_FOCUS_POINTER_ROOT))
      << "what was taken elsewhere is left there";
}

TEST_F(X11Windows, FocusOfTheWindowManagersIsFocusToo) {
  open();
  const auto key = [this] {
    host->send(window->handle(), XCB_KEY_PRESS, 65, 0, 0, 0, 0, XCB_EVENT_MASK_KEY_PRESS);
    window->pump();
    return listener.count(WindowEventType::kKeyDown);
  };
  EXPECT_EQ(key(), 0U) << "no keys are asked for without the focus";
  host->focus(static_cast<xcb_window_t>(window->handle()));
  ASSERT_TRUE(comes(WindowEventType::kFocusGained));
  EXPECT_TRUE(pumpUntil([&key] { return key() > 0; }));
}

TEST_F(X11Windows, FocusLossForAPressOnTheWindowItselfIsNone) {
  open();
  window->takeFocus();
  ASSERT_TRUE(comes(WindowEventType::kFocusGained));
  for (const bool late : {false, true}) {
    SCOPED_TRACE(late);
    listener.events.clear();
    host->focus(host->window());
    if (late) window->pump();
    host->send(window->handle(), XCB_BUTTON_PRESS, 1, 5, 6, 0);
    for (int i = 0; i < 3; ++i) window->pump();
    EXPECT_EQ(listener.count(WindowEventType::kMouseDown), 1U);
    EXPECT_EQ(listener.count(WindowEventType::kFocusLost), 0U);
    EXPECT_EQ(host->focused(), window->handle());
    host->send(window->handle(), XCB_BUTTON_RELEASE, 1, 5, 6, 0);
    window->pump();
  }
  host->focus(host->window());
  EXPECT_TRUE(comes(WindowEventType::kFocusLost)) << "without a press it is one";
}

TEST_F(X11Windows, UnusedKeysGoToWhatHadTheFocus) {
  open();
  for (const xcb_window_t before : {host->window(), xcb_window_t{XCB_INPUT_FOCUS_POINTER_ROOT}}) {
    SCOPED_TRACE(before);
    host->focus(before);
    listener.events.clear();
    window->takeFocus();
    ASSERT_TRUE(comes(WindowEventType::kFocusGained));
    const auto key = [this](std::uint8_t type, std::uint8_t code, bool used) {
      listener.usesKeys = used;
      host->send(window->handle(), type, code, 0, 0, 0);
      window->pump();
    };
    key(XCB_KEY_PRESS, 65, false);
    key(XCB_KEY_RELEASE, 65, true);
    key(XCB_KEY_PRESS, 38, true);
    key(XCB_KEY_RELEASE, 38, false);
    key(XCB_KEY_RELEASE, 40, false);
    EXPECT_EQ(host->keys(), "65 -65 -40") << "a release follows its press";
    window->giveFocusBack();
    ASSERT_TRUE(comes(WindowEventType::kFocusLost));
  }
  host->destroyWindow();
}

TEST_F(X11Windows, UnusedKeysReachATopLevelWindowOfOurs) {
  other = nativeWindowSystem().openTopLevel({"host"}, kWidth, kHeight);
  ASSERT_NE(other, nullptr);
  Listener outside;
  other->setListener(&outside);
  other->show();
  ASSERT_TRUE(pumpUntil([&] { return outside.count(WindowEventType::kExpose) > 0; }));
  X11Host keys({0, 0, 1, 1});
  keys.focus(static_cast<xcb_window_t>(other->handle()));
  window = nativeWindowSystem().openChild(other->handle(), kWidth, kHeight);
  ASSERT_NE(window, nullptr);
  window->setListener(&listener);
  window->show();
  ASSERT_TRUE(comes(WindowEventType::kExpose));
  window->takeFocus();
  ASSERT_TRUE(comes(WindowEventType::kFocusGained));
  for (const bool used : {true, false}) {
    listener.usesKeys = used;
    listener.events.clear();
    keys.send(window->handle(), XCB_KEY_PRESS, 65, 0, 0, 0);
    ASSERT_TRUE(comes(WindowEventType::kKeyDown));
    EXPECT_EQ(pumpUntil([&] { return outside.count(WindowEventType::kKeyDown) > 0; }), !used);
  }
  window.reset();
}

struct KeyCase {
  xcb_keysym_t symbol;
  std::uint16_t state;
  VirtualKey key;
  char32_t character;
  const char* text;
};

TEST_F(X11Windows, KeysAndText) {
  constexpr xcb_keycode_t kFirst = 200; // keys that no real keyboard of the test has
  constexpr xcb_keysym_t kDeadAcute = 0xFE51;
  const KeyCase cases[]{
      {'a', 0, VirtualKey::kNone, U'a', "a"},
      {'a', XCB_MOD_MASK_SHIFT, VirtualKey::kNone, U'A', "A"},
      {'c', XCB_MOD_MASK_CONTROL, VirtualKey::kNone, U'c', ""},
      {0xE4, 0, VirtualKey::kNone, U'\u00E4', "\xC3\xA4"},
      {kDeadAcute, 0, VirtualKey::kNone, 0, ""},
      {'e', 0, VirtualKey::kNone, U'e', "\xC3\xA9"},
      {' ', 0, VirtualKey::kSpace, U' ', " "},
      {0xFF0D, 0, VirtualKey::kReturn, 0, ""},
      {0xFF8D, 0, VirtualKey::kEnter, 0, ""},
      {0xFF1B, 0, VirtualKey::kEscape, 0, ""},
      {0xFF52, 0, VirtualKey::kUp, 0, ""},
      {0xFF50, XCB_MOD_MASK_SHIFT, VirtualKey::kHome, 0, ""},
      {0xFFFF, 0, VirtualKey::kDelete, 0, ""},
  };
  open();
  xcb_keycode_t code = kFirst;
  for (const KeyCase& c : cases) {
    const std::array<xcb_keysym_t, 2> symbols{
        c.symbol, c.symbol >= 'a' && c.symbol <= 'z' ? c.symbol - 32 : c.symbol};
    xcb_change_keyboard_mapping(host->xcb(), 1, code++, 2, symbols.data());
  }
  host->sync();
  code = kFirst;
  for (const KeyCase& c : cases) {
    SCOPED_TRACE(c.symbol);
    listener.events.clear();
    host->send(window->handle(), XCB_KEY_PRESS, code++, 0, 0, c.state);
    ASSERT_TRUE(comes(WindowEventType::kKeyDown));
    const WindowEvent& event = *listener.last(WindowEventType::kKeyDown);
    EXPECT_EQ(event.key, c.key);
    EXPECT_EQ(event.character, c.character);
    EXPECT_EQ(event.text, c.text);
  }
  constexpr xcb_keysym_t kAnother = 'y';
  xcb_change_keyboard_mapping(host->xcb(), 1, kFirst, 1, &kAnother);
  listener.events.clear();
  host->send(window->handle(), XCB_KEY_PRESS, kFirst, 0, 0, 0);
  ASSERT_TRUE(comes(WindowEventType::kKeyDown));
  EXPECT_EQ(listener.last(WindowEventType::kKeyDown)->text, "y") << "the map has changed since";
  // Two layouts: the event says which of them is in force.
  ASSERT_EQ(std::system("setxkbmap us,de"), 0);
  constexpr std::uint16_t kSecondGroup = 1U << 13;
  for (const std::uint16_t state : {std::uint16_t{0}, kSecondGroup}) {
    listener.events.clear();
    host->send(window->handle(), XCB_KEY_PRESS, 29, 0, 0, state);
    ASSERT_TRUE(comes(WindowEventType::kKeyDown));
    EXPECT_EQ(listener.last(WindowEventType::kKeyDown)->text, state == 0 ? "y" : "z");
  }
}

TEST_F(X11Windows, TextGoesBetweenPrograms) {
  open();
  other = nativeWindowSystem().openChild(host->window(), 10, 10);
  for (const Selection selection : {Selection::kClipboard, Selection::kPrimary}) {
    listener.events.clear();
    const std::string text = selection == Selection::kPrimary ? "prim\xC3\xA4r" : "Tremolo";
    other->offerText(selection, text);
    other->giveFocusBack(); // waits until the display knows
    window->requestText(selection);
    ASSERT_TRUE(comes(WindowEventType::kSelectionText));
    EXPECT_EQ(listener.last(WindowEventType::kSelectionText)->text, text);
  }
  other.reset();
  ASSERT_TRUE(pumpUntil([this] { return host->children(host->window()) == 1; }));
  listener.events.clear();
  window->requestText(Selection::kClipboard);
  ASSERT_TRUE(comes(WindowEventType::kSelectionText)) << "its owner is gone";
  EXPECT_EQ(listener.last(WindowEventType::kSelectionText)->text, "");
  window->offerText(Selection::kClipboard, "own");
  listener.events.clear();
  window->requestText(Selection::kClipboard);
  ASSERT_TRUE(comes(WindowEventType::kSelectionText));
  EXPECT_EQ(listener.last(WindowEventType::kSelectionText)->text, "own");
}

} // namespace
} // namespace qlx::test
