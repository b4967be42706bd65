// SPDX-License-Identifier: ISC
#include "tests/editor/OpenEditor.h"
#include "tests/support/CountingAllocator.h"

#include <algorithm>
#include <functional>
#include <random>
#include <thread>

namespace qlx::test {
namespace {

using platform::VirtualKey;
using platform::WindowEventType;
using plugin::kLever;
using plugin::kMIDIchl;
using plugin::kSpeed;

// --- What the effect does ---

std::vector<std::uint32_t> freshPicture(EditorRig& rig) {
  const auto parent = std::make_unique<EditorRig>();
  for (int i = 0; i < 36; ++i) parent->effect.setParameter(i, rig.effect.getParameter(i));
  parent->open();
  return parent->picture();
}

TEST_F(OpenEditor, MirrorsEveryParameterThatItShows) {
  for (int index = 0; index < 36; ++index) {
    const bool shown = (index <= 30 && index != kSpeed) || index == kMIDIchl;
    const auto before = rig.picture();
    rig.effect.setParameter(index, 0.77F);
    rig.editor->idle();
    EXPECT_EQ(rig.picture() != before, shown) << index;
    if (index != kSpeed) { // a fresh Speed button starts with its parameter
      EXPECT_TRUE(rig.picture() == freshPicture(rig)) << index;
    } else {
      rig.effect.setParameter(kSpeed, 0.0F);
    }
  }
  EXPECT_EQ(heard(), "");
}

TEST_F(OpenEditor, MarkersAndLampsFollowTheEffect) {
  const auto rest = rig.picture();
  const auto shows = [this](double horn, double drum, bool bypassed, float mod, double sustain) {
    rig.effect.horn = horn;
    rig.effect.drum = drum;
    rig.effect.bypassed = bypassed;
    rig.effect.modulation = mod;
    rig.effect.sustain = sustain;
    rig.editor->idle();
    rig.editor->idle();
    return rig.picture();
  };
  EXPECT_NE(shows(0.25, 0, false, 0, 0), rest);
  EXPECT_NE(shows(0, 0.25, false, 0, 0), rest);
  EXPECT_NE(shows(0, 0, false, 1.0F, 0), rest);
  EXPECT_NE(shows(0, 0, false, 0, 1.0), rest);
  EXPECT_EQ(shows(0, 0, false, 0.4F, 0), rest);
  EXPECT_EQ(shows(1.0, -0.0, false, 0, 0), rest);
  EXPECT_EQ(shows(1.25, 0, false, 0, 0), shows(0.25, 0, false, 0, 0));
  EXPECT_EQ(shows(0, -0.25, false, 0, 0), shows(0, 0.75, false, 0, 0));
  EXPECT_EQ(shows(0.1, 0.2, true, 0, 0), shows(0.5, 0.5, false, 0, 0));
}

TEST_F(OpenEditor, AboutScreenStopsTheMarkersUntilItIsClosed) {
  const auto before = rig.picture();
  rig.mouse(WindowEventType::kMouseDown, 100, 165, platform::kPointerRight);
  rig.editor->idle();
  EXPECT_EQ(rig.picture(), before);
  rig.key(VirtualKey::kEscape); // out of the menu
  rig.click(100, 165);
  const auto about = rig.picture();
  EXPECT_NE(about, before);
  EXPECT_TRUE(std::equal(before.begin() + 401 * 533, before.end(), about.begin() + 401 * 533));
  rig.effect.horn = 0.25;
  rig.effect.sustain = 1.0;
  rig.editor->idle();
  rig.mouse(WindowEventType::kMouseDown, 40, 75, platform::kPointerRight);
  rig.editor->idle();
  EXPECT_EQ(rig.picture(), about);
  EXPECT_EQ(heard(), "");
  const std::function<void()> closings[]{
      [this] { rig.click(40, 75); },   // over a knob
      [this] { rig.click(369, 543); }, // Bypass, below the screen
      [this] { rig.key(VirtualKey::kEscape); },
  };
  for (const auto& close : closings) {
    if (rig.frame().getModalView() == nullptr) rig.click(100, 165);
    ASSERT_NE(rig.frame().getModalView(), nullptr);
    close();
    rig.editor->idle();
    rig.editor->idle();
    EXPECT_EQ(heard(), "");
    const auto after = rig.picture();
    EXPECT_NE(after, about);
    EXPECT_NE(after, before);
  }
  rig.effect.horn = 0.0;
  rig.effect.sustain = 0.0;
  rig.editor->idle();
  rig.mouse(WindowEventType::kMouseLeave, 0, 0, 0);
  rig.editor->idle();
  EXPECT_EQ(rig.picture(), before);
}

// --- Drawing ---

#if defined(__SANITIZE_THREAD__)
constexpr int kRoundStep = 5; // sixty times slower, and one thread alone
#else
constexpr int kRoundStep = 1;
#endif

TEST_F(OpenEditor, PartsRedrawnEqualTheWholeRedrawn) {
  std::mt19937 random(570);
  const auto upTo = [&random](int n) {
    return static_cast<int>(random() % static_cast<unsigned>(n));
  };
  constexpr WindowEventType kPointer[] = {WindowEventType::kMouseDown, WindowEventType::kMouseUp,
                                          WindowEventType::kMouseMove, WindowEventType::kMouseMove,
                                          WindowEventType::kWheel};
  constexpr VirtualKey kKeys[] = {VirtualKey::kReturn, VirtualKey::kTab, VirtualKey::kNone,
                                  VirtualKey::kNone, VirtualKey::kNone};
  std::array<int, gui::kWindowScales.size()> rings{};
  for (int round = 0; round < 3000; round += kRoundStep) {
    // In windows of every scale; the first one most.
    if (round >= 1500 && round % 500 == 0) {
      rig.frame().setScale(gui::kWindowScales[static_cast<std::size_t>(round / 500 - 2)]);
    }
    const double scale = rig.frame().getScale();
    const auto scaleIndex =
        std::ranges::find(gui::kWindowScales, scale) - gui::kWindowScales.begin();
    rings[static_cast<std::size_t>(scaleIndex)] += rig.frame().getRingView() != nullptr ? 1 : 0;
    switch (upTo(4)) {
    case 0: rig.effect.setParameter(upTo(36), static_cast<float>(upTo(1001)) / 1000.0F); break;
    case 1:
      rig.effect.horn += 0.03;
      rig.effect.horn -= std::floor(rig.effect.horn);
      rig.effect.drum = static_cast<double>(upTo(100)) / 100.0;
      rig.effect.modulation = static_cast<float>(upTo(2));
      rig.effect.sustain = upTo(2);
      break;
    case 2:
      rig.mouse(kPointer[upTo(5)], upTo(static_cast<int>(401 * scale)),
                upTo(static_cast<int>(570 * scale)), platform::kPointerLeft,
                upTo(4) == 0 ? platform::kModifierControl : 0U, upTo(2) == 0);
      break;
    default:
      if (upTo(3) == 0) rig.press(static_cast<int>(200 * scale), static_cast<int>(561 * scale));
      rig.key(kKeys[upTo(30) == 0 ? 0 : 1 + upTo(4)], "m");
      rig.window().advance(std::chrono::milliseconds(upTo(600)));
      break;
    }
    rig.editor->idle();
    rig.editor->idle(); // what the first one read from the effect
    if (round % 4 == 0) rig.mouse(WindowEventType::kMouseUp, 0, 0);
    ASSERT_NE(rig.windows.lastWindow(), nullptr);
    const platform::PixelView shown = rig.window().picture();
    gui::PixelBuffer whole(shown.width, shown.height);
    gui::CDrawContext context(whole, rig.frame().getTypeface(), scale);
    rig.frame().draw(context);
    ASSERT_TRUE(rig.picture() == whole.pixels) << "round " << round;
  }
  EXPECT_GT(std::ranges::min(rings), kRoundStep == 1 ? 20 : 0) << "with a ring at every scale";
}

TEST_F(OpenEditor, DrawsOnlyWhatChangesAndAllocatesNothing) {
  for (int i = 0; i < 3; ++i) rig.editor->idle();
  rig.window().takePresentedPixels();
  rig.editor->idle();
  EXPECT_EQ(rig.window().takePresentedPixels(), 0U);

  const AllocationCount allocations;
  for (int i = 0; i < 100; ++i) {
    rig.effect.horn = i * 0.01;
    rig.effect.drum = i * 0.007;
    rig.editor->idle();
  }
  EXPECT_EQ(allocations.value(), 0);
  const std::size_t slots = 2U * 298U * 12U;
  EXPECT_GT(rig.window().takePresentedPixels(), 90 * slots);
  EXPECT_LE(rig.window().takePresentedPixels(), 100 * slots);
}

TEST_F(OpenEditor, DrawsNothingForChangesThatNobodySees) {
  const auto nothing = [](EditorRig&, float) {};
  const std::tuple<const char*, float, std::function<void(EditorRig&, float)>, std::size_t> rows[] =
      {{"rest", 0.0F, nothing, 0},
       {"lamp fading lit", 0.4F, [](EditorRig& r, float x) { r.effect.modulation = 0.55F + x; }, 0},
       {"lamp fading dark", 0.4F, [](EditorRig& r, float x) { r.effect.modulation = x; }, 0},
       {"rotor nearly at rest", 0.0008F, [](EditorRig& r, float x) { r.effect.horn = 0.2501 + x; },
        0},
       {"knob and its text", 0.0004F,
        [](EditorRig& r, float x) { r.effect.setParameter(12, 0.5F + x); }, 0},
       {"text alone", 0.001F, [](EditorRig& r, float x) { r.effect.setParameter(17, 0.5F + x); },
        52 * 11},
       {"lever", 0.004F, [](EditorRig& r, float x) { r.effect.setParameter(kLever, 0.5F + x); },
        0}};
  for (const auto& [what, range, set, pixels] : rows) {
    set(rig, range);
    rig.editor->idle();
    rig.editor->idle();
    rig.window().takePresentedPixels();
    for (int i = 9; i >= 0; --i) {
      set(rig, range * static_cast<float>(i) / 10.0F);
      rig.editor->idle();
      rig.editor->idle();
    }
    EXPECT_EQ(rig.window().takePresentedPixels(), pixels) << what;
  }
}

TEST_F(OpenEditor, ParametersMayComeFromAnyThread) {
  std::atomic<bool> stop{false};
  std::thread audio([&] {
    for (int i = 0; !stop.load(std::memory_order_relaxed); ++i) {
      rig.effect.setParameter(i % 36, static_cast<float>(i % 101) / 100.0F);
    }
  });
  for (int i = 0; i < 60; ++i) {
    if (i % 20 == 19) {
      rig.editor->close();
      rig.open();
    }
    rig.mouse(WindowEventType::kWheel, 40, 75);
    rig.editor->idle();
  }
  stop.store(true, std::memory_order_relaxed);
  audio.join();
  rig.effect.setParameter(kSpeed, 0.0F);
  rig.mouse(WindowEventType::kMouseLeave, 0, 0, 0);
  rig.editor->idle();
  rig.editor->idle();
  rig.editor->close();
  const float lever = rig.effect.getParameter(kLever);
  rig.open();
  EXPECT_EQ(rig.effect.getParameter(kLever), lever);
  EXPECT_TRUE(rig.picture() == freshPicture(rig));
}

} // namespace
} // namespace qlx::test
