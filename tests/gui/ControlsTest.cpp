// SPDX-License-Identifier: ISC
#include "gui/controls/CAnimKnob.h"
#include "gui/controls/CKickButton.h"
#include "gui/controls/CMovieBitmap.h"
#include "gui/controls/COnOffButton.h"
#include "gui/controls/CParamDisplay.h"
#include "gui/controls/CRockerSwitch.h"
#include "gui/dialogs/CSplashScreen.h"
#include "tests/gui/FrameFixture.h"

#include <cstring>
#include <functional>

namespace qlx::test {

namespace {

constexpr CRect kPlace{10, 10, 50, 30};
constexpr std::uint32_t kRight = platform::kPointerRight;

class Controls : public FrameFixture {};

TEST_F(Controls, KickButtonIsDownWhileHeldInside) {
  auto& button =
      frame->addView(std::make_unique<CKickButton>(kPlace, &recorder, 7, 20, testStrip(40, 20, 2)));
  press(20, 20);
  EXPECT_EQ(recorder.take(), "begin v100 ");
  EXPECT_EQ(shownFrame(20, 20), 1);
  drag(100, 20);
  EXPECT_EQ(shownFrame(20, 20), 0) << "outside it comes up";
  drag(20, 20);
  EXPECT_EQ(recorder.take(), "") << "moves tell nobody";
  release(20, 20);
  EXPECT_EQ(recorder.take(), "v0 end ");
  EXPECT_EQ(button.getValue(), 0.0F);
  press(20, 20);
  recorder.take();
  drag(100, 20);
  release(100, 20);
  EXPECT_EQ(recorder.take(), "end ") << "let go outside";
  press(20, 20, kRight);
  EXPECT_EQ(recorder.take(), "");
}

TEST_F(Controls, OnOffButtonTogglesOnPress) {
  frame->addView(std::make_unique<COnOffButton>(kPlace, &recorder, 7, testStrip(40, 20, 2)));
  click(20, 20);
  EXPECT_EQ(recorder.take(), "begin v100 end ");
  EXPECT_EQ(shownFrame(20, 20), 1);
  click(20, 20);
  EXPECT_EQ(recorder.take(), "begin v0 end ");
  EXPECT_EQ(shownFrame(20, 20), 0);
}

TEST_F(Controls, RockerSpringsBack) {
  frame->addView(std::make_unique<CRockerSwitch>(kPlace, &recorder, 7, 20, testStrip(40, 20, 3)));
  frame->idle();
  EXPECT_EQ(shownFrame(20, 20), 1);
  press(29, 20);
  EXPECT_EQ(shownFrame(20, 20), 0);
  release(29, 20);
  EXPECT_EQ(recorder.take(), "begin v-100 v0 end ");
  press(30, 20);
  EXPECT_EQ(shownFrame(20, 20), 2);
  release(150, 90);
  EXPECT_EQ(recorder.take(), "begin v100 v0 end ");
}

struct KnobCase {
  const char* what;
  std::uint32_t modifiers;
  int fromX, fromY, toX, toY;
  int before, after; // percent
};

TEST_F(Controls, KnobFollowsTheDrag) {
  constexpr std::uint32_t kShiftKey = platform::kModifierShift;
  // Centre (30, 30).
  const KnobCase cases[]{
      {"right raises", 0, 30, 30, 80, 30, 50, 75},
      {"down lowers", 0, 30, 30, 30, 80, 50, 25},
      {"both axes add", 0, 30, 30, 50, 10, 50, 70},
      {"Shift is finer", kShiftKey, 30, 30, 130, 30, 50, 60},
      {"stops at the end", 0, 30, 30, 199, 30, 50, 100},
      {"default", platform::kModifierControl, 30, 30, 80, 30, 50, 20},
  };
  auto& knob = frame->addView(std::make_unique<CAnimKnob>(CRect{10, 10, 50, 50}, &recorder, 7, 11,
                                                          40, testStrip(40, 40, 11)));
  knob.setDefaultValue(0.2F);
  for (const KnobCase& c : cases) {
    SCOPED_TRACE(c.what);
    knob.setValue(static_cast<float>(c.before) / 100.0F);
    press(c.fromX, c.fromY, platform::kPointerLeft, c.modifiers);
    drag(c.toX, c.toY, c.modifiers);
    release(c.toX, c.toY);
    EXPECT_NEAR(knob.getValue() * 100.0F, static_cast<float>(c.after), 0.5F);
    const std::string log = recorder.take();
    EXPECT_TRUE(log.starts_with("begin v") && log.ends_with("end ")) << log;
    EXPECT_EQ(shownFrame(30, 30), static_cast<int>(knob.getValue() * 10.0F + 0.5F));
  }
}

TEST_F(Controls, MovieShowsTheNearestFrame) {
  auto& movie = frame->addView(
      std::make_unique<CMovieBitmap>(kPlace, nullptr, 7, 5, 20, testStrip(40, 20, 5)));
  const std::pair<float, int> cases[]{{0.0F, 0}, {0.124F, 0}, {0.126F, 1}, {0.5F, 2}, {1.0F, 4}};
  for (const auto& [value, shown] : cases) {
    movie.setValue(value);
    frame->idle();
    EXPECT_EQ(shownFrame(20, 20), shown) << value;
  }
}

TEST_F(Controls, DisplayWritesWhatItsConverterSays) {
  PixelBuffer grey(200, 100);
  for (std::uint32_t& pixel : grey.pixels) pixel = 0xFF404040U;
  auto& display = frame->addView(
      std::make_unique<CParamDisplay>(kPlace, std::make_shared<const CBitmap>(std::move(grey))));
  const char* words[]{"", "Tube"};
  display.setStringConvert(
      [](float value, char* text, void* user) {
        std::strcpy(text, static_cast<const char**>(user)[value > 0.5F ? 1 : 0]);
      },
      static_cast<void*>(words));
  frame->idle();
  const auto empty = shown();
  EXPECT_EQ(empty[20 * 200 + 30], 0xFF404040U);
  display.setValue(1.0F);
  frame->idle();
  const auto written = shown();
  std::size_t changed = 0;
  for (int y = 0; y < 100; ++y)
    for (int x = 0; x < 200; ++x) {
      const auto at = static_cast<std::size_t>(y * 200 + x);
      if (empty[at] == written[at]) continue;
      ++changed;
      EXPECT_TRUE(kPlace.contains(CPoint{double(x), double(y)}));
    }
  EXPECT_GT(changed, 30U);
}

TEST_F(Controls, SplashCoversUntilClicked) {
  auto& splash = frame->addView(std::make_unique<CSplashScreen>(
      kPlace, nullptr, 7, testStrip(150, 90, 1), CRect{0, 0, 150, 90}));
  auto& below =
      frame->addView(std::make_unique<COnOffButton>(CRect{60, 10, 80, 30}, &recorder, 8, nullptr));
  auto& beside = frame->addView(
      std::make_unique<COnOffButton>(CRect{160, 90, 190, 99}, &recorder, 9, nullptr));
  press(20, 20, kRight);
  EXPECT_EQ(frame->getModalView(), nullptr);
  click(20, 20);
  EXPECT_EQ(splash.getValue(), 1.0F);
  EXPECT_EQ(shownFrame(120, 80), 0);
  press(70, 20, kRight);
  key(VirtualKey::kReturn);
  EXPECT_NE(frame->getModalView(), nullptr);
  const std::function<void()> closings[]{[this] { click(70, 20); }, [this] { click(180, 95); },
                                         [this] { key(VirtualKey::kEscape); }};
  for (const auto& close : closings) {
    close();
    EXPECT_EQ(below.getValue() + beside.getValue(), 0.0F) << "the press is the picture's";
    EXPECT_EQ(frame->getModalView(), nullptr);
    EXPECT_EQ(splash.getValue(), 0.0F);
    EXPECT_EQ(shown(), redrawnWhole());
    click(20, 20);
  }
}

/// A control whose value another thread changes and restores while it is being drawn.
template <class Base>
class Disturbed : public Base {
 public:
  using Base::Base;
  void draw(CDrawContext& context) override {
    const float value = this->getValue();
    if (disturbed) this->setValue(1.0F);
    Base::draw(context);
    this->setValue(value);
  }
  bool disturbed = true;
};

template <class Base, class... Args>
void expectUndisturbed(FrameFixture& fixture, const char* name, Args&&... args) {
  auto& control =
      fixture.frame->addView(std::make_unique<Disturbed<Base>>(std::forward<Args>(args)...));
  fixture.frame->idle();
  control.disturbed = false;
  EXPECT_EQ(fixture.shown(), fixture.redrawnWhole()) << name;
  fixture.frame->removeView(control);
}

TEST_F(Controls, WhatIsDrawnIsTheValueOnRecord) {
  const CBitmapRef two = testStrip(40, 20, 2);
  const CBitmapRef three = testStrip(40, 20, 3);
  expectUndisturbed<CKickButton>(*this, "kick", kPlace, nullptr, 1, 20.0, two);
  expectUndisturbed<COnOffButton>(*this, "on/off", kPlace, nullptr, 1, two);
  expectUndisturbed<CMovieBitmap>(*this, "movie", kPlace, nullptr, 1, 2, 20.0, two);
  expectUndisturbed<CAnimKnob>(*this, "knob", kPlace, nullptr, 1, 2, 20.0, two);
  expectUndisturbed<CRockerSwitch>(*this, "rocker", kPlace, nullptr, 1, 20.0, three);
  expectUndisturbed<CParamDisplay>(*this, "display", kPlace);
}

TEST_F(Controls, CopiesHaveTheSettingsButNoPlace) {
  auto& rocker = frame->addView(std::make_unique<CRockerSwitch>(
      kPlace, &recorder, 9, 20, testStrip(40, 20, 3), CPoint{0, 2}, kVertical));
  rocker.setDefaultValue(0.25F);
  const auto copy = rocker.newCopy();
  ASSERT_TRUE(copy->isTypeOf("CRockerSwitch"));
  EXPECT_TRUE(copy->isTypeOf("CControl") && copy->isTypeOf("CView") &&
              copy->isTypeOf("CBaseObject"));
  EXPECT_FALSE(copy->isTypeOf("CKnob"));
  const auto& same = static_cast<CRockerSwitch&>(*copy);
  EXPECT_EQ(same.getFrame(), nullptr);
  EXPECT_EQ(same.getTag(), 9);
  EXPECT_EQ(same.getStyle(), kVertical);
  EXPECT_EQ(same.getMin(), -1.0F);
  EXPECT_EQ(same.getDefaultValue(), 0.25F);
  EXPECT_EQ(same.getBackOffset(), (CPoint{0, 2}));
  EXPECT_EQ(same.getHeightOfOneImage(), 20.0);
}

} // namespace
} // namespace qlx::test
