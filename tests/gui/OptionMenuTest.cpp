// SPDX-License-Identifier: ISC
#include "gui/controls/COptionMenu.h"

#include "gui/dialogs/CMenuList.h"
#include "tests/gui/FrameFixture.h"

namespace qlx::test {

namespace {

using platform::WindowEventType;

class OptionMenus : public FrameFixture {
 public:
  OptionMenus() {
    menu = &frame->addView(std::make_unique<COptionMenu>(CRect{100, 50, 112, 64}, &recorder, 161,
                                                         nullptr,
                                                         kPopupStyle | kCheckStyle | kNoDrawStyle));
    for (int i = 0; i < 32; ++i)
      menu->addEntry((i % 2 == 0 ? "Even " : "odd ") + std::to_string(i));
    menu->setNbItemsPerColumn(8);
    menu->setCurrent(9);
  }

  CPoint entry(int index) { return menu->getList()->getEntryRect(index).centre(); }
  void inList(WindowEventType event, const CPoint& where) {
    mouseOn(*window->popup(), event, int(where.x), int(where.y));
  }
  void close() {
    key(VirtualKey::kEscape);
    recorder.take();
  }

  COptionMenu* menu;
};

TEST_F(OptionMenus, OpensWithTheCurrentEntryOverTheButton) {
  click(105, 55);
  ASSERT_TRUE(menu->isPopupOpen());
  const CPoint current = entry(9) + frame->getPopupPlace().topLeft();
  EXPECT_NEAR(current.x, 106, 1);
  EXPECT_NEAR(current.y, 57, 1);
  EXPECT_TRUE(window->hasFocus());
}

TEST_F(OptionMenus, StandsInColumns) {
  click(105, 55);
  const CRect first = menu->getList()->getEntryRect(0);
  const CRect eighth = menu->getList()->getEntryRect(7);
  const CRect ninth = menu->getList()->getEntryRect(8);
  EXPECT_EQ(eighth.left, first.left);
  EXPECT_EQ(ninth.top, first.top);
  EXPECT_EQ(ninth.left, first.right);
  const CRect last = menu->getList()->getEntryRect(31);
  EXPECT_TRUE(menu->getList()->getViewSize().contains(last));
  EXPECT_EQ(last.bottom, eighth.bottom);
}

struct KeyCase {
  const char* what;
  std::vector<VirtualKey> keys;
  std::string letters;
  int highlighted;
};

TEST_F(OptionMenus, IsWalkedByKeys) {
  using enum VirtualKey;
  const KeyCase cases[]{
      {"starts at the current", {}, "", 9},
      {"down", {kDown}, "", 10},
      {"up", {kUp}, "", 8},
      {"a column on", {kRight}, "", 17},
      {"a column back", {kLeft}, "", 1},
      {"no column before the first", {kLeft, kLeft}, "", 1},
      {"first", {kHome}, "", 0},
      {"not beyond the first", {kHome, kUp}, "", 0},
      {"last", {kEnd, kDown}, "", 31},
      {"first letter", {}, "e", 10},
      {"the next with it", {}, "ee", 12},
      {"upper or lower case", {}, "O", 11},
      {"round the end", {kEnd}, "e", 0},
      {"no such letter", {}, "z", 9},
  };
  for (const KeyCase& c : cases) {
    SCOPED_TRACE(c.what);
    click(105, 55);
    for (const VirtualKey k : c.keys) key(k);
    type(c.letters);
    ASSERT_TRUE(menu->isPopupOpen());
    EXPECT_EQ(menu->getList()->getHighlighted(), c.highlighted);
    key(kReturn);
    EXPECT_FALSE(menu->isPopupOpen());
    EXPECT_EQ(menu->getCurrentIndex(), c.highlighted);
    EXPECT_EQ(recorder.take(), "begin v" + std::to_string(c.highlighted * 100) + " end ");
    menu->setCurrent(9);
  }
}

TEST_F(OptionMenus, ChosenByPointer) {
  click(105, 55);
  inList(WindowEventType::kMouseMove, entry(20));
  EXPECT_EQ(menu->getList()->getHighlighted(), 20);
  inList(WindowEventType::kMouseDown, entry(21));
  inList(WindowEventType::kMouseUp, entry(21));
  EXPECT_EQ(recorder.take(), "begin v2100 end ");
  EXPECT_EQ(window->popup(), nullptr);
}

TEST_F(OptionMenus, PressDragAndLetGoChooses) {
  press(105, 55);
  const CPoint there = entry(12) + frame->getPopupPlace().topLeft();
  drag(int(there.x), int(there.y));
  release(int(there.x), int(there.y));
  EXPECT_EQ(recorder.take(), "begin v1200 end ");
}

TEST_F(OptionMenus, ClosesWithoutAChoice) {
  struct Case {
    const char* what;
    void (*act)(OptionMenus&);
  };
  const Case cases[]{
      {"Escape", [](OptionMenus& t) { t.key(VirtualKey::kEscape); }},
      {"press in the window", [](OptionMenus& t) { t.click(10, 10); }},
      {"press on the button", [](OptionMenus& t) { t.click(105, 55); }},
      {"press elsewhere", [](OptionMenus& t) { t.happens(WindowEventType::kPressOutside); }},
      {"keyboard lost", [](OptionMenus& t) { t.happens(WindowEventType::kFocusLost); }},
      {"menu taken out",
       [](OptionMenus& t) {
         t.frame->removeView(*t.menu);
         t.frame->idle();
       }},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.what);
    click(105, 55);
    ASSERT_NE(window->popup(), nullptr);
    c.act(*this);
    EXPECT_EQ(window->popup(), nullptr);
    EXPECT_EQ(recorder.take(), "");
  }
}

TEST_F(OptionMenus, GoesWithItsWindow) {
  click(105, 55);
  frame.reset();
  EXPECT_EQ(recorder.take(), "");
}

TEST_F(OptionMenus, ASecondPressInTheSameBreathChoosesOnce) {
  click(105, 55);
  platform::WindowEvent up;
  up.type = WindowEventType::kMouseUp;
  up.button = platform::kPointerLeft;
  up.x = int(entry(3).x);
  up.y = int(entry(3).y);
  platform::WindowEvent down = up;
  down.type = WindowEventType::kMouseDown;
  for (const platform::WindowEvent& event : {down, up, down, up}) window->popup()->inject(event);
  frame->idle();
  EXPECT_EQ(recorder.take(), "begin v300 end ");
}

} // namespace
} // namespace qlx::test
