// SPDX-License-Identifier: ISC
#include "gui/dialogs/CMessageBox.h"

#include "tests/gui/FrameFixture.h"

namespace qlx::test {

namespace {

class MessageBoxes : public FrameFixture {
 protected:
  void show(std::vector<std::string> buttons) {
    answer = -1;
    ASSERT_TRUE(CMessageBox::show(*frame, "Replace", "The file is there already.", buttons,
                                  [this](int button) {
                                    EXPECT_EQ(frame->getModalView(), nullptr);
                                    answer = button;
                                  }));
    frame->idle();
  }
  CMessageBox& box() { return static_cast<CMessageBox&>(*frame->getModalView()); }

  int answer = -1;
};

struct KeyCase {
  const char* what;
  std::vector<VirtualKey> keys;
  int answer;
};

TEST_F(MessageBoxes, AnswersToKeys) {
  const KeyCase cases[]{
      {"Enter takes the first", {VirtualKey::kReturn}, 0},
      {"Escape takes the last", {VirtualKey::kEscape}, 1},
      {"Right then Enter", {VirtualKey::kRight, VirtualKey::kReturn}, 1},
      {"Tab goes round", {VirtualKey::kTab, VirtualKey::kTab, VirtualKey::kSpace}, 0},
      {"others do nothing", {VirtualKey::kUp}, -1},
  };
  for (const KeyCase& c : cases) {
    SCOPED_TRACE(c.what);
    show({"Yes", "No"});
    for (const VirtualKey k : c.keys) key(k);
    EXPECT_EQ(answer, c.answer);
    frame->removeModalView();
    frame->idle();
  }
}

TEST_F(MessageBoxes, AnswersToItsButtons) {
  show({"Yes", "No"});
  ASSERT_EQ(box().getViews().size(), 2U);
  const CPoint no = box().getViews()[1]->getViewSize().centre();
  press(int(no.x), int(no.y));
  release(5, 5);
  EXPECT_EQ(answer, -1) << "let go outside";
  click(int(no.x), int(no.y));
  EXPECT_EQ(answer, 1);
}

TEST_F(MessageBoxes, ClosingTheFrameAnswersNothing) {
  show({"OK"});
  frame.reset();
  EXPECT_EQ(answer, -1);
}

TEST_F(MessageBoxes, BreaksLongTextsBetweenWords) {
  ASSERT_TRUE(CMessageBox::show(
      *frame, "", "A text that is much too long for one line of a frame so narrow", {"OK"}, {}));
  const auto& lines = box().getLines();
  ASSERT_GT(lines.size(), 1U);
  std::string joined;
  for (const std::string& line : lines) {
    EXPECT_LE(frame->getTypeface()->width(line, CFontDesc{12.0}), 128);
    joined += (joined.empty() ? "" : " ") + line;
  }
  EXPECT_EQ(joined, "A text that is much too long for one line of a frame so narrow");
}

} // namespace
} // namespace qlx::test
