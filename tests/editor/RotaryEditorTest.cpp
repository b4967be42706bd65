// SPDX-License-Identifier: ISC
#include "gui/controls/COptionMenu.h"
#include "tests/editor/OpenEditor.h"

#include <algorithm>

namespace qlx::test {
namespace {

using platform::VirtualKey;
using platform::WindowEventType;
using plugin::kLever;
using plugin::kMIDIchl;
using plugin::kSpeed;

const gui::COptionMenu& contextMenu(const EditorRig& rig) {
  const auto& views = rig.frame().getViews();
  return dynamic_cast<const gui::COptionMenu&>(**std::find_if(
      views.begin(), views.end(), [](const auto& view) { return view->isTypeOf("ContextMenu"); }));
}

/// The menu of the right button at the given place of the layout, its entries as one text.
std::string contextMenuAt(EditorRig& rig, int x, int y) {
  const double scale = rig.frame().getScale();
  rig.mouse(WindowEventType::kMouseDown, static_cast<int>(x * scale), static_cast<int>(y * scale),
            platform::kPointerRight);
  rig.mouse(WindowEventType::kMouseUp, static_cast<int>(x * scale), static_cast<int>(y * scale),
            platform::kPointerRight);
  rig.editor->idle();
  if (rig.window().popup() == nullptr) return {};
  const gui::COptionMenu& menu = contextMenu(rig);
  std::string text;
  for (int i = 0; i < menu.getNbEntries(); ++i)
    text += (menu.isTicked(i) ? "*" : "") + menu.getEntry(i) + "; ";
  return text;
}

TEST_F(OpenEditor, ItsSizeIsChosenFromAMenu) {
  const auto menu = [this](int x, int y) { return contextMenuAt(rig, x, y); };
  EXPECT_EQ(menu(42, 75), "*Size: 100 %; Size: 150 %; Size: 200 %; Size: 300 %; ") << "on a knob";
  rig.key(VirtualKey::kEscape);
  rig.editor->idle();
  EXPECT_EQ(menu(134, 561), "") << "the button uses it itself";
  rig.selector->cancel();
  rig.effect.log.clear();

  // A name that is being typed is taken over, as by any press elsewhere.
  rig.click(200, 561);
  rig.key(VirtualKey::kNone, "Half");
  rig.editor->idle();
  const auto choose = [&](int times) {
    EXPECT_NE(menu(200, 280), "");
    for (int i = 0; i < times; ++i) rig.key(VirtualKey::kDown);
    rig.key(VirtualKey::kReturn);
    rig.editor->idle();
    rig.editor->idle();
  };
  choose(3);
  EXPECT_EQ(std::exchange(rig.effect.log, {}), "149=0 802x1140");
  EXPECT_EQ(rig.effect.getPresetSlot(0).nameText(), "Half");
  EXPECT_EQ(rig.settings->readText("Scale"), "2");
  EXPECT_EQ(rig.window().picture().width, 802);
  EXPECT_EQ(menu(200, 280), "Size: 100 %; Size: 150 %; *Size: 200 %; Size: 300 %; ");
  rig.key(VirtualKey::kEscape);
  rig.editor->idle();
  rig.click(740, 730); // Stop
  EXPECT_EQ(std::exchange(rig.effect.log, {}), "(4 4=0 4=1000 )4");

  // Another window has the size that was chosen last.
  rig.editor->close();
  sdk::EditRectangle* size = nullptr;
  ASSERT_TRUE(rig.editor->getRect(&size));
  EXPECT_EQ(size->right, 802);
  ASSERT_TRUE(rig.open());
  EXPECT_EQ(rig.window().picture().width, 802);

  // A host that makes no room.
  rig.effect.makesRoom = false;
  choose(2);
  EXPECT_EQ(rig.window().picture().width, 802);
  ASSERT_NE(rig.frame().getModalView(), nullptr);
  ASSERT_TRUE(rig.editor->getRect(&size));
  EXPECT_EQ(size->right, 802);
  EXPECT_EQ(rig.settings->readText("Scale"), "1.5");
}

TEST_F(OpenEditor, FollowsTheScaleOfTheScreenUnlessTheUserHasChosen) {
  const auto movedTo = [this](double scale) {
    platform::WindowEvent event;
    event.type = WindowEventType::kScaleChanged;
    event.scale = scale;
    rig.window().inject(event);
    rig.editor->idle();
    return rig.window().picture().width;
  };
  rig.effect.log.clear();
  EXPECT_EQ(movedTo(2.0), 802);
  EXPECT_EQ(std::exchange(rig.effect.log, {}), "802x1140");
  rig.editor->close();
  ASSERT_TRUE(rig.open());
  EXPECT_EQ(rig.window().picture().width, 802) << "it opens where it was last";
  rig.effect.makesRoom = false;
  EXPECT_EQ(movedTo(1.0), 802);
  EXPECT_EQ(rig.frame().getModalView(), nullptr) << "nobody has asked for it";
  rig.effect.makesRoom = true;
  rig.settings->writeText("Scale", "1.5");
  EXPECT_EQ(movedTo(3.0), 601);
}

TEST_F(OpenEditor, HostAddsToTheMenuOfAControl) {
  using Menu = sdk::EditorMenu;
  std::string asked;
  bool waiting = false;
  rig.effect.onMenu = [&](Menu& menu) {
    EXPECT_EQ(menu.byteSize, sizeof menu);
    if (menu.event == Menu::kIdle) return waiting;
    asked += std::to_string(menu.parameter) + "+-"[menu.event == Menu::kClosed];
    if (menu.event == Menu::kChosen) asked += std::to_string(menu.chosen);
    const bool shows = menu.event == Menu::kOpening || (menu.event == Menu::kChosen && waiting);
    if (!shows) return false;
    menu.itemCount = menu.event == Menu::kOpening ? 2 : 1000000;
    for (auto& title : menu.titles) title.fill('A'); // of an unfriendly host: not terminated
    menu.titles[0] = {"First"};
    return menu.parameter >= 0;
  };
  const std::string sizes = "*Size: 100 %; Size: 150 %; Size: 200 %; Size: 300 %; ";
  const std::string full = "First; " + std::string(64, 'A') + "; " + sizes;
  const auto key = [this](VirtualKey which) {
    rig.key(which);
    rig.editor->idle();
    rig.editor->idle();
  };
  waiting = true;
  struct Place {
    int x, y;
    const char* control;
  };
  for (const auto& [x, y, control] :
       {Place{42, 75, "17"}, {357, 187, "2"}, {372, 365, "4"}, {343, 366, "3"}, {369, 543, "0"}}) {
    EXPECT_EQ(contextMenuAt(rig, x, y), full) << control;
    key(VirtualKey::kEscape);
    EXPECT_EQ(std::exchange(asked, {}), std::string(control) + "+" + control + "-");
  }
  EXPECT_EQ(contextMenuAt(rig, 200, 280), sizes) << "a free place";
  key(VirtualKey::kEscape);
  EXPECT_EQ(std::exchange(asked, {}), "-1+");

  // A menu after the menu, until the host has had enough of it.
  contextMenuAt(rig, 42, 75);
  rig.key(VirtualKey::kDown);
  rig.key(VirtualKey::kDown);
  key(VirtualKey::kReturn);
  EXPECT_EQ(std::exchange(asked, {}), "17+17-17+1");
  const gui::COptionMenu& menu = contextMenu(rig);
  EXPECT_TRUE(menu.isPopupOpen());
  EXPECT_EQ(menu.getNbEntries(), Menu::kMostItems);
  waiting = false;
  rig.editor->idle();
  EXPECT_FALSE(menu.isPopupOpen());
  EXPECT_EQ(std::exchange(asked, {}), "17-");

  waiting = true;
  contextMenuAt(rig, 42, 75);
  rig.editor->close();
  EXPECT_EQ(asked, "17+17-") << "the window's end is the menu's";
}

// --- What the user does ---

TEST_F(OpenEditor, EachKnobTurnsItsParameter) {
  struct Knob {
    int x;
    int y;
    int tag;
    int pixels; ///< for the whole range
  };
  const Knob knobs[] = {
      {42, 75, 17, 400},   {87, 75, 18, 400},   {156, 75, 19, 250},  {201, 75, 20, 250},
      {270, 75, 21, 250},  {315, 75, 22, 250},  {360, 75, 23, 250},  {38, 224, 5, 250},
      {96, 224, 6, 250},   {141, 224, 7, 250},  {186, 224, 8, 250},  {231, 224, 9, 250},
      {291, 224, 10, 180}, {42, 325, 11, 250},  {87, 325, 12, 125},  {132, 325, 13, 250},
      {200, 325, 14, 250}, {244, 325, 15, 250}, {290, 325, 16, 250}, {42, 467, 24, 400},
      {87, 467, 25, 400},  {156, 467, 26, 250}, {201, 467, 27, 250}, {270, 467, 28, 250},
      {315, 467, 29, 250}, {360, 467, 30, 250}};
  for (const Knob& knob : knobs) {
    rig.press(knob.x, knob.y);
    rig.mouse(WindowEventType::kMouseMove, knob.x + 10, knob.y - 10);
    rig.release(knob.x + 10, knob.y - 10);
    rig.editor->idle();
    const std::string tag = std::to_string(knob.tag);
    const std::string value = std::to_string(std::lround(20000.0 / knob.pixels));
    EXPECT_EQ(heard(), "(" + tag + " " + tag + "=" + value + " )" + tag);
    EXPECT_NEAR(rig.effect.getParameter(knob.tag), 20.0F / static_cast<float>(knob.pixels), 1e-6F);
  }
}

TEST_F(OpenEditor, OtherControlsSendTheirs) {
  struct Action {
    int x;
    int y;
    const char* heard;
  };
  const Action actions[] = {{372, 365, "(4 4=0 4=1000 )4"},
                            {357, 187, "(2 2=1000 )2"},
                            {357, 301, "(2 2=0 )2"},
                            {369, 543, "(0 0=0 0=1000 )0"},
                            {265, 543, "(1 1=0 1=1000 )1"},
                            {265, 543, "(1 1=1000 1=0 )1"},
                            {20, 543, ""},  // the MIDI channel's display
                            {157, 543, ""}, // a lamp
                            {230, 18, ""},  // a marker
                            {42, 107, ""}}; // a text
  for (const Action& action : actions) {
    rig.click(action.x, action.y);
    EXPECT_EQ(heard(), action.heard) << action.x << ", " << action.y;
  }
}

TEST_F(OpenEditor, SpeedTogglesTheLever) {
  const std::pair<float, const char*> rows[] = {
      {0.3F, "(3 (2 2=1000"}, {0.5F, "(3 (2 2=0"}, {0.0F, "(3 (2 2=1000"}, {1.0F, "(3 (2 2=0"}};
  for (const auto& [lever, expected] : rows) {
    rig.effect.setParameter(kLever, lever);
    rig.press(343, 366);
    rig.editor->idle();
    EXPECT_EQ(heard(), expected);
    rig.release(343, 366);
    rig.editor->idle();
    EXPECT_EQ(heard(), ")2 )3");
    EXPECT_EQ(rig.effect.getParameter(kSpeed), 0.0F);
  }
}

TEST_F(OpenEditor, RockerStepsThroughTheMidiChannels) {
  const auto step = [this](int x) {
    rig.click(x, 543);
    return rig.effect.getParameter(kMIDIchl);
  };
  EXPECT_EQ(step(45), 0.0F);
  EXPECT_EQ(heard(), "35=0 148=-1000"); // the release sends nothing
  for (int i = 1; i < 18; ++i) EXPECT_NEAR(step(62), static_cast<float>(i) / 18.0F, 1e-6F);
  EXPECT_EQ(step(62), 1.0F);
  EXPECT_EQ(step(62), 1.0F);
  EXPECT_NEAR(step(45), 17.0F / 18.0F, 1e-6F);
}

TEST_F(OpenEditor, KeysReachTheLeverByBothRoads) {
  rig.effect.setParameter(kLever, 0.5F);
  EXPECT_FALSE(rig.editor->onKeyDown({0, 14, 0}));
  rig.click(357, 244);
  EXPECT_TRUE(rig.window().hasFocus());
  heard();
  rig.key(VirtualKey::kDown);
  rig.editor->idle();
  EXPECT_EQ(heard(), "(2 2=516 )2");
  EXPECT_TRUE(rig.editor->onKeyDown({0, 12, 0}));
  EXPECT_EQ(heard(), "(2 2=500 )2");
  EXPECT_FALSE(rig.editor->onKeyDown({0, 12, sdk::kModifierShift}));
  EXPECT_FALSE(rig.editor->onKeyDown({'a', 0, 0}));
}

TEST_F(OpenEditor, PointerTellsWhatCanBeDone) {
  using enum platform::PointerShape;
  const struct {
    const char* what;
    int x, y;
    platform::PointerShape shape;
  } places[]{{"knob", 87, 75, kUpDown},        {"panel", 10, 10, kArrow},
             {"lever", 357, 244, kUpDown},     {"stop", 372, 365, kHand},
             {"plate", 100, 165, kHand},       {"bypass", 369, 543, kHand},
             {"MIDI channel", 62, 543, kHand}, {"name", 204, 561, kText},
             {"menu", 269, 561, kHand},        {"next preset", 302, 561, kHand},
             {"save bank", 10, 561, kHand},    {"memory A", 339, 561, kHand},
             {"manual", 392, 561, kHand}};
  for (const auto& place : places) {
    rig.mouse(platform::WindowEventType::kMouseMove, place.x, place.y, 0);
    rig.editor->idle();
    EXPECT_EQ(rig.window().pointerShape(), place.shape) << place.what;
  }
}

TEST_F(OpenEditor, NameCanBeTypedThroughTheHost) {
  rig.click(200, 561);
  for (const char c : std::string("Hi")) rig.editor->onKeyDown({c, 0, 0});
  rig.editor->onKeyDown({0, 7, 0});                       // space
  rig.editor->onKeyDown({'x', 0, sdk::kModifierControl}); // a shortcut
  rig.editor->onKeyDown({'!', 0, sdk::kModifierShift});
  rig.editor->onKeyDown({0, 4, 0});
  EXPECT_EQ(rig.effect.getPresetSlot(0).nameText(), "Hi !");
}

} // namespace
} // namespace qlx::test
