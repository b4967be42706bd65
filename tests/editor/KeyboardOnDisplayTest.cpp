// SPDX-License-Identifier: ISC
// Who gets the keys: the editor in a host's window on a display, with a real keyboard and pointer,
// without a window manager and under one that gives the focus to the top-level window at every
// click.
#include "tests/support/EditorRig.h"
#include "tests/support/TemporaryFolder.h"
#include "tests/support/desktop/VirtualDisplay.h"
#include "tests/support/desktop/X11Host.h"

#include <gtest/gtest.h>

#include <chrono>
#include <cstdlib>
#include <functional>
#include <thread>

namespace qlx::test {
namespace {

constexpr int kWidth = 401;
constexpr int kHeight = 570;
constexpr int kRim = 60; // of the host's own, below the editor

bool hasWindowManager() {
  constexpr std::string_view kName = "_NET_SUPPORTING_WM_CHECK";
  xcb_connection_t* xcb = xcb_connect(nullptr, nullptr);
  const xcb_window_t root = xcb_setup_roots_iterator(xcb_get_setup(xcb)).data->root;
  const auto atom = owned(
      xcb_intern_atom_reply(xcb, xcb_intern_atom(xcb, 0, kName.size(), kName.data()), nullptr));
  const auto found = owned(xcb_get_property_reply(
      xcb, xcb_get_property(xcb, 0, root, atom->atom, XCB_ATOM_WINDOW, 0, 1), nullptr));
  const bool has = found != nullptr && found->length == 1;
  xcb_disconnect(xcb);
  return has;
}

// Codes of keys, whatever is engraved on them.
constexpr const char* kSpace = "65";
constexpr const char* kReturn = "36";
constexpr const char* kDown = "116";
constexpr const char* kTab = "23";
constexpr const char* kEscape = "Escape"; // 9 would be the digit

class KeyboardOnDisplay : public testing::TestWithParam<bool> {
 protected:
  void SetUp() override {
    ASSERT_TRUE(display.isRunning()) << "Xvfb is needed";
    if (GetParam()) {
      if (std::system("command -v openbox >/dev/null") != 0) GTEST_SKIP() << "openbox is needed";
      setenv("HOME", folder.path().c_str(), 1);
      manager.emplace(std::vector<std::string>{"openbox"});
      ASSERT_TRUE(until(hasWindowManager));
    }
    constexpr platform::PixelRect kPlace{0, 0, kWidth, kHeight + kRim};
    host.emplace(kPlace, true);
    if (!GetParam()) host->focus(host->window());
    // A window manager that is still starting overlooks windows.
    const auto hasFocus = [this] { return host->focused() == host->window(); };
    for (int i = 0; i < 20 && !until(hasFocus, 100); ++i) host.emplace(kPlace, true);
    ASSERT_TRUE(hasFocus());
    ASSERT_TRUE(rig.editor->open(reinterpret_cast<void*>(std::uintptr_t{host->window()})));
    std::tie(left, top) = host->corner();
  }

  static bool until(const std::function<bool()>& isSo, int steps = 1000) {
    for (int i = 0; i < steps && !isSo(); ++i)
      std::this_thread::sleep_for(std::chrono::milliseconds(5));
    return isSo();
  }
  /// What the user does, with as many idles after it as settle everything.
  void user(const std::string& does) {
    ASSERT_EQ(std::system(("xdotool " + does).c_str()), 0) << does;
    for (int i = 0; i < 20; ++i) {
      rig.editor->idle();
      std::this_thread::sleep_for(std::chrono::milliseconds(5));
    }
  }
  void point(int x, int y, const std::string& then = {}) {
    user("mousemove " + std::to_string(left + x) + " " + std::to_string(top + y) + " " + then);
  }
  void click(int x, int y) { point(x, y, "click 1"); }
  /// The host's window comes to another screen.
  void moveTo(std::uint32_t x, std::uint32_t y, double scale) {
    rig.editor->setHostScale(scale);
    rig.editor->idle();
    sdk::EditRectangle* size = nullptr;
    ASSERT_TRUE(rig.editor->getRect(&size));
    host->resizeWindow(size->right, size->bottom + kRim);
    host->moveWindow(x, y);
    ASSERT_TRUE(until([&] { return host->corner().first >= static_cast<int>(x); }));
    user("sleep 0.1"); // a window manager may move it once more
    std::tie(left, top) = host->corner();
    rig.effect.log.clear();
  }
  void leave() { point(kWidth / 2, kHeight + kRim / 2); }
  void key(const char* codes) { user(std::string("key --delay 1 ") + codes); }

  std::string name() const { return std::string(rig.effect.getPresetSlot(0).nameText()); }

  TemporaryFolder folder;
  VirtualDisplay display{{"-screen", "0", "1000x1300x24"}};
  std::optional<ChildProcess> manager;
  std::optional<X11Host> host;
  EditorRig rig{&platform::nativeWindowSystem()};
  int left = 0;
  int top = 0;
};

TEST_P(KeyboardOnDisplay, KeysThatTheEditorDoesNotUseAreTheHosts) {
  point(200, 300);
  key(kSpace);
  EXPECT_EQ(host->keys(), kSpace) << "before any click";
  click(200, 300); // the bare panel
  key(kSpace);
  EXPECT_EQ(host->keys(), kSpace);
  click(357, 244); // the lever
  rig.effect.log.clear();
  key(kDown);
  EXPECT_EQ(rig.effect.log, "(2 2=516 )2");
  EXPECT_EQ(host->keys(), "");
  key(kSpace);
  EXPECT_EQ(host->keys(), kSpace);
  leave();
  key(kDown);
  EXPECT_EQ(host->keys(), kDown) << "the host has the keyboard back";
  EXPECT_EQ(host->focused(), host->window());
}

TEST_P(KeyboardOnDisplay, WalkingLeavesTheHostItsKeys) {
  click(200, 300); // the bare panel
  key(kTab);
  rig.effect.log.clear();
  key("111 22 65 38"); // Up, Backspace, Space, a
  EXPECT_EQ(rig.effect.log, "(17 17=10 )17");
  EXPECT_EQ(host->keys(), "22 65 38");
  leave();
  key("shift+23");
  key(kReturn); // the manual, which there is none of
  EXPECT_NE(rig.frame().getModalView(), nullptr) << "the pointer isn't needed";
  key(kEscape);
  EXPECT_EQ(rig.frame().getModalView(), nullptr);
  host->keys();
  key(kEscape);
  EXPECT_EQ(rig.frame().getRingView(), nullptr);
  EXPECT_EQ(host->focused(), host->window());
  key("23 116");
  EXPECT_EQ(host->keys(), "23 116");
}

TEST_P(KeyboardOnDisplay, HandAndKeysFollowTheWindowToScreensOfOtherScales) {
  std::uint32_t x = 20;
  for (const double scale : {1.0, 2.0, 1.5, 1.0}) {
    SCOPED_TRACE(scale);
    for (int i = 0; i < 36; ++i) rig.effect.setParameter(i, 0.0F);
    moveTo(x += 15, 40, scale);
    const auto at = [scale](double logical) { return static_cast<int>(logical * scale); };
    const auto moved = [&](int toX, int toY, const char* then) { point(at(toX), at(toY), then); };
    moved(42, 75, "mousedown 1");
    moved(62, 75, "mouseup 1");
    moved(357, 187, "click 1");
    moved(372, 365, "click 1");
    moved(369, 543, "click 1");
    EXPECT_EQ(std::exchange(rig.effect.log, {}),
              "(17 17=50 )17 (2 2=1000 )2 (4 4=0 4=1000 )4 (0 0=0 0=1000 )0");
    moved(42, 75, "click 1");
    key(kTab);
    key("111");
    EXPECT_EQ(rig.effect.log, "(17 )17 (18 18=10 )18");
    const auto shown = host->pixels(host->window(), static_cast<std::uint16_t>(at(401)),
                                    static_cast<std::uint16_t>(at(570)));
    gui::PixelBuffer whole(at(401), at(570));
    gui::CDrawContext context(whole, rig.frame().getTypeface(), scale);
    rig.frame().draw(context);
    EXPECT_TRUE(shown == whole.pixels) << "the screen shows another picture";
    key(kEscape);
    EXPECT_EQ(host->focused(), host->window());
    host->keys();
  }
}

TEST_P(KeyboardOnDisplay, MenuKeysChooseASize) {
  click(42, 75);
  for (const char* const keys : {"135", "50+76"}) { // menu; left Shift, F10
    key(kTab);
    const double before = rig.frame().getScale();
    key(keys);
    key("111 36"); // up to the last, Return
    EXPECT_TRUE(until([&] { return rig.frame().getScale() != before; })) << keys;
    rig.editor->setHostScale(1.5);
    rig.editor->idle();
  }
}

TEST_P(KeyboardOnDisplay, LayoutMayChangeWhileAnEditorIsOpen) {
  constexpr const char* kKeys = "29 52 47 34 35"; // y ; z [ ] where the layout is American
  const std::pair<const char*, const char*> layouts[]{
      {"us", "yz;[]"}, {"de", "zy\xC3\xB6\xC3\xBC+"}, {"us", "yz;[]"}};
  for (const auto& [layout, typed] : layouts) {
    ASSERT_EQ(std::system((std::string("setxkbmap ") + layout).c_str()), 0);
    click(204, 561);
    key(kKeys);
    key(kReturn);
    EXPECT_EQ(name(), typed);
  }
  EXPECT_EQ(host->keys(), "");
}

TEST_P(KeyboardOnDisplay, ASecondClickLeavesTheNameOpen) {
  click(204, 561);
  key("a");
  click(204, 561);
  key("End b");
  EXPECT_NE(name(), "ab");
  key(kReturn);
  EXPECT_EQ(name(), "ab");
  EXPECT_EQ(host->keys(), "");
}

TEST_P(KeyboardOnDisplay, AClickThatClosesTheMenuDoesNoMore) {
  click(269, 561);
  ASSERT_FALSE(rig.frame().getPopupPlace().empty());
  click(87, 75); // a knob
  EXPECT_TRUE(rig.frame().getPopupPlace().empty());
  EXPECT_EQ(rig.effect.log, "");
  click(87, 75);
  EXPECT_NE(rig.effect.log, "");
}

TEST_P(KeyboardOnDisplay, DialogsKeepTheKeyboardWhenThePointerLeaves) {
  click(392, 561); // there is no manual
  ASSERT_NE(rig.frame().getModalView(), nullptr);
  leave();
  key(kReturn);
  EXPECT_EQ(rig.frame().getModalView(), nullptr);
  EXPECT_EQ(host->keys(), "");
  key(kSpace);
  EXPECT_EQ(host->keys(), kSpace);
}

INSTANTIATE_TEST_SUITE_P(, KeyboardOnDisplay, testing::Values(false, true), [](const auto& test) {
  return test.param ? "UnderOpenbox" : "WithoutWindowManager";
});

} // namespace
} // namespace qlx::test
