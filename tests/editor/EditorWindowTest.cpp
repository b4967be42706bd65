// SPDX-License-Identifier: ISC
#include "editor/ScaleChoice.h"
#include "presets/panel/LoadBitmap.h"
#include "tests/editor/OpenEditor.h"

#include <cmath>
#include <optional>
#include <thread>

namespace qlx::test {
namespace {

using platform::WindowEventType;
using plugin::kLever;

// --- Opening and closing ---

TEST(EditorWindow, IsAsLargeAsItsBackgroundBeforeItIsOpened) {
  EditorRig rig;
  sdk::EditRectangle* rectangle = nullptr;
  ASSERT_TRUE(rig.editor->getRect(&rectangle));
  EXPECT_EQ(rectangle->left, 0);
  EXPECT_EQ(rectangle->top, 0);
  EXPECT_EQ(rectangle->right, 401);
  EXPECT_EQ(rectangle->bottom, 570);
}

TEST(EditorWindow, NeedsAParent) {
  EditorRig rig;
  EXPECT_FALSE(rig.editor->open(nullptr));
  EXPECT_EQ(rig.windows.lastWindow(), nullptr);
  rig.editor->idle();
  rig.editor->close();
  EXPECT_TRUE(rig.open());
  EXPECT_TRUE(rig.window().isShown());
}

TEST(EditorWindow, SurvivesWhatHostsDo) {
  EditorRig rig;
  ASSERT_TRUE(rig.open());
  ASSERT_TRUE(rig.open()); // twice
  rig.editor->idle();
  rig.window().destroyByOthers();
  rig.editor->idle();
  rig.effect.setParameterAutomated(kLever, 0.3F);
  rig.editor->idle();
  rig.editor->close();
  rig.editor->close();
  rig.editor->idle();
  ASSERT_TRUE(rig.open());
  rig.press(40, 75);
  rig.editor->idle();
  rig.effect.log.clear();
  rig.editor->close(); // in the middle of a gesture, which ends
  EXPECT_EQ(rig.effect.log, ")17");
}

// Whose windows may be drawn by several threads of a host, at several scales.
TEST(EditorWindow, SharesItsImagesUntilTheLastInstanceIsGone) {
  std::weak_ptr<const gui::CBitmap> seen;
  const auto draw = [](double scale) {
    EditorRig rig;
    rig.editor->setHostScale(scale);
    rig.open();
    return rig.picture();
  };
  const std::array<double, 3> scales{1.0, 1.5, 2.0};
  std::array<std::vector<std::uint32_t>, 3> alone, together;
  for (std::size_t i = 0; i < scales.size(); ++i) alone[i] = draw(scales[i]);
  {
    const EditorRig first;
    seen = presets::loadBitmap(4000);
    std::vector<std::thread> threads;
    for (std::size_t i = 0; i < scales.size(); ++i)
      threads.emplace_back([&, i] { together[i] = draw(scales[i]); });
    for (std::thread& thread : threads) thread.join();
    EXPECT_EQ(seen.lock(), presets::loadBitmap(4000));
  }
  EXPECT_TRUE(seen.expired());
  EXPECT_TRUE(together == alone);
}

TEST(EditorWindow, MayBeClosedFromInsideItsOwnNotification) {
  EditorRig rig;
  ASSERT_TRUE(rig.open());
  rig.effect.onAutomate = [&rig] { rig.editor->close(); };
  rig.press(345, 540); // Bypass
  rig.mouse(WindowEventType::kWheel, 40, 75);
  rig.editor->idle();
  EXPECT_EQ(rig.windows.lastWindow(), nullptr);
  EXPECT_EQ(rig.effect.log, "(0 0=0 0=1000 )0");
  rig.effect.onAutomate = [] {};
  ASSERT_TRUE(rig.open());
  rig.click(357, 244); // the lever has the keyboard
  rig.effect.onAutomate = [&rig] { rig.editor->close(); };
  EXPECT_TRUE(rig.editor->onKeyDown({0, 14, 0}));
  EXPECT_EQ(rig.windows.lastWindow(), nullptr);
}

TEST(EditorWindow, OpensWithTheEffectsValues) {
  EditorRig rig;
  ASSERT_TRUE(rig.open());
  const auto before = rig.picture();
  rig.editor->close();
  rig.effect.setParameterAutomated(20, 0.9F);
  rig.effect.setParameterAutomated(20, 0.0F); // not replayed
  ASSERT_TRUE(rig.open());
  EXPECT_EQ(rig.picture(), before);
  rig.editor->close();
  rig.effect.setParameterAutomated(20, 0.9F);
  ASSERT_TRUE(rig.open());
  EXPECT_NE(rig.picture(), before);
}

TEST(EditorWindow, DrawsItselfWithoutAWindowOnRequest) {
  EditorRig rig;
  const sdk::EditorClick clicks[] = {{369, 543}, {100, 165}}; // Bypass, then the name plate
  std::vector<std::uint32_t> pixels(401 * 570);
  sdk::EditorPicture request{sizeof request, 401, 570, 2, clicks, pixels.data()};
  ASSERT_TRUE(rig.editor->picture(request));
  EXPECT_EQ(rig.windows.lastWindow(), nullptr); // none of the desktop's
  EXPECT_EQ(std::exchange(rig.effect.log, {}), "(0 0=0 0=1000 )0");
  ASSERT_TRUE(rig.open());
  EXPECT_FALSE(rig.editor->picture(request)) << "while the window is open";
  rig.click(100, 165);
  EXPECT_TRUE(rig.picture() == pixels);
  rig.editor->close();
  request.width = 400;
  EXPECT_FALSE(rig.editor->picture(request));
  rig.effect.onAutomate = [&rig] { rig.editor->close(); };
  request.width = 401;
  EXPECT_FALSE(rig.editor->picture(request)) << "closed in the middle";
}

// --- How large it is ---

TEST(EditorScale, IsTheFirstWishsNearest) {
  using editor::ScaleWishes;
  constexpr double kNoSize = -2.0;
  struct Case {
    ScaleWishes wishes;
    double scale;
  };
  for (const auto& [wishes, scale] :
       {Case{{}, 1.0}, Case{{.desktop = 2.0}, 2.0}, Case{{.desktop = 1.25}, 1.0},
        Case{{.desktop = 1.3}, 1.5}, Case{{.desktop = 9.0}, 3.0}, Case{{.desktop = 0.5}, 1.0},
        Case{{.stored = 1.5, .desktop = 2.0}, 1.5},
        Case{{.host = 2.0, .stored = 1.5, .desktop = 3.0}, 2.0},
        Case{{.host = 1.0, .stored = 1.5, .desktop = 3.0}, 1.5},
        Case{{.host = 1.0, .desktop = 3.0}, 1.0},
        Case{{.environment = 1.0, .host = 2.0, .stored = 1.5}, 1.0},
        Case{{.environment = kNoSize, .host = std::nan(""), .stored = 3.0}, 3.0}})
    EXPECT_EQ(editor::chosenScale(wishes), scale);
  for (const char* text : {"", "x", "2x", "1,5", " 2"})
    EXPECT_EQ(editor::scaleFromText(text), std::nullopt) << text;
  EXPECT_EQ(editor::scaleFromText(editor::textOfScale(1.5)), 1.5);
}

} // namespace
} // namespace qlx::test
