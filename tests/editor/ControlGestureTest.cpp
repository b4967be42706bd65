// SPDX-License-Identifier: ISC
#include "editor/controls/CAnimKnob3.h"
#include "editor/controls/CClickKickButton.h"
#include "editor/controls/QLXMarker.h"
#include "editor/controls/QLXOnOffButton.h"
#include "editor/controls/QLXVerticalSwitch.h"
#include "tests/support/ControlPictures.h"
#include "tests/support/RecordingListener.h"

#include <gtest/gtest.h>

#include <memory>
#include <sstream>
#include <vector>

namespace qlx::test {
namespace {

using editor::CAnimKnob3;
using editor::CClickKickButton;
using editor::QLXMarker;
using editor::QLXOnOffButton;
using editor::QLXVerticalSwitch;
using gui::CMouseEventResult;
using gui::CPoint;
using gui::VirtualKey;

constexpr auto kNotHandled = CMouseEventResult::kNotHandled;
constexpr auto kHandled = CMouseEventResult::kHandled;
constexpr auto kNoMoves = CMouseEventResult::kHandledDontNeedMoves;
constexpr std::uint32_t kLeft = gui::kLButton;

struct Gesture {
  const char* name;
  float start;
  /// Pointer events: d (press), m (move), u (release) or w (wheel), place, for a wheel its
  /// distance, and behind a colon the state: the left button is down unless R or M is or N, none;
  /// S Shift, C Control, D the press is a double click.
  const char* steps;
  CMouseEventResult first; ///< answer to the first event
  float end;
  const char* log;
};

CMouseEventResult play(gui::CControl& control, const std::string& step) {
  char kind = 0;
  char mark = 0;
  CPoint where;
  float distance = 0.0F;
  std::istringstream in(step);
  in >> kind >> where.x >> mark >> where.y;
  if (kind == 'w') in >> mark >> distance;
  std::string state;
  in >> state;
  constexpr std::pair<char, std::uint32_t> kStates[] = {{'R', gui::kRButton},
                                                        {'M', gui::kMButton},
                                                        {'S', gui::kShift},
                                                        {'C', gui::kControl},
                                                        {'D', gui::kDoubleClick}};
  std::uint32_t buttons =
      state.find_first_of("RMN") == std::string::npos && kind != 'w' ? kLeft : 0U;
  for (const auto& [letter, bit] : kStates)
    if (state.find(letter) != std::string::npos) buttons |= bit;
  switch (kind) {
  case 'd': return control.onMouseDown(where, buttons);
  case 'm': return control.onMouseMoved(where, buttons);
  case 'u': return control.onMouseUp(where, buttons);
  default: return control.onWheel(where, distance, buttons) ? kHandled : kNotHandled;
  }
}

/// Each gesture on a control of its own, which is redrawn after every event, as at idle.
template <typename Make>
void expectGestures(const Make& make, std::initializer_list<Gesture> gestures) {
  for (const Gesture& gesture : gestures) {
    SCOPED_TRACE(gesture.name);
    RecordingListener listener;
    const std::unique_ptr<gui::CControl> control = make(listener);
    control->setValue(gesture.start);
    pictureOf(*control);
    std::vector<CMouseEventResult> answers;
    std::istringstream steps(gesture.steps);
    for (std::string step; steps >> step;) {
      answers.push_back(play(*control, step));
      pictureOf(*control);
    }
    EXPECT_EQ(answers.front(), gesture.first);
    EXPECT_NEAR(control->getValue(), gesture.end, 1e-6F);
    EXPECT_EQ(listener.log, gesture.log);
    if (control->getViewSize().height() < 40) { // the buttons, of two frames
      EXPECT_EQ(frameShownBy(*control), gesture.end >= 0.5F ? 1 : 0);
    }
  }
}

// --- Knob ---

TEST(Knob, GesturesSetItsValueAndAreTold) {
  expectGestures(
      [](RecordingListener& listener) {
        auto knob =
            std::make_unique<CAnimKnob3>(gui::CRect{20, 53, 64, 97}, &listener, 17, 101, 44,
                                         numberedStrip(44, 44, 101), CPoint{}, CAnimKnob3::Steps{});
        knob->setDragFactor(0.25F);
        knob->setWheelStep(0.05F, 0.2F);
        knob->setDefaultValue(0.1F);
        return knob;
      },
      {{"a press alone", 0.5F, "d40,70 u40,70", kHandled, 0.5F, "()"},
       {"right and down", 0.5F, "d40,70 m140,120 u140,120", kHandled, 0.7F, "(700)"},
       {"left and up, beyond the start and back", 0.5F, "d40,70 m-460,70 m40,45 u40,45", kHandled,
        0.6F, "(0 600)"},
       {"fine from the start", 0.5F, "d40,70:S m165,70:S u165,70:S", kHandled, 0.6F, "(600)"},
       // The change of scale moves the value by a rounding error, which is told.
       {"Shift comes and goes in the middle without a jump", 0.5F,
        "d40,70 m90,70 m90,70:S m140,70:S m140,70 m115,70 u115,70", kHandled, 0.64F,
        "(700 700 740 640)"},
       {"a move without the button", 0.5F, "d40,70 m140,70:N u140,70", kHandled, 0.5F, "()"},
       {"a drag that began elsewhere", 0.5F, "m60,60", kHandled, 0.5F, ""},
       {"Control-click", 0.5F, "d40,70:C", kNoMoves, 0.1F, "(100)"},
       {"double-click at the default", 0.1F, "d40,70:D", kNoMoves, 0.1F, "()"},
       {"right button", 0.5F, "d40,70:R", kNotHandled, 0.5F, ""},
       {"three notches are one", 0.5F, "w40,70,3", kHandled, 0.55F, "(550)"},
       {"a smooth wheel", 0.5F, "w40,70,-0.05", kHandled, 0.4975F, "(498)"},
       {"fine wheel", 0.5F, "w40,70,-1:S", kHandled, 0.49F, "(490)"},
       {"wheel at the end", 1.0F, "w40,70,1", kHandled, 1.0F, ""}});
}

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

TEST(Lever, GesturesSetItsValueAndAreTold) {
  expectGestures(
      [](RecordingListener& listener) {
        auto lever = std::make_unique<QLXVerticalSwitch>(gui::CRect{330, 149, 385, 335}, &listener,
                                                         2, numberedStrip(55, 186, 65),
                                                         QLXVerticalSwitch::Travel{38, 152});
        lever->setWheelStep({0.15F, 0.1F});
        return lever;
      },
      {{"top of the travel", 0.0F, "d350,187 u350,187", kHandled, 1.0F, "(1000)"},
       {"above the travel", 0.5F, "d350,20 u350,20", kHandled, 1.0F, "(1000)"},
       {"bottom of the travel", 1.0F, "d350,301 u350,301", kHandled, 0.0F, "(0)"},
       {"the middle", 1.0F, "d350,244 u350,244", kHandled, 0.5F, "(500)"},
       // Half of the way from the middle is asin(0.321394) = 18.75 degrees of 40.
       {"halfway up", 0.0F, "d350,215.5 u350,215.5", kHandled, 1.0F - 17.0F / 64.0F, "(734)"},
       {"a drag down", 1.0F, "d350,187 m350,244 m350,400 u350,400", kHandled, 0.0F, "(500 0)"},
       {"Control-click", 0.7F, "d350,187:C", kNoMoves, 0.0F, "(0)"},
       {"Control with Shift is no default gesture", 0.7F, "d350,187:SC u350,187", kHandled, 1.0F,
        "(1000)"},
       {"right button", 0.7F, "d350,187:R", kNotHandled, 0.7F, ""},
       {"wheel", 0.5F, "w350,187,2", kHandled, 0.65F, "(650)"},
       {"fine wheel to the end", 0.01F, "w350,187,-1:S", kHandled, 0.0F, "(0)"}});
}

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

TEST(Buttons, GesturesSetTheirValuesAndAreTold) {
  expectGestures(
      [](RecordingListener& listener) {
        return std::make_unique<QLXOnOffButton>(gui::CRect{340, 36, 398, 50}, &listener, 0,
                                                numberedStrip(58, 14, 2));
      },
      {{"on", 0.0F, "d350,40", kNoMoves, 1.0F, "(0 1000)"},
       {"off", 1.0F, "d350,40", kNoMoves, 0.0F, "(1000 0)"},
       {"from between", 0.5F, "d350,40", kNoMoves, 0.0F, "(500 0)"},
       {"middle button", 0.0F, "d350,40:M", kNotHandled, 0.0F, ""}});
  expectGestures(
      [](RecordingListener& listener) {
        return std::make_unique<CClickKickButton>(gui::CRect{330, 348, 357, 384}, &listener, 3, 36,
                                                  numberedStrip(27, 36, 2));
      },
      {{"held", 0.0F, "d340,360", kHandled, 1.0F, "(1000"},
       {"press and release", 0.0F, "d340,360 u340,360", kHandled, 0.0F, "(1000 0)"},
       {"let go outside", 0.0F, "d340,360 m300,360 u300,360", kHandled, 0.0F, "(1000)"},
       {"right button", 0.0F, "d340,360:R", kNotHandled, 0.0F, ""}});
}

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
