// SPDX-License-Identifier: ISC
#include "editor/ScaleChoice.h"
#include "gui/controls/COptionMenu.h"
#include "presets/panel/LoadBitmap.h"
#include "tests/support/CountingAllocator.h"
#include "tests/support/EditorRig.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <functional>
#include <random>
#include <thread>

namespace qlx::test {
namespace {

const gui::COptionMenu& contextMenu(const EditorRig& rig) {
  const auto& views = rig.frame().getViews();
  return dynamic_cast<const gui::COptionMenu&>(**std::find_if(
      views.begin(), views.end(), [](const auto& view) { return view->isTypeOf("ContextMenu"); }));
}

using platform::VirtualKey;
using platform::WindowEventType;
using plugin::kLever;
using plugin::kMIDIchl;
using plugin::kSpeed;

class OpenEditor : public testing::Test {
 protected:
  OpenEditor() {
    rig.open();
    rig.editor->idle();
  }

  /// What reached the host since the last call.
  std::string heard() { return std::exchange(rig.effect.log, {}); }

  EditorRig rig;
};

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
  for (int round = 0; round < 3000; ++round) {
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
  EXPECT_GT(std::ranges::min(rings), 20) << "with a ring at every scale";
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
