// SPDX-License-Identifier: ISC
// Windows, popups, and displays and parents that go.
#include "tests/platform/X11Rig.h"
#include "tests/support/ProcessResources.h"

#include <csignal>
#include <poll.h>

namespace {

std::function<void()> beforeWriting; // once

} // namespace

// xcb asks whether it may write before it does.
extern "C" __attribute__((visibility("default"))) int poll(pollfd* files, nfds_t count,
                                                           int timeout) {
  const int ready = qlx::test::next(&poll, "poll")(files, count, timeout);
  if (beforeWriting && (files->revents & POLLOUT) != 0) std::exchange(beforeWriting, nullptr)();
  return ready;
}

namespace qlx::test {
namespace {

TEST(X11NoDisplay, GivesNoWindow) {
  unsetenv("DISPLAY");
  EXPECT_EQ(nativeWindowSystem().openChild(1234, kWidth, kHeight), nullptr);
  EXPECT_EQ(nativeWindowSystem().openTopLevel({"x"}, kWidth, kHeight), nullptr);
}

TEST_F(X11Windows, NoSuchParentGivesNoWindow) {
  EXPECT_EQ(nativeWindowSystem().openChild(0, kWidth, kHeight), nullptr);
  EXPECT_EQ(nativeWindowSystem().openChild(0x7FFFFF, kWidth, kHeight), nullptr);
}

TEST_F(X11Windows, ParentDestroyedFirst) {
  open();
  host->destroyWindow();
  EXPECT_TRUE(comes(WindowEventType::kClosed));
  EXPECT_FALSE(window->isOpen());
  window->pump();
  window->takeFocus();
  window->giveFocusBack();
  EXPECT_EQ(window->openPopup(0, 0, 10, 10), nullptr);
  presentTestPicture(*window);
  window->pump();
  EXPECT_EQ(listener.count(WindowEventType::kClosed), 1U);
}

TEST_F(X11Windows, DisplayGoneWhileOpen) {
  open();
  auto popup = window->openPopup(0, 0, 50, 50);
  ASSERT_NE(popup, nullptr);
  display.kill();
  presentTestPicture(*window);
  EXPECT_TRUE(comes(WindowEventType::kClosed));
  EXPECT_FALSE(window->isOpen());
  presentTestPicture(*window);
  window->offerText(Selection::kClipboard, "x");
  window->takeFocus();
  popup.reset();
  window.reset();
}

TEST_F(X11Windows, DisplayGoneInTheMiddleOfAWrite) {
  signal(SIGPIPE, SIG_DFL);
  open();
  beforeWriting = [this] { display.kill(); };
  presentTestPicture(*window);
  EXPECT_FALSE(beforeWriting);
  EXPECT_TRUE(comes(WindowEventType::kClosed));
}

TEST_F(X11Windows, TwoEditorsSideBySide) {
  open();
  other = nativeWindowSystem().openChild(host->window(), kWidth, kHeight);
  ASSERT_NE(other, nullptr);
  Listener otherListener;
  other->setListener(&otherListener);
  other->show();
  host->send(other->handle(), XCB_BUTTON_PRESS, 1, 5, 6, 0);
  EXPECT_TRUE(pumpUntil(
      [&otherListener] { return otherListener.count(WindowEventType::kMouseDown) == 1; }));
  EXPECT_EQ(listener.count(WindowEventType::kMouseDown), 0U);
}

TEST_F(X11Windows, ScaleIsTheDisplaysSettingOfDotsAnInch) {
  open();
  EXPECT_EQ(nativeWindowSystem().scale(), std::nullopt);
  struct Case {
    std::string_view resources;
    std::optional<double> scale;
  };
  for (const auto& [resources, scale] :
       {Case{"Xft.dpi:\t192\n", 2.0}, Case{"Xft.antialias: 1\nXft.dpi: 144.0\nx: y", 1.5},
        Case{"Xft.dpi:", std::nullopt}, Case{"Xft.dpi:\tmuch\n", std::nullopt},
        Case{"Xft.dpi:\t-96\n", std::nullopt}, Case{"*Xft.dpi: 192\n", std::nullopt}}) {
    host->setResources(resources);
    EXPECT_EQ(nativeWindowSystem().scale(), scale) << resources;
  }
}

TEST_F(X11Windows, AnotherSizeIsShownWholly) {
  open();
  window->resize(200, 160);
  EXPECT_EQ(window->place(), (PixelRect{0, 0, 200, 160}));
  const std::vector<std::uint32_t> colour(200 * 160, 0xFF123456U);
  window->present({colour.data(), 200, 160}, std::array{window->place()});
  const auto size = owned(xcb_get_geometry_reply(
      host->xcb(), xcb_get_geometry(host->xcb(), static_cast<xcb_window_t>(window->handle())),
      nullptr));
  ASSERT_NE(size, nullptr);
  EXPECT_EQ(size->width, 200);
  EXPECT_EQ(size->height, 160);
  EXPECT_EQ(host->pixels(static_cast<xcb_window_t>(window->handle()), 200, 160), colour);
}

TEST_F(X11Windows, PopupStaysOnTheScreen) {
  open();
  struct Case {
    int x, y;
    PixelRect place; // the host's window lies at (100, 100) of 640 x 480
  };
  const Case cases[]{{10, 20, {10, 20, 110, 70}},
                     {-500, -500, {-100, -100, 0, -50}},
                     {1000, 1000, {440, 330, 540, 380}}};
  for (const Case& c : cases) {
    const auto popup = window->openPopup(c.x, c.y, 100, 50);
    ASSERT_NE(popup, nullptr);
    EXPECT_EQ(popup->place(), c.place);
    EXPECT_EQ(window->openPopup(0, 0, 5, 5), nullptr) << "one at a time";
  }
}

TEST_F(X11Windows, PopupIsToldWhenItsOwnerMovesOrHides) {
  open();
  auto popup = window->openPopup(0, 0, 100, 50);
  popup->show();
  window->pump();
  EXPECT_EQ(listener.count(WindowEventType::kPressOutside), 0U);
  host->moveWindow(150, 100);
  window->pump();
  EXPECT_EQ(listener.count(WindowEventType::kPressOutside), 1U);
  popup.reset();
  popup = window->openPopup(0, 0, 100, 50);
  xcb_unmap_window(host->xcb(), host->window());
  host->sync();
  window->pump();
  EXPECT_EQ(listener.count(WindowEventType::kPressOutside), 2U);
}

TEST_F(X11Windows, PopupGetsItsOwnEvents) {
  open();
  const auto popup = window->openPopup(0, 0, 100, 50);
  Listener ofPopup;
  popup->setListener(&ofPopup);
  popup->show();
  host->send(popup->handle(), XCB_BUTTON_PRESS, 1, 7, 8, 0);
  EXPECT_TRUE(pumpUntil([&ofPopup] { return ofPopup.count(WindowEventType::kMouseDown) == 1; }));
  EXPECT_EQ(listener.count(WindowEventType::kMouseDown), 0U);
}

TEST_F(X11Windows, AThousandTimesLeaveNothingBehind) {
  open();
  window.reset();
  const auto cycle = [&] {
    const auto fresh = nativeWindowSystem().openChild(host->window(), kWidth, kHeight);
    ASSERT_NE(fresh, nullptr);
    fresh->show();
    presentTestPicture(*fresh);
    const auto popup = fresh->openPopup(0, 0, 20, 20);
    fresh->pump();
  };
  for (int i = 0; i < 20; ++i) cycle();
  const std::size_t descriptors = openDescriptors();
  const std::size_t memory = heapBytes();
  for (int i = 0; i < 1000; ++i) cycle();
  EXPECT_EQ(openDescriptors(), descriptors);
  EXPECT_LT(heapBytes(), memory + 16384U);
  // The display lets go of its side a little later.
  EXPECT_TRUE(pumpUntil([this] { return host->children(host->window()) == 0; }));
  EXPECT_TRUE(pumpUntil([] { return sharedSegments() == 0; }));
}

} // namespace
} // namespace qlx::test
