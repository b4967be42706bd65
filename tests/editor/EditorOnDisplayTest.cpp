// SPDX-License-Identifier: ISC
#include "platform/WindowRobot.h"
#include "tests/support/EditorRig.h"
#include "tests/support/ProcessResources.h"
#include "tests/support/desktop/VirtualDisplay.h"
#include "tests/support/desktop/X11Host.h"

#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <thread>

namespace qlx::test {
namespace {

/// The editor in a window of the desktop, beside one that has no screen.
class EditorOnDisplay : public testing::Test {
 protected:
  void SetUp() override {
    ASSERT_TRUE(display.isRunning()) << "Xvfb is needed";
    host = platform::nativeWindowSystem().openTopLevel({"host"}, 401, 570);
    robot = platform::openWindowRobot();
    ASSERT_NE(host, nullptr);
    ASSERT_NE(robot, nullptr);
    host->show();
    host->pump();
    ASSERT_TRUE(shown.editor->open(reinterpret_cast<void*>(host->handle())));
    ASSERT_TRUE(headless.open());
  }

  /// Idles until the screen shows what the other window does, and the host has heard the same;
  /// false when that never comes.
  bool screenFollows() {
    for (int i = 0; i < 200; ++i) {
      shown.editor->idle();
      headless.editor->idle();
      const auto picture = robot->picture(host->handle(), 0);
      if (picture && picture->pixels == headless.picture() &&
          shown.effect.log == headless.effect.log) {
        return true;
      }
      std::this_thread::sleep_for(std::chrono::milliseconds(10));
    }
    return false;
  }

  VirtualDisplay display{{"-screen", "0", "800x700x24"}};
  std::unique_ptr<platform::NativeWindow> host;
  std::unique_ptr<platform::WindowRobot> robot;
  EditorRig shown{&platform::nativeWindowSystem()};
  EditorRig headless;
};

TEST_F(EditorOnDisplay, ScreenShowsExactlyWhatIsDrawn) {
  EXPECT_TRUE(screenFollows());
  for (EditorRig* rig : {&shown, &headless}) {
    for (int i = 5; i <= 30; ++i) rig->effect.setParameter(i, static_cast<float>(i) / 30.0F);
    rig->effect.horn = 0.3;
    rig->effect.drum = 0.9;
    rig->effect.sustain = 1.0;
  }
  EXPECT_TRUE(screenFollows());
}

TEST_F(EditorOnDisplay, OpensAtTheDesktopsDotsAnInch) {
  X11Host desktop({0, 0, 1, 1});
  struct Row {
    const char* resources;
    const char* stored;
    int width;
  };
  for (const auto& [resources, stored, width] : {Row{"Xft.dpi:\t192\n", "", 802},
                                                 {"Xft.dpi:\t144\n", "", 601},
                                                 {"Xft.dpi:\t110\n", "", 401},
                                                 {"Xft.dpi:\t288\n", "", 1203},
                                                 {"Xft.dpi:\t288\n", "1.5", 601}}) {
    const int before = shown.frame().getWindow().place().width();
    desktop.setResources(resources);
    shown.settings->writeText("Scale", stored);
    shown.editor->idle();
    EXPECT_EQ(shown.frame().getWindow().place().width(), before) << "an open window stays";
    shown.editor->close();
    sdk::EditRectangle* size = nullptr;
    ASSERT_TRUE(shown.editor->getRect(&size));
    EXPECT_EQ(size->right, width) << resources;
    ASSERT_TRUE(shown.editor->open(reinterpret_cast<void*>(host->handle())));
    EXPECT_EQ(shown.frame().getWindow().place().width(), width) << resources;
  }
}

TEST_F(EditorOnDisplay, OpeningsUnderAutomationLeaveNothingBehind) {
  // Frames are decoded when they are first shown, and kept.
  for (int step = 0; step <= 100; ++step) {
    for (int i = 0; i < 36; ++i) shown.effect.setParameter(i, static_cast<float>(step) / 100.0F);
    shown.editor->idle();
  }
  std::atomic<bool> stop{false};
  std::thread audio([&] {
    for (int i = 0; !stop.load(std::memory_order_relaxed); ++i) {
      shown.effect.setParameter(i % 36, static_cast<float>(i % 101) / 100.0F);
      std::this_thread::sleep_for(std::chrono::microseconds(50));
    }
  });
  const auto cycle = [this] {
    ASSERT_TRUE(shown.editor->open(reinterpret_cast<void*>(host->handle())));
    shown.frame().platformOnMouseDown({100, 165}, gui::kLButton); // the about screen
    shown.editor->idle();
    host->pump();
    shown.editor->idle();
    shown.editor->close();
  };
  for (int i = 0; i < 50; ++i) cycle();
  const std::size_t descriptors = openDescriptors();
  const std::size_t heap = heapBytes();
  for (int i = 0; i < 100; ++i) cycle();
  EXPECT_EQ(openDescriptors(), descriptors);
  // The heap's own caches fill up slowly; one control left behind a time would be more.
  EXPECT_LT(heapBytes(), heap + 100U * 320U);
  stop.store(true, std::memory_order_relaxed);
  audio.join();
}

} // namespace
} // namespace qlx::test
