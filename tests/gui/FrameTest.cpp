// SPDX-License-Identifier: ISC
#include "gui/CFrame.h"

#include "gui/controls/CAnimKnob.h"
#include "gui/controls/CMovieBitmap.h"
#include "gui/controls/COptionMenu.h"
#include "gui/controls/CTextEdit.h"
#include "gui/controls/CTextLabel.h"
#include "gui/dialogs/CMessageBox.h"
#include "tests/gui/FrameFixture.h"
#include "tests/support/CountingAllocator.h"

#include <atomic>
#include <random>
#include <thread>

namespace qlx::test {

namespace {

using platform::WindowEventType;

// Answers presses as it is told and writes down what it gets.
class Probe : public CControl {
 public:
  Probe(const CRect& size, std::string name, std::string& log,
        CMouseEventResult answer = CMouseEventResult::kHandled)
      : CControl(size), m_name(std::move(name)), m_log(log), m_answer(answer) {}
  std::unique_ptr<CView> newCopy() const override {
    return std::make_unique<Probe>(getViewSize(), m_name, m_log, m_answer);
  }
  CMouseEventResult onMouseDown(const CPoint& /*where*/, const CButtonState& /*b*/) override {
    note("down");
    return m_answer;
  }
  CMouseEventResult onMouseUp(const CPoint& /*where*/, const CButtonState& /*b*/) override {
    return note("up");
  }
  CMouseEventResult onMouseMoved(const CPoint& /*where*/, const CButtonState& /*b*/) override {
    return note("move");
  }
  CMouseEventResult onMouseEntered(const CPoint& /*where*/, const CButtonState& /*b*/) override {
    return note("enter");
  }
  CMouseEventResult onMouseExited(const CPoint& /*where*/, const CButtonState& /*b*/) override {
    return note("exit");
  }
  bool onWheel(const CPoint& /*where*/, float /*distance*/, const CButtonState& /*b*/) override {
    note("wheel");
    return true;
  }
  bool onKeyDown(const CKeyCode& /*key*/) override {
    note("key");
    return true;
  }

 private:
  CMouseEventResult note(const char* what) {
    m_log += m_name + "." + what + " ";
    return CMouseEventResult::kHandled;
  }

  std::string m_name;
  std::string& m_log;
  CMouseEventResult m_answer;
};

class Frames : public FrameFixture {
 protected:
  ~Frames() override { frame.reset(); }

  Probe& add(const CRect& size, const char* name,
             CMouseEventResult answer = CMouseEventResult::kHandled) {
    return frame->addView(std::make_unique<Probe>(size, name, log, answer));
  }
  std::string take() { return std::exchange(log, {}); }

  std::string log;
};

TEST_F(Frames, GestureBelongsToTheViewAndButtonThatStartedIt) {
  add({0, 0, 50, 50}, "a");
  add({100, 0, 150, 50}, "b");
  press(10, 10);
  drag(120, 10);
  press(120, 10, platform::kPointerRight);
  release(120, 10, platform::kPointerRight);
  drag(130, 10);
  release(120, 10);
  EXPECT_EQ(take(), "a.down a.move a.move a.up b.enter ");
}

TEST_F(Frames, PressesGoDownUntilTaken) {
  add({0, 0, 50, 50}, "below");
  add({0, 0, 50, 50}, "above", CMouseEventResult::kNotHandled);
  press(10, 10);
  release(10, 10);
  EXPECT_EQ(take(), "above.down below.down below.up above.enter ");
}

TEST_F(Frames, NoMovesWantedMeansNeitherMovesNorRelease) {
  add({0, 0, 50, 50}, "a", CMouseEventResult::kHandledDontNeedMoves);
  press(10, 10);
  release(10, 10);
  EXPECT_EQ(take(), "a.down ");
}

TEST_F(Frames, HoverEntersAndExits) {
  add({0, 0, 50, 50}, "a");
  auto& b = add({50, 0, 100, 50}, "b");
  hover(10, 10);
  hover(60, 10);
  b.setMouseEnabled(false);
  hover(61, 10);
  hover(10, 10);
  happens(WindowEventType::kMouseLeave);
  EXPECT_EQ(take(), "a.enter a.move a.exit b.enter b.move b.exit a.enter a.move a.exit ");
}

TEST_F(Frames, ModalViewGetsEverything) {
  auto& lever = add({0, 0, 50, 50}, "lever");
  lever.setWantsFocus(true);
  click(10, 10);
  key(VirtualKey::kUp);
  EXPECT_EQ(take(), "lever.down lever.up lever.enter lever.key ");
  hover(60, 60);
  take();
  ASSERT_TRUE(frame->setModalView(std::make_unique<Probe>(CRect{100, 0, 200, 100}, "modal", log)));
  EXPECT_FALSE(frame->setModalView(std::make_unique<Probe>(CRect{0, 0, 9, 9}, "second", log)));
  click(10, 10);
  hover(10, 10);
  key(VirtualKey::kUp);
  mouse(WindowEventType::kWheel, 10, 10, 0);
  mouse(WindowEventType::kWheel, 110, 10, 0);
  EXPECT_EQ(take(), "modal.key modal.wheel ");
  frame->removeModalView();
  frame->idle();
  hover(10, 10);
  EXPECT_EQ(take(), "lever.enter lever.move ");
}

TEST_F(Frames, KeyboardGoesBackWhenThePointerLeavesAndNothingIsOpen) {
  frame->takeKeyboardFocus();
  happens(WindowEventType::kMouseLeave);
  EXPECT_FALSE(window->hasFocus());

  frame->takeKeyboardFocus();
  CMessageBox::show(*frame, "Title", "Text", {"OK"}, {});
  hover(10, 10);
  happens(WindowEventType::kMouseLeave);
  EXPECT_TRUE(window->hasFocus()) << "a dialog is to be answered";
  key(VirtualKey::kReturn);
  ASSERT_EQ(frame->getModalView(), nullptr);
  frame->idle();
  EXPECT_FALSE(window->hasFocus());
}

TEST_F(Frames, KeysThatNobodyUsesAreTheHosts) {
  add({0, 0, 50, 50}, "lever").setWantsFocus(true);
  key(VirtualKey::kSpace);
  EXPECT_EQ(window->takePassedOn(), std::vector{VirtualKey::kSpace});
  click(10, 10);
  key(VirtualKey::kSpace);
  EXPECT_TRUE(window->takePassedOn().empty()) << "the lever used it";
  click(150, 80);
  frame->setFocusView(nullptr);
  auto& menu = frame->addView(std::make_unique<COptionMenu>(CRect{150, 0, 170, 20}, nullptr, 1));
  menu.addEntry("entry");
  menu.popup();
  type("r");
  EXPECT_TRUE(window->takePassedOn().empty()) << "not even the letters that a list does not know";
  menu.closePopup();
  CMessageBox::show(*frame, "Title", "Text", {"OK"}, {});
  type("r");
  EXPECT_TRUE(window->takePassedOn().empty());
}

TEST_F(Frames, PointerShapeIsThatOfTheViewBelow) {
  using platform::PointerShape;
  const auto strip = testStrip(20, 20, 2);
  frame->addView(std::make_unique<CAnimKnob>(CRect{0, 0, 20, 20}, nullptr, 1, 2, 20, strip));
  frame->addView(std::make_unique<CTextEdit>(CRect{50, 0, 90, 20}, nullptr, 2, "name"));
  hover(10, 10);
  EXPECT_EQ(window->pointerShape(), PointerShape::kUpDown);
  press(10, 10);
  drag(60, 10);
  EXPECT_EQ(window->pointerShape(), PointerShape::kUpDown) << "as long as the gesture goes on";
  release(60, 10);
  EXPECT_EQ(window->pointerShape(), PointerShape::kText);
  hover(150, 80);
  EXPECT_EQ(window->pointerShape(), PointerShape::kArrow);
  hover(60, 10);
  CMessageBox::show(*frame, "Title", "Text", {"OK"}, {});
  EXPECT_EQ(window->pointerShape(), PointerShape::kArrow);
}

TEST_F(Frames, ViewTakenOutMidGestureHearsNoMore) {
  auto& a = add({0, 0, 50, 50}, "a");
  a.setListener(&recorder);
  press(10, 10);
  a.beginEdit();
  const auto out = frame->removeView(a);
  EXPECT_EQ(recorder.take(), "begin end ") << "the host isn't left with an open gesture";
  take();
  drag(20, 20);
  release(20, 20);
  EXPECT_EQ(take(), "");
}

TEST_F(Frames, ClosingMidGestureEndsIt) {
  auto& a = add({0, 0, 50, 50}, "a");
  a.setListener(&recorder);
  a.beginEdit();
  frame.reset();
  EXPECT_EQ(recorder.take(), "begin end ");
}

TEST_F(Frames, NothingIsDrawnOrAllocatedWhenNothingChanged) {
  auto& movie = frame->addView(std::make_unique<CMovieBitmap>(CRect{10, 10, 50, 30}, nullptr, 1, 5,
                                                              20, testStrip(40, 20, 5)));
  frame->idle();
  window->takePresentedPixels();
  const AllocationCount allocations;
  for (int i = 0; i < 10; ++i) {
    movie.setValue(0.0F);
    frame->idle();
  }
  EXPECT_EQ(window->takePresentedPixels(), 0U);
  for (int i = 0; i < 10; ++i) {
    movie.setValue(static_cast<float>(i % 2));
    frame->idle();
  }
  EXPECT_EQ(window->takePresentedPixels(), 9U * 40U * 20U);
  EXPECT_EQ(allocations.value(), 0);
}

TEST_F(Frames, ExposedAreasArePresentedAgainWithoutDrawing) {
  frame->idle();
  window->takePresentedPixels();
  platform::WindowEvent event;
  event.type = WindowEventType::kExpose;
  event.width = 20;
  event.height = 10;
  window->inject(event);
  frame->idle();
  EXPECT_EQ(window->takePresentedPixels(), 200U);
}

TEST_F(Frames, WindowGoneIsQuiet) {
  frame->addView(std::make_unique<CTextLabel>(CRect{0, 0, 50, 20}, "x")).setDirty();
  window->destroyByOthers();
  frame->idle();
  EXPECT_FALSE(frame->isOpen());
  window->takePresentedPixels();
  frame->invalidAll();
  frame->idle();
  EXPECT_EQ(window->takePresentedPixels(), 0U);
}

// What another thread sets while the control is being drawn is not lost.
class SetsItselfWhileDrawing : public CControl {
 public:
  using CControl::CControl;
  std::unique_ptr<CView> newCopy() const override { return nullptr; }
  void draw(CDrawContext& context) override {
    const auto red = static_cast<std::uint8_t>(getValue() * 100.0F);
    if (getValue() == 0.5F) setValue(1.0F);
    context.fillRect(getViewSize(), {red, 0, 0, 255});
    setDirty(false);
  }
};

TEST_F(Frames, ValueSetDuringDrawingIsDrawnNext) {
  auto& control = frame->addView(std::make_unique<SetsItselfWhileDrawing>(CRect{0, 0, 10, 10}));
  control.setValue(0.5F);
  frame->idle();
  EXPECT_TRUE(control.isDirty());
  frame->idle();
  EXPECT_EQ(shown()[0] >> 16 & 0xFF, 100U);
  EXPECT_FALSE(control.isDirty());
}

// Changes another control's value once, when it is drawn itself.
class SetsAnotherWhileDrawing : public CView {
 public:
  using CView::CView;
  std::unique_ptr<CView> newCopy() const override { return nullptr; }
  void draw(CDrawContext& /*context*/) override {
    if (CControl* control = std::exchange(target, nullptr)) control->setValue(1.0F);
  }
  CControl* target = nullptr;
};

TEST_F(Frames, ValueSetBeforeAPartIsDrawnReachesAllOfTheControl) {
  for (const float next : {1.0F, 0.0F}) {
    auto& first = frame->addView(std::make_unique<SetsAnotherWhileDrawing>(CRect{0, 0, 40, 20}));
    auto& movie = frame->addView(std::make_unique<CMovieBitmap>(CRect{40, 0, 80, 20}, nullptr, 1, 2,
                                                                20, testStrip(40, 20, 2)));
    frame->idle();
    first.target = &movie;
    frame->invalidRect({0, 0, 60, 20}); // half of the movie
    frame->idle();
    EXPECT_EQ(movie.getValue(), 1.0F);
    movie.setValue(next);
    frame->idle();
    for (const int x : {45, 75}) EXPECT_EQ(shownFrame(x, 10), static_cast<int>(next)) << x;
  }
}

TEST_F(Frames, ValuesComeFromAnotherThreadWhileDrawing) {
  std::vector<CControl*> controls;
  for (int i = 0; i < 4; ++i)
    controls.push_back(&frame->addView(std::make_unique<CMovieBitmap>(
        CRect{i * 40.0, 10, i * 40.0 + 40, 30}, nullptr, i, 5, 20, testStrip(40, 20, 5))));
  std::atomic<bool> started{false};
  std::thread automation([&] {
    for (int round = 0; round < 20000; ++round) {
      for (CControl* control : controls) control->setValue(static_cast<float>(round % 5) / 4.0F);
      started = true;
    }
  });
  while (!started) std::this_thread::yield();
  for (int i = 0; i < 200; ++i) frame->idle();
  automation.join();
  frame->idle();
  for (int i = 0; i < 4; ++i) EXPECT_EQ(shownFrame(i * 40 + 5, 20), 4);
}

// Redrawing parts equals redrawing all, in windows of every scale.
TEST_F(Frames, PartialRedrawEqualsWholeRedraw) {
  PixelBuffer pattern(200, 100);
  std::mt19937 random(7);
  for (std::uint32_t& pixel : pattern.pixels)
    pixel = 0xFF000000U | (static_cast<std::uint32_t>(random()) & 0xFFFFFFU);
  const auto background = std::make_shared<const CBitmap>(pattern);
  frame->setBackground(background);
  PixelBuffer glass(40, 400);
  for (std::uint32_t& pixel : glass.pixels)
    pixel = 0x80800000U | (static_cast<std::uint32_t>(random()) & 0x7F7FU);
  const auto strip = std::make_shared<const CBitmap>(std::move(glass));
  std::vector<CControl*> controls;
  const auto at = [&random](unsigned limit) { return static_cast<double>(random() % limit); };
  for (int i = 0; i < 12; ++i) {
    const CPoint corner{at(170) + at(2) / 2.0, at(70) + at(2) / 2.0};
    const CRect place{corner.x, corner.y, corner.x + 40, corner.y + 40};
    controls.push_back(
        &frame->addView(std::make_unique<CAnimKnob>(place, nullptr, i, 10, 40, strip)));
    auto display = std::make_unique<CParamDisplay>(place.insetBy(-4, 14), background);
    display->setBackOffset(place.insetBy(-4, 14).topLeft());
    controls.push_back(&frame->addView(std::move(display)));
  }
  std::size_t wholeRedraws = 0;
  for (int step = 0; step < 1600; ++step) {
    if (step % 400 == 0) {
      frame->setScale(kWindowScales[static_cast<std::size_t>(step / 400)]);
      frame->idle();
    }
    for (auto changes = random() % 4; changes > 0; --changes)
      controls[random() % controls.size()]->setValue(static_cast<float>(random() % 101) / 100.0F);
    if (step % 100 == 30) CMessageBox::show(*frame, "Title", "Some text", {"OK"}, {});
    if (step % 100 == 60) frame->removeModalView();
    frame->idle();
    wholeRedraws += window->takePresentedPixels() == shown().size() ? 1U : 0U;
    if (step % 5 == 0) {
      ASSERT_EQ(shown(), redrawnWhole()) << "step " << step;
    }
  }
  EXPECT_LT(wholeRedraws, 160U) << "the point is that few of them are whole";
}

} // namespace
} // namespace qlx::test
