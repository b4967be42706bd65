// SPDX-License-Identifier: ISC
#include "editor/CAnimKnob3.h"
#include "editor/CClickKickButton.h"
#include "editor/QLXMarker.h"
#include "editor/QLXOnOffButton.h"
#include "editor/QLXVerticalSwitch.h"
#include "tests/editor/ControlPictures.h"
#include "tests/editor/RecordingListener.h"

#include <gtest/gtest.h>

#include <functional>
#include <vector>

namespace qlx::test {
namespace {

using editor::CAnimKnob3;
using editor::CClickKickButton;
using editor::QLXMarker;
using editor::QLXOnOffButton;
using editor::QLXVerticalSwitch;
using gui::CButtonState;
using gui::CMouseEventResult;
using gui::CPoint;
using gui::VirtualKey;

constexpr auto kNotHandled = CMouseEventResult::kNotHandled;
constexpr auto kHandled = CMouseEventResult::kHandled;
constexpr auto kNoMoves = CMouseEventResult::kHandledDontNeedMoves;
constexpr std::uint32_t kLeft = gui::kLButton;
constexpr std::uint32_t kFine = gui::kLButton | gui::kShift;

/// One pointer event; the control is redrawn after it, as at idle.
struct Step {
  enum Kind { kDown, kMove, kUp, kWheel } kind;
  double x;
  double y;
  std::uint32_t buttons;
  float distance = 0.0F;
};

struct Gesture {
  const char* name;
  float start;
  std::vector<Step> steps;
  CMouseEventResult first; ///< answer to the first pointer event
  float end;
  const char* log;
};

std::ostream& operator<<(std::ostream& out, const Gesture& gesture) { return out << gesture.name; }

CMouseEventResult play(gui::CControl& control, const Step& step) {
  CMouseEventResult result = kNotHandled;
  const CPoint where{step.x, step.y};
  switch (step.kind) {
  case Step::kDown: result = control.onMouseDown(where, step.buttons); break;
  case Step::kMove: result = control.onMouseMoved(where, step.buttons); break;
  case Step::kUp: result = control.onMouseUp(where, step.buttons); break;
  case Step::kWheel:
    result = control.onWheel(where, step.distance, step.buttons) ? kHandled : kNotHandled;
    break;
  }
  pictureOf(control);
  return result;
}

void expectGesture(gui::CControl& control, RecordingListener& listener, const Gesture& gesture) {
  control.setValue(gesture.start);
  pictureOf(control);
  std::vector<CMouseEventResult> answers;
  for (const Step& step : gesture.steps) answers.push_back(play(control, step));
  EXPECT_EQ(answers.front(), gesture.first);
  EXPECT_NEAR(control.getValue(), gesture.end, 1e-6F);
  EXPECT_EQ(listener.log, gesture.log);
}

// --- Knob ---

class KnobGesture : public testing::TestWithParam<Gesture> {};

TEST_P(KnobGesture, SetsValueAndTells) {
  RecordingListener listener;
  CAnimKnob3 knob({20, 53, 64, 97}, &listener, 17, 101, 44, numberedStrip(44, 44, 101), {}, {});
  knob.setDragFactor(0.25F);
  knob.setWheelStep(0.05F, 0.2F);
  knob.setDefaultValue(0.1F);
  expectGesture(knob, listener, GetParam());
}

INSTANTIATE_TEST_SUITE_P(
    Table, KnobGesture,
    testing::Values(
        Gesture{"a press alone",
                0.5F,
                {{Step::kDown, 40, 70, kLeft}, {Step::kUp, 40, 70, kLeft}},
                kHandled,
                0.5F,
                "()"},
        Gesture{"right and down",
                0.5F,
                {{Step::kDown, 40, 70, kLeft},
                 {Step::kMove, 140, 120, kLeft},
                 {Step::kUp, 140, 120, kLeft}},
                kHandled,
                0.7F,
                "(700)"},
        Gesture{"left and up, beyond the start and back",
                0.5F,
                {{Step::kDown, 40, 70, kLeft},
                 {Step::kMove, -460, 70, kLeft},
                 {Step::kMove, 40, 45, kLeft},
                 {Step::kUp, 40, 45, kLeft}},
                kHandled,
                0.6F,
                "(0 600)"},
        Gesture{"fine from the start",
                0.5F,
                {{Step::kDown, 40, 70, kFine},
                 {Step::kMove, 165, 70, kFine},
                 {Step::kUp, 165, 70, kFine}},
                kHandled,
                0.6F,
                "(600)"},
        // The change of scale moves the value by a rounding error, which is told.
        Gesture{"Shift comes and goes in the middle without a jump",
                0.5F,
                {{Step::kDown, 40, 70, kLeft},
                 {Step::kMove, 90, 70, kLeft},
                 {Step::kMove, 90, 70, kFine},
                 {Step::kMove, 140, 70, kFine},
                 {Step::kMove, 140, 70, kLeft},
                 {Step::kMove, 115, 70, kLeft},
                 {Step::kUp, 115, 70, kLeft}},
                kHandled,
                0.64F,
                "(700 700 740 640)"},
        Gesture{
            "a move without the button",
            0.5F,
            {{Step::kDown, 40, 70, kLeft}, {Step::kMove, 140, 70, 0}, {Step::kUp, 140, 70, kLeft}},
            kHandled,
            0.5F,
            "()"},
        Gesture{"a drag that began elsewhere",
                0.5F,
                {{Step::kMove, 60, 60, kLeft}},
                kHandled,
                0.5F,
                ""},
        Gesture{"Control-click",
                0.5F,
                {{Step::kDown, 40, 70, kLeft | gui::kControl}},
                kNoMoves,
                0.1F,
                "(100)"},
        Gesture{"double-click at the default",
                0.1F,
                {{Step::kDown, 40, 70, kLeft | gui::kDoubleClick}},
                kNoMoves,
                0.1F,
                "()"},
        Gesture{
            "right button", 0.5F, {{Step::kDown, 40, 70, gui::kRButton}}, kNotHandled, 0.5F, ""},
        Gesture{"three notches are one",
                0.5F,
                {{Step::kWheel, 40, 70, 0, 3.0F}},
                kHandled,
                0.55F,
                "(550)"},
        Gesture{"a smooth wheel",
                0.5F,
                {{Step::kWheel, 40, 70, 0, -0.05F}},
                kHandled,
                0.4975F,
                "(498)"},
        Gesture{"fine wheel",
                0.5F,
                {{Step::kWheel, 40, 70, gui::kShift, -1.0F}},
                kHandled,
                0.49F,
                "(490)"},
        Gesture{"wheel at the end", 1.0F, {{Step::kWheel, 40, 70, 0, 1.0F}}, kHandled, 1.0F, ""}));

TEST(Knob, ShowsItsValueOrItsStep) {
  struct Row {
    CAnimKnob3::Steps steps;
    float value;
    int frame;
  };
  const CAnimKnob3::Steps all{};
  const CAnimKnob3::Steps setup{6, 0.2F, 0.7F};
  const CAnimKnob3::Steps type{3, 0.4F, 0.6F};
  const CAnimKnob3::Steps size{5, 0.3F, 0.7F};
  const Row rows[] = {{all, -0.5F, 0},   {all, 0.0F, 0},      {all, 0.004F, 0},  {all, 0.006F, 1},
                      {all, 0.5F, 50},   {all, 1.0F, 100},    {setup, 0.0F, 20}, {setup, 0.45F, 40},
                      {setup, 1.0F, 70}, {type, 0.24F, 40},   {type, 0.26F, 50}, {type, 1.0F, 60},
                      {size, 0.0F, 30},  {size, 0.1251F, 40}, {size, 0.95F, 70}};
  for (const Row& row : rows) {
    CAnimKnob3 knob({20, 53, 64, 97}, nullptr, 10, 101, 44, numberedStrip(44, 44, 101), {},
                    row.steps);
    knob.setValue(row.value);
    EXPECT_EQ(frameShownBy(knob), row.frame) << row.steps.count << " steps, value " << row.value;
    EXPECT_FALSE(knob.isDirty());
  }
}

TEST(Knob, WithoutListenerIsNotTouched) {
  CAnimKnob3 knob({20, 53, 64, 97}, nullptr, 10, 101, 44, numberedStrip(44, 44, 101), {}, {});
  EXPECT_EQ(knob.onMouseDown({30, 60}, kLeft), kNotHandled);
}

// --- Lever ---

class LeverTest : public testing::Test {
 protected:
  LeverTest() {
    lever.setWheelStep({0.15F, 0.1F});
    pictureOf(lever);
  }

  RecordingListener listener;
  QLXVerticalSwitch lever{
      {330, 149, 385, 335}, &listener, 2, numberedStrip(55, 186, 65), {38, 152}};
};

class LeverGesture : public LeverTest, public testing::WithParamInterface<Gesture> {};

TEST_P(LeverGesture, SetsValueAndTells) { expectGesture(lever, listener, GetParam()); }

INSTANTIATE_TEST_SUITE_P(
    Table, LeverGesture,
    testing::Values(
        Gesture{"top of the travel",
                0.0F,
                {{Step::kDown, 350, 187, kLeft}, {Step::kUp, 350, 187, kLeft}},
                kHandled,
                1.0F,
                "(1000)"},
        Gesture{"above the travel",
                0.5F,
                {{Step::kDown, 350, 20, kLeft}, {Step::kUp, 350, 20, kLeft}},
                kHandled,
                1.0F,
                "(1000)"},
        Gesture{"bottom of the travel",
                1.0F,
                {{Step::kDown, 350, 301, kLeft}, {Step::kUp, 350, 301, kLeft}},
                kHandled,
                0.0F,
                "(0)"},
        Gesture{"the middle",
                1.0F,
                {{Step::kDown, 350, 244, kLeft}, {Step::kUp, 350, 244, kLeft}},
                kHandled,
                0.5F,
                "(500)"},
        // Half of the way from the middle is asin(0.321394) = 18.75 degrees of 40.
        Gesture{"halfway up",
                0.0F,
                {{Step::kDown, 350, 215.5, kLeft}, {Step::kUp, 350, 215.5, kLeft}},
                kHandled,
                1.0F - 17.0F / 64.0F,
                "(734)"},
        Gesture{"a drag down",
                1.0F,
                {{Step::kDown, 350, 187, kLeft},
                 {Step::kMove, 350, 244, kLeft},
                 {Step::kMove, 350, 400, kLeft},
                 {Step::kUp, 350, 400, kLeft}},
                kHandled,
                0.0F,
                "(500 0)"},
        Gesture{"Control-click",
                0.7F,
                {{Step::kDown, 350, 187, kLeft | gui::kControl}},
                kNoMoves,
                0.0F,
                "(0)"},
        Gesture{"Control with Shift is no default gesture",
                0.7F,
                {{Step::kDown, 350, 187, kFine | gui::kControl}, {Step::kUp, 350, 187, kLeft}},
                kHandled,
                1.0F,
                "(1000)"},
        Gesture{
            "right button", 0.7F, {{Step::kDown, 350, 187, gui::kRButton}}, kNotHandled, 0.7F, ""},
        Gesture{"wheel", 0.5F, {{Step::kWheel, 350, 187, 0, 2.0F}}, kHandled, 0.65F, "(650)"},
        Gesture{"fine wheel to the end",
                0.01F,
                {{Step::kWheel, 350, 187, gui::kShift, -1.0F}},
                kHandled,
                0.0F,
                "(0)"}));

TEST_F(LeverTest, ArrowKeysMoveByOneFrame) {
  struct Row {
    VirtualKey key;
    std::uint32_t modifiers;
    float start;
    bool handled;
    float end;
  };
  const Row rows[] = {{VirtualKey::kUp, 0, 0.5F, true, 31.0F / 64.0F},
                      {VirtualKey::kDown, 0, 0.5F, true, 33.0F / 64.0F},
                      {VirtualKey::kUp, 0, 0.503937F, true, 31.0F / 64.0F},
                      {VirtualKey::kUp, 0, 0.0F, false, 0.0F},
                      {VirtualKey::kDown, 0, 1.0F, false, 1.0F},
                      {VirtualKey::kDown, platform::kModifierShift, 0.5F, false, 0.5F},
                      {VirtualKey::kLeft, 0, 0.5F, false, 0.5F}};
  for (const Row& row : rows) {
    listener.log.clear();
    lever.setValue(row.start);
    EXPECT_EQ(lever.onKeyDown({row.key, 0, row.modifiers, {}}), row.handled);
    EXPECT_FLOAT_EQ(lever.getValue(), row.end);
    EXPECT_EQ(listener.log.empty(), !row.handled);
  }
}

TEST_F(LeverTest, MovesThereAndBackBetweenTwoRedrawsAreTold) {
  RecordingListener knobListener;
  CAnimKnob3 knob({20, 53, 64, 97}, &knobListener, 17, 101, 44, numberedStrip(44, 44, 101), {}, {});
  knob.setDragFactor(0.25F);
  knob.setValue(0.5F);
  lever.setValue(1.0F);
  pictureOf(knob);
  pictureOf(lever);
  knob.onMouseDown({40, 70}, kLeft);
  lever.onMouseDown({350, 187}, kLeft);
  for (const double moved : {25.0, 0.0}) {
    knob.onMouseMoved({40 + moved, 70}, kLeft);
    lever.onMouseMoved({350, 187 + moved / 25 * 57}, kLeft);
  }
  EXPECT_EQ(knobListener.log, "(600 500");
  EXPECT_EQ(listener.log, "(500 1000");
}

TEST_F(LeverTest, FirstFrameIsTheTop) {
  const std::pair<float, int> rows[] = {{1.0F, 0}, {0.0F, 64}, {0.5F, 32}, {0.99F, 1}, {0.995F, 0}};
  for (const auto& [value, frame] : rows) {
    lever.setValue(value);
    EXPECT_EQ(frameShownBy(lever), frame) << value;
  }
}

// --- Buttons ---

class OnOffGesture : public testing::TestWithParam<Gesture> {};

TEST_P(OnOffGesture, SetsValueAndTells) {
  RecordingListener listener;
  QLXOnOffButton button({340, 36, 398, 50}, &listener, 0, numberedStrip(58, 14, 2));
  expectGesture(button, listener, GetParam());
  EXPECT_EQ(frameShownBy(button), GetParam().end >= 0.5F ? 1 : 0);
}

INSTANTIATE_TEST_SUITE_P(
    Table, OnOffGesture,
    testing::Values(
        Gesture{"on", 0.0F, {{Step::kDown, 350, 40, kLeft}}, kNoMoves, 1.0F, "(0 1000)"},
        Gesture{"off", 1.0F, {{Step::kDown, 350, 40, kLeft}}, kNoMoves, 0.0F, "(1000 0)"},
        Gesture{"from between", 0.5F, {{Step::kDown, 350, 40, kLeft}}, kNoMoves, 0.0F, "(500 0)"},
        Gesture{"middle button",
                0.0F,
                {{Step::kDown, 350, 40, gui::kMButton}},
                kNotHandled,
                0.0F,
                ""}));

class ClickKickGesture : public testing::TestWithParam<Gesture> {};

TEST_P(ClickKickGesture, SetsValueAndTells) {
  RecordingListener listener;
  CClickKickButton button({330, 348, 357, 384}, &listener, 3, 36, numberedStrip(27, 36, 2));
  expectGesture(button, listener, GetParam());
  EXPECT_EQ(frameShownBy(button), GetParam().end >= 0.5F ? 1 : 0);
}

INSTANTIATE_TEST_SUITE_P(
    Table, ClickKickGesture,
    testing::Values(
        Gesture{"held", 0.0F, {{Step::kDown, 340, 360, kLeft}}, kHandled, 1.0F, "(1000"},
        Gesture{"press and release",
                0.0F,
                {{Step::kDown, 340, 360, kLeft}, {Step::kUp, 340, 360, kLeft}},
                kHandled,
                0.0F,
                "(1000 0)"},
        Gesture{"let go outside",
                0.0F,
                {{Step::kDown, 340, 360, kLeft},
                 {Step::kMove, 300, 360, kLeft},
                 {Step::kUp, 300, 360, kLeft}},
                kHandled,
                0.0F,
                "(1000)"},
        Gesture{"right button",
                0.0F,
                {{Step::kDown, 340, 360, gui::kRButton}},
                kNotHandled,
                0.0F,
                ""}));

// --- Marker ---

TEST(Marker, PassesFromRightToLeftOncePerTurn) {
  QLXMarker marker({91, 12, 389, 24}, nullptr, 142, {{-120, 0}, 0.5F, 298},
                   numberedStrip(120, 14, 1), numberedStrip(298, 12, 1));
  const std::pair<float, double> rows[] = {{0.5F, 298}, {0.50001F, 297}, {0.75F, 193},  {1.0F, 89},
                                           {0.0F, 89},  {0.25F, -16},    {0.499F, -120}};
  for (const auto& [phase, left] : rows) {
    marker.setValue(phase);
    EXPECT_EQ(marker.handlePlace().left, left) << phase;
    EXPECT_EQ(marker.handlePlace().width(), 120) << phase;
  }
}

TEST(Marker, LeavesNothingBehindAndStaysInItsSlot) {
  gui::PixelBuffer glass(298, 12); // a strip that one can see through
  QLXMarker marker({91, 12, 389, 24}, nullptr, 142, {{-120, 0}, 0.5F, 298},
                   numberedStrip(120, 14, 1), std::make_shared<gui::CBitmap>(std::move(glass)));
  marker.setValue(0.75F);
  const gui::PixelBuffer once = pictureOf(marker);
  EXPECT_EQ(once.row(11)[300], 0U);
  EXPECT_EQ(once.row(12)[91 + 193], 0xFF000000U);
  EXPECT_EQ(once.row(23)[91 + 296], 0xFF000000U);
  EXPECT_EQ(once.row(23)[91 + 297], 0U); // the composition's last column isn't copied
  EXPECT_EQ(once.row(24)[300], 0U);
  marker.setValue(0.1F);
  pictureOf(marker);
  marker.setValue(0.75F);
  EXPECT_EQ(pictureOf(marker).pixels, once.pixels);
}

TEST(EditorControls, KnowTheirClassesAndCopies) {
  QLXVerticalSwitch lever({330, 149, 385, 335}, nullptr, 2, numberedStrip(55, 186, 65), {38, 152});
  QLXMarker marker({91, 12, 389, 24}, nullptr, 142, {{-120, 0}, 0.5F, 298},
                   numberedStrip(120, 14, 1), numberedStrip(298, 12, 1));
  const std::pair<gui::CControl*, const char*> rows[] = {{&lever, "QLXVerticalSwitch"},
                                                         {&marker, "QLXMarker"}};
  for (const auto& [control, name] : rows) {
    control->setValue(0.3F);
    const auto copy = control->newCopy();
    for (const char* base : {name, "CControl", "CView", "CBaseObject"}) {
      EXPECT_TRUE(copy->isTypeOf(base)) << name << " as " << base;
    }
    EXPECT_FALSE(copy->isTypeOf("CKnob")) << name;
    EXPECT_EQ(pictureOf(dynamic_cast<gui::CControl&>(*copy)).pixels, pictureOf(*control).pixels);
  }
}

} // namespace
} // namespace qlx::test
