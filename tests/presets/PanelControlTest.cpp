// SPDX-License-Identifier: ISC
#include "presets/panel/CPSKickButton.h"
#include "presets/panel/CPSRockerSwitch.h"
#include "presets/panel/CSaveLoadButton.h"
#include "tests/support/ControlPictures.h"
#include "tests/support/RecordingListener.h"

#include <gtest/gtest.h>

namespace qlx::test {
namespace {

using gui::CMouseEventResult;
using presets::CPSKickButton;
using presets::CPSRockerSwitch;
using presets::CSaveLoadButton;

constexpr auto kNotHandled = CMouseEventResult::kNotHandled;
constexpr auto kHandled = CMouseEventResult::kHandled;
constexpr auto kNoMoves = CMouseEventResult::kHandledDontNeedMoves;
constexpr std::uint32_t kLeft = gui::kLButton;
constexpr std::uint32_t kRight = gui::kRButton;
constexpr std::uint32_t kDouble = gui::kLButton | gui::kDoubleClick;

/// One press: what it answers, what the listener hears, which frame is shown meanwhile.
struct Press {
  std::uint32_t buttons;
  CMouseEventResult answer;
  const char* log;
  int frame;
};

template <typename Control>
void expectPress(Control& control, RecordingListener& listener, const Press& row) {
  listener.log.clear();
  const gui::CPoint where = control.getViewSize().centre();
  EXPECT_EQ(control.onMouseDown(where, row.buttons), row.answer) << row.buttons;
  EXPECT_EQ(listener.log, row.log) << row.buttons;
  EXPECT_EQ(frameShownBy(control), row.frame) << row.buttons;
  if (row.answer == kHandled) control.onMouseUp(where, row.buttons);
  EXPECT_EQ(listener.log, row.log) << row.buttons;
  EXPECT_EQ(control.getValue(), 0.0F) << row.buttons;
  EXPECT_EQ(frameShownBy(control), 0) << row.buttons;
}

TEST(PanelKickButton, IsPressedByTheLeftButton) {
  RecordingListener listener;
  CPSKickButton button({311, 54, 323, 68}, &listener, 164, 14, numberedStrip(12, 14, 3),
                       CPSKickButton::Press::kSingle);
  const Press rows[] = {{kLeft, kHandled, "1000", 2},
                        {kLeft | gui::kControl, kHandled, "1000", 2},
                        {kDouble, kHandled, "1000", 2},
                        {kRight, kNoMoves, "", 0},
                        {gui::kMButton, kNoMoves, "", 0}};
  for (const Press& row : rows) expectPress(button, listener, row);
}

TEST(PanelKickButton, MayNeedADoubleClick) {
  RecordingListener listener;
  CPSKickButton button({16, 56, 53, 66}, &listener, 162, 10, numberedStrip(37, 10, 3),
                       CPSKickButton::Press::kDouble);
  const Press rows[] = {{kLeft, kNoMoves, "", 0},
                        {kDouble, kHandled, "1000", 2},
                        {kDouble | gui::kControl, kHandled, "500", 2},
                        {kRight | gui::kDoubleClick, kNoMoves, "", 0}};
  for (const Press& row : rows) expectPress(button, listener, row);
}

TEST(PanelKickButton, LightsUpUnderThePointerAndStaysPressedOutside) {
  RecordingListener listener;
  CPSKickButton button({311, 54, 323, 68}, &listener, 164, 14, numberedStrip(12, 14, 3),
                       CPSKickButton::Press::kSingle);
  button.onMouseEntered({315, 60}, 0);
  EXPECT_EQ(frameShownBy(button), 1);
  button.onMouseDown({315, 60}, kLeft);
  button.onMouseMoved({100, 60}, kLeft);
  EXPECT_EQ(frameShownBy(button), 2);
  button.onMouseUp({100, 60}, kLeft);
  EXPECT_EQ(frameShownBy(button), 1);
  button.onMouseExited({100, 60}, 0);
  EXPECT_EQ(frameShownBy(button), 0);
  button.onMouseMoved({315, 60}, kLeft); // a drag that began elsewhere
  EXPECT_EQ(button.getValue(), 0.0F);
}

TEST(SaveLoadButton, TellsTheRightButtonAloneFromAllOthers) {
  RecordingListener listener;
  CSaveLoadButton button({54, 54, 66, 68}, &listener, 151, 14, numberedStrip(12, 14, 3));
  const Press rows[] = {{kLeft, kNoMoves, "1000", 0},
                        {kRight, kNoMoves, "500", 0},
                        {kRight | gui::kDoubleClick, kNoMoves, "500", 0},
                        {kRight | gui::kShift, kNoMoves, "1000", 0},
                        {kRight | kLeft, kNoMoves, "1000", 0},
                        {gui::kMButton, kNotHandled, "", 0}};
  for (const Press& row : rows) expectPress(button, listener, row);

  button.onMouseEntered({60, 60}, 0);
  EXPECT_EQ(frameShownBy(button), 1);
  button.onMouseExited({60, 60}, 0);
  EXPECT_EQ(frameShownBy(button), 0);
  button.setListener(nullptr);
  EXPECT_EQ(button.onMouseDown({60, 60}, kLeft), kNotHandled);
}

TEST(PanelRocker, HasTwoSides) {
  RecordingListener listener;
  CPSRockerSwitch rocker({278, 54, 309, 68}, &listener, 150, 14, numberedStrip(31, 14, 5));
  struct Row {
    double x;
    std::uint32_t buttons;
    CMouseEventResult answer;
    const char* log;
    int pressed;
  };
  const Row rows[] = {{280, kLeft, kHandled, "-1000", 3},
                      {293.4, kLeft, kHandled, "-1000", 3},
                      {293.5, kLeft, kHandled, "1000", 4},
                      {308, kLeft | gui::kShift, kHandled, "1000", 4},
                      {308, kRight, kNotHandled, "", 0}};
  for (const Row& row : rows) {
    listener.log.clear();
    EXPECT_EQ(rocker.onMouseDown({row.x, 60}, row.buttons), row.answer);
    EXPECT_EQ(frameShownBy(rocker), row.pressed);
    if (row.answer == kHandled) rocker.onMouseUp({row.x, 60}, row.buttons);
    EXPECT_EQ(listener.log, row.log);
    EXPECT_EQ(frameShownBy(rocker), 0);
  }
  rocker.onMouseMoved({280, 60}, 0);
  EXPECT_EQ(frameShownBy(rocker), 1);
  rocker.onMouseMoved({300, 60}, kLeft);
  EXPECT_EQ(frameShownBy(rocker), 1);
  rocker.onMouseMoved({300, 60}, 0);
  EXPECT_EQ(frameShownBy(rocker), 2);
  rocker.onMouseExited({400, 60}, 0);
  EXPECT_EQ(frameShownBy(rocker), 0);
}

} // namespace
} // namespace qlx::test
