// SPDX-License-Identifier: ISC
// The editor without a pointer: walking from control to control, what keys do there, and the
// controls in words.
#include "gui/controls/COptionMenu.h"
#include "tests/support/EditorRig.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <sstream>

namespace qlx::test {
namespace {

using platform::kModifierAlt;
using platform::kModifierControl;
using platform::kModifierShift;
using platform::VirtualKey;

class EditorKeys : public testing::Test {
 protected:
  EditorKeys() {
    rig.open();
    rig.editor->idle();
  }

  void key(VirtualKey which, std::uint32_t modifiers = 0, std::string text = {}) {
    platform::WindowEvent event;
    event.type = platform::WindowEventType::kKeyDown;
    event.key = which;
    event.modifiers = modifiers;
    event.text = std::move(text);
    rig.window().inject(event);
    rig.editor->idle();
  }
  const gui::CControl* ring() const {
    return dynamic_cast<const gui::CControl*>(rig.frame().getRingView());
  }
  std::string ringName() const { return ring() == nullptr ? "" : ring()->getName(); }
  void walkTo(const std::string& name) {
    for (int i = 0; i < 100 && ringName() != name; ++i) key(VirtualKey::kTab);
    ASSERT_EQ(ringName(), name);
  }
  std::vector<std::string> walk(std::uint32_t modifiers) {
    std::vector<std::string> names;
    do {
      key(VirtualKey::kTab, modifiers);
      names.push_back(ringName());
    } while (names.size() < 100 && (names.size() == 1 || names.back() != names.front()));
    names.pop_back();
    return names;
  }
  int preset() const {
    for (const auto& view : rig.frame().getViews())
      if (auto* menu = dynamic_cast<gui::COptionMenu*>(view.get());
          menu != nullptr && menu->getName() == "Preset menu")
        return menu->getCurrentIndex();
    return -1;
  }
  std::string heard() { return std::exchange(rig.effect.log, {}); }

  EditorRig rig;
};

TEST_F(EditorKeys, TabWalksEveryControlOnceInReadingOrder) {
  const std::vector<std::string> expected{
      "Horn slow speed", "Horn fast speed", "Horn acceleration time", "Horn deceleration time",
      "Horn microphone distance", "Horn high-pass frequency", "Horn level",
      // the cabinet
      "About", "Motor noise", "Bottom", "Low middle", "Presence", "Top", "Microphone setup",
      "Input level", "Amplifier type", "Drive", "Room size", "Room color", "Room amount",
      // beside it
      "Lever", "Speed", "Stop",
      // the drum
      "Drum slow speed", "Drum fast speed", "Drum acceleration time", "Drum deceleration time",
      "Drum microphone distance", "Drum low-pass frequency", "Drum level",
      // the lower edge
      "MIDI channel", "CPU mode", "Bypass", "Save bank", "Store default bank", "Load bank",
      "Save preset", "Store default preset", "Load preset", "Preset name", "Preset menu",
      "Previous and next preset", "Store memory A", "Recall memory A", "Store memory B",
      "Recall memory B", "Manual"};
  EXPECT_EQ(walk(0), expected);
  key(VirtualKey::kEscape);
  rig.frame().setFocusView(nullptr);
  auto backwards = walk(kModifierShift);
  std::ranges::reverse(backwards);
  EXPECT_EQ(backwards.back(), "Manual") << "from the first control to the last";
  EXPECT_EQ(backwards, expected);

  // What the pointer reaches the keyboard does, too.
  std::size_t forThePointer = 0;
  for (const auto& view : rig.frame().getViews()) {
    const bool shows = view->getPointerShape() == platform::PointerShape::kArrow;
    forThePointer += shows || view->isTypeOf("ContextMenu") ? 0U : 1U;
  }
  EXPECT_EQ(forThePointer, expected.size());
  EXPECT_EQ(heard(), "");
}

TEST_F(EditorKeys, WalkingGoesOnWhereThePointerWas) {
  rig.click(156, 75);
  EXPECT_EQ(ring(), nullptr);
  key(VirtualKey::kTab);
  EXPECT_EQ(ringName(), "Horn deceleration time");
  rig.click(10, 140);
  EXPECT_EQ(ring(), nullptr);
  key(VirtualKey::kTab);
  EXPECT_EQ(ringName(), "Horn microphone distance");
  rig.press(156, 75);
  key(VirtualKey::kTab);
  EXPECT_EQ(ring(), nullptr) << "not in the middle of a gesture";
}

TEST_F(EditorKeys, EachKeyHasItsEffect) {
  using enum VirtualKey;
  struct Row {
    const char* control;
    VirtualKey key;
    std::uint32_t modifiers;
    float start; ///< of all parameters
    const char* heard;
  };
  const Row rows[]{{"Horn slow speed", kUp, 0, 0.5F, "(17 17=510 )17"},
                   {"Horn slow speed", kRight, 0, 0.5F, "(17 17=510 )17"},
                   {"Horn slow speed", kDown, kModifierShift, 0.5F, "(17 17=498 )17"},
                   {"Horn slow speed", kPageUp, 0, 0.5F, "(17 17=550 )17"},
                   {"Horn slow speed", kPageDown, 0, 0.5F, "(17 17=450 )17"},
                   {"Horn slow speed", kHome, 0, 0.5F, "(17 17=0 )17"},
                   {"Horn slow speed", kEnd, 0, 0.5F, "(17 17=1000 )17"},
                   {"Horn slow speed", kUp, 0, 1.0F, ""},
                   {"Microphone setup", kUp, 0, 0.4F, "(10 10=600 )10"},
                   {"Microphone setup", kPageDown, kModifierShift, 0.4F, "(10 10=200 )10"},
                   {"Amplifier type", kLeft, 0, 0.5F, "(12 12=0 )12"},
                   {"Room size", kUp, 0, 0.75F, "(14 14=1000 )14"},
                   {"Lever", kDown, 0, 0.5F, "(2 2=516 )2"},
                   {"Lever", kUp, 0, 0.5F, "(2 2=484 )2"},
                   {"Lever", kPageDown, 0, 0.5F, "(2 2=625 )2"},
                   {"Lever", kPageUp, 0, 0.5F, "(2 2=375 )2"},
                   {"Lever", kHome, 0, 0.5F, "(2 2=0 )2"},
                   {"Lever", kEnd, 0, 0.5F, "(2 2=1000 )2"},
                   {"Speed", kReturn, 0, 0.0F, "(3 (2 2=1000 )2 )3"},
                   {"Stop", kReturn, 0, 0.0F, "(4 4=0 4=1000 )4"},
                   {"Stop", kEnter, 0, 1.0F, "(4 4=1000 4=0 )4"},
                   {"CPU mode", kRight, 0, 0.0F, "(1 1=0 1=1000 )1"},
                   {"CPU mode", kRight, 0, 1.0F, ""},
                   {"Bypass", kHome, 0, 1.0F, "(0 0=1000 0=0 )0"},
                   {"MIDI channel", kRight, 0, 0.5F, "35=556 148=1000"},
                   {"MIDI channel", kLeft, 0, 0.5F, "35=444 148=-1000"}};
  for (const Row& row : rows) {
    SCOPED_TRACE(std::string(row.control) + ", key " + std::to_string(static_cast<int>(row.key)));
    for (int i = 0; i < 36; ++i) rig.effect.setParameter(i, row.start);
    rig.effect.setParameter(plugin::kSpeed, 0.0F);
    walkTo(row.control);
    heard();
    rig.window().takePassedOn();
    key(row.key, row.modifiers);
    EXPECT_EQ(heard(), row.heard);
    EXPECT_TRUE(rig.window().takePassedOn().empty()) << "at its end a control keeps the key";
    EXPECT_EQ(ringName(), row.control);
  }
}

TEST_F(EditorKeys, OthersAreTheHosts) {
  using enum VirtualKey;
  const auto passesOn = [this](VirtualKey which, std::uint32_t modifiers = 0) {
    rig.window().takePassedOn();
    key(which, modifiers, which == kSpace ? " " : "");
    return rig.window().takePassedOn() == std::vector{which};
  };
  rig.click(42, 75);
  heard();
  for (const VirtualKey which : {kUp, kDown, kHome, kPageUp, kReturn, kEscape, kSpace})
    EXPECT_TRUE(passesOn(which)) << "before walking, " << static_cast<int>(which);
  EXPECT_TRUE(passesOn(kTab, kModifierControl));
  EXPECT_TRUE(passesOn(kTab, kModifierAlt));
  struct Row {
    const char* control;
    VirtualKey key;
    std::uint32_t modifiers;
  };
  for (const auto& [control, which, modifiers] : {Row{"Horn slow speed", kSpace, 0},
                                                  {"Horn slow speed", kReturn, 0},
                                                  {"Horn slow speed", kUp, kModifierControl},
                                                  {"Horn slow speed", kUp, kModifierAlt},
                                                  {"Horn slow speed", kDelete, 0},
                                                  {"Lever", kSpace, 0},
                                                  {"Stop", kSpace, 0},
                                                  {"Stop", kPageUp, 0},
                                                  {"Speed", kUp, 0},
                                                  {"MIDI channel", kHome, 0},
                                                  {"MIDI channel", kReturn, 0},
                                                  {"Preset name", kSpace, 0},
                                                  {"Preset menu", kSpace, 0}}) {
    walkTo(control);
    EXPECT_TRUE(passesOn(which, modifiers)) << control << ", " << static_cast<int>(which);
  }
  EXPECT_EQ(heard(), "");
}

TEST_F(EditorKeys, RingIsShownAfterTabUntilEscapeOrAPress) {
  rig.mouse(platform::WindowEventType::kMouseLeave, 0, 0, 0);
  const auto without = [this] {
    EditorRig other;
    for (int i = 0; i < 36; ++i) other.effect.setParameter(i, rig.effect.getParameter(i));
    other.open();
    return other.picture();
  };
  rig.click(10, 140);
  key(VirtualKey::kUp);
  EXPECT_TRUE(rig.picture() == without());
  const std::function<void()> ends[]{
      [this] { key(VirtualKey::kEscape); },
      [this] { rig.click(10, 140); },
      [this] {
        rig.mouse(platform::WindowEventType::kMouseLeave, 0, 0, 0);
        platform::WindowEvent lost;
        lost.type = platform::WindowEventType::kFocusLost;
        rig.window().inject(lost);
        rig.editor->idle();
      },
  };
  for (const auto& end : ends) {
    rig.frame().takeKeyboardFocus();
    key(VirtualKey::kTab);
    EXPECT_TRUE(rig.picture() != without());
    rig.mouse(platform::WindowEventType::kMouseLeave, 0, 0, 0);
    rig.editor->idle();
    EXPECT_TRUE(rig.window().hasFocus()) << "the pointer isn't needed";
    end();
    EXPECT_TRUE(rig.picture() == without());
    rig.window().takePassedOn();
    key(VirtualKey::kPageUp);
    EXPECT_EQ(rig.window().takePassedOn(), std::vector{VirtualKey::kPageUp});
  }
}

TEST_F(EditorKeys, NameMenuAndScreensOpenAndClose) {
  walkTo("Preset name");
  key(VirtualKey::kReturn);
  key(VirtualKey::kNone, 0, "Typed");
  key(VirtualKey::kTab);
  EXPECT_EQ(rig.effect.getPresetSlot(0).nameText(), "Typed");
  EXPECT_EQ(ringName(), "Preset menu") << "Tab accepts and goes on";
  key(VirtualKey::kTab, kModifierShift);
  key(VirtualKey::kReturn);
  key(VirtualKey::kNone, 0, "not this");
  key(VirtualKey::kEscape);
  EXPECT_EQ(rig.effect.getPresetSlot(0).nameText(), "Typed");
  EXPECT_EQ(ringName(), "Preset name");

  walkTo("Preset menu");
  key(VirtualKey::kReturn);
  ASSERT_NE(rig.window().popup(), nullptr);
  key(VirtualKey::kDown);
  key(VirtualKey::kReturn);
  EXPECT_EQ(rig.window().popup(), nullptr);
  EXPECT_EQ(preset(), 1);
  key(VirtualKey::kReturn);
  key(VirtualKey::kEscape);
  EXPECT_EQ(rig.window().popup(), nullptr);
  const std::pair<VirtualKey, int> steps[]{{VirtualKey::kUp, 0},    {VirtualKey::kPageDown, 8},
                                           {VirtualKey::kDown, 9},  {VirtualKey::kEnd, 31},
                                           {VirtualKey::kDown, 31}, {VirtualKey::kHome, 0}};
  for (const auto& [which, program] : steps) {
    key(which);
    EXPECT_EQ(preset(), program);
  }
  EXPECT_EQ(ringName(), "Preset menu");
  key(VirtualKey::kTab);
  key(VirtualKey::kRight);
  EXPECT_EQ(preset(), 1);
  key(VirtualKey::kLeft);
  EXPECT_EQ(preset(), 0);

  walkTo("About");
  key(VirtualKey::kReturn);
  ASSERT_NE(rig.frame().getModalView(), nullptr);
  key(VirtualKey::kEscape);
  EXPECT_EQ(rig.frame().getModalView(), nullptr);
  EXPECT_EQ(ringName(), "About");
}

TEST_F(EditorKeys, MenuKeyOpensTheMenuOfTheControl) {
  std::string asked;
  rig.effect.onMenu = [&asked](sdk::EditorMenu& menu) {
    if (menu.event == sdk::EditorMenu::kOpening) asked += std::to_string(menu.parameter);
    return false;
  };
  const auto opens = [&](VirtualKey which, std::uint32_t modifiers) {
    key(which, modifiers);
    const bool open = rig.window().popup() != nullptr;
    if (open) key(VirtualKey::kEscape);
    EXPECT_EQ(rig.window().popup(), nullptr);
    return open ? std::exchange(asked, {}) : "none";
  };
  EXPECT_EQ(opens(VirtualKey::kMenu, 0), "-1") << "nothing has the keyboard";
  rig.click(357, 187);
  EXPECT_EQ(opens(VirtualKey::kMenu, 0), "2") << "the lever has it from a press";
  for (const auto& [control, parameter] :
       {std::pair{"Drum level", "30"}, {"Bypass", "0"}, {"About", "-1"}, {"Preset menu", "-1"}}) {
    walkTo(control);
    EXPECT_EQ(opens(VirtualKey::kMenu, 0), parameter) << control;
    EXPECT_EQ(opens(VirtualKey::kF10, kModifierShift), parameter) << control;
    EXPECT_EQ(ringName(), control);
  }
  rig.window().takePassedOn();
  EXPECT_EQ(opens(VirtualKey::kF10, 0), "none");
  EXPECT_EQ(opens(VirtualKey::kMenu, kModifierAlt), "none");
  EXPECT_EQ(rig.window().takePassedOn(), (std::vector{VirtualKey::kF10, VirtualKey::kMenu}));
  for (const char* const screen : {"Preset name", "About"}) {
    walkTo(screen);
    key(VirtualKey::kReturn);
    EXPECT_EQ(opens(VirtualKey::kMenu, 0), "none") << screen;
    key(VirtualKey::kEscape);
  }
  rig.press(42, 75);
  EXPECT_EQ(opens(VirtualKey::kMenu, 0), "none") << "in the middle of a gesture";
  rig.release(42, 75);
  walkTo("Drum level");
  heard();
  for (const auto which :
       {VirtualKey::kMenu, VirtualKey::kUp, VirtualKey::kUp, VirtualKey::kReturn})
    key(which);
  EXPECT_EQ(heard(), "802x1140");
  EXPECT_EQ(rig.window().picture().width, 802);
  EXPECT_EQ(ringName(), "Drum level");
}

TEST_F(EditorKeys, DefaultsAreStoredAndClearedFromAMenu) {
  for (const auto& [control, stored] : {std::pair{"Store default bank", "DefaultBank"},
                                        {"Store default preset", "DefaultPreset"}}) {
    const auto choose = [&, name = stored](VirtualKey entry, VirtualKey end) {
      key(VirtualKey::kReturn, entry == VirtualKey::kUp ? kModifierControl : 0U);
      EXPECT_NE(rig.window().popup(), nullptr);
      if (entry != VirtualKey::kNone) key(entry);
      key(end);
      EXPECT_EQ(rig.window().popup(), nullptr);
      return rig.settings->readBinary(name).has_value();
    };
    walkTo(control);
    EXPECT_FALSE(choose(VirtualKey::kDown, VirtualKey::kEscape)) << control;
    EXPECT_TRUE(choose(VirtualKey::kDown, VirtualKey::kReturn)) << control;
    EXPECT_TRUE(choose(VirtualKey::kUp, VirtualKey::kEscape)) << control;
    EXPECT_FALSE(choose(VirtualKey::kUp, VirtualKey::kReturn)) << control;
    EXPECT_EQ(ringName(), control);
  }
}

TEST_F(EditorKeys, HostsMayPassThemOnThemselves) {
  EXPECT_FALSE(rig.editor->onKeyDown({0, sdk::kKeyUp, 0}));
  EXPECT_TRUE(rig.editor->onKeyDown({0, sdk::kKeyTab, 0}));
  heard();
  EXPECT_TRUE(rig.editor->onKeyDown({0, sdk::kKeyUp, 0}));
  EXPECT_EQ(heard(), "(17 17=10 )17");
  EXPECT_FALSE(rig.editor->onKeyDown({0, sdk::kKeySpace, 0}));
  EXPECT_TRUE(rig.editor->onKeyDown({0, sdk::kKeyTab, sdk::kModifierShift}));
  EXPECT_EQ(ringName(), "Manual");
}

TEST_F(EditorKeys, EveryControlHasANameAndAValueInWords) {
  const std::vector<std::string> walked = walk(0);
  key(VirtualKey::kEscape);
  for (int i = 0; i < 36; ++i) rig.effect.setParameter(i, 0.5F);
  rig.effect.setParameter(plugin::kSpeed, 0.0F);
  rig.effect.modulation = 1.0F;
  const std::string text = rig.editor->description();
  std::vector<std::string> names;
  std::istringstream lines(text);
  for (std::string line; std::getline(lines, line);) {
    if (!line.starts_with("    ")) continue;
    const auto colon = line.find(": ");
    const auto bracket = line.rfind(" (");
    ASSERT_LT(colon + 2, bracket) << line;
    EXPECT_GT(line.find_first_not_of(' ', colon + 2), colon + 1) << line;
    if (line.ends_with("(indicator)")) continue;
    names.push_back(line.substr(4, colon - 4));
  }
  EXPECT_EQ(names, walked);
  for (const char* line :
       {"QLX Brezan\n  Horn\n", "  Presets\n", "    Horn slow speed: 5.00 Hz (knob)\n",
        "    Microphone setup: Front Rear (knob)\n", "    Speed: released (button)\n",
        "    Modulation wheel: lit (indicator)\n", "    Preset name: empty (text field)\n"})
    EXPECT_NE(text.find(line), std::string::npos) << line << text;

  // The same of a window that is not open, without opening one of the desktop's.
  rig.editor->close();
  EXPECT_EQ(rig.editor->description(), text);
  EXPECT_EQ(rig.windows.lastWindow(), nullptr);
}

} // namespace
} // namespace qlx::test
