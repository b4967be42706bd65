// SPDX-License-Identifier: ISC
#include "gui/controls/COptionMenu.h"
#include "gui/controls/CTextEdit.h"
#include "gui/dialogs/CMenuList.h"
#include "gui/dialogs/CMessageBox.h"
#include "presets/store/PersistentSettings.h"
#include "tests/support/EditorRig.h"
#include "tests/support/TemporaryFolder.h"
#include "tests/support/ThisSystem.h"

#include <gtest/gtest.h>

namespace qlx::test {
namespace {

using platform::VirtualKey;
using platform::WindowEventType;
using Outcome = platform::DocumentOpener::Outcome;

/// The whole window with presets "Preset 0" to "Preset 31", in which Mech (5) is the number / 32.
class PanelTest : public testing::Test {
 protected:
  PanelTest() {
    for (int i = 0; i < 32; ++i) {
      presets::PresetSlot slot;
      slot.setNameText("Preset " + std::to_string(i));
      slot.values[5] = static_cast<float>(i) / 32.0F;
      rig.effect.setPresetSlot(i, slot);
    }
    select(0);
  }

  void select(int preset) {
    rig.editor->close();
    rig.effect.selectPreset(preset);
    rig.open();
    rig.editor->idle();
    rig.effect.log.clear();
  }

  gui::CControl& control(int tag) const {
    for (const auto& view : rig.frame().getViews()) {
      auto* found = dynamic_cast<gui::CControl*>(view.get());
      if (found != nullptr && found->getTag() == tag) return *found;
    }
    throw std::out_of_range("no such control");
  }
  gui::COptionMenu& menu() const { return dynamic_cast<gui::COptionMenu&>(control(161)); }
  const std::string& nameField() const {
    return dynamic_cast<gui::CTextLabel&>(control(149)).getText();
  }
  std::string storedName() const {
    return std::string(rig.effect.getPresetSlot(rig.effect.getCurrentPreset()).nameText());
  }
  std::string titleOfCurrentEntry() const { return menu().getEntry(menu().getCurrentIndex()); }

  void doubleClick(int x, int y, std::uint32_t modifiers = 0) {
    rig.click(x, y);
    rig.mouse(WindowEventType::kMouseDown, x, y, platform::kPointerLeft, modifiers, true);
    rig.release(x, y);
    rig.editor->idle();
  }
  void type(const std::string& text) {
    for (const char c : text) rig.key(VirtualKey::kNone, std::string(1, c));
    rig.editor->idle();
  }
  void press(VirtualKey key) {
    rig.key(key);
    rig.editor->idle();
  }

  EditorRig rig;
};

TEST_F(PanelTest, LiesOnTopOfTheRestAndShowsTheCurrentPreset) {
  select(7);
  EXPECT_EQ(nameField(), "Preset 7");
  EXPECT_EQ(menu().getNbEntries(), 32);
  EXPECT_EQ(menu().getCurrentIndex(), 7);
  EXPECT_EQ(menu().getEntry(31), "Preset 31");
  EXPECT_EQ(menu().getNbItemsPerColumn(), 8);
  std::vector<int> tags; // menus without a place of their own apart
  for (const auto& view : rig.frame().getViews())
    if (!view->isTypeOf("ContextMenu"))
      tags.push_back(dynamic_cast<gui::CControl&>(*view).getTag());
  for (std::size_t i = 0; i < tags.size(); ++i)
    EXPECT_EQ(tags[i] >= 149, i >= tags.size() - 14) << tags[i];
}

TEST_F(PanelTest, ControlsReactInsideTheirRectanglesOnly) {
  struct Point {
    int x;
    int y;
    int tag;
  };
  const Point points[] = {{4, 554, 152},   {15, 567, 152},  {16, 556, 162},  {52, 565, 162},
                          {54, 554, 151},  {65, 567, 151},  {69, 554, 154},  {81, 556, 163},
                          {127, 565, 163}, {128, 554, 153}, {139, 567, 153}, {146, 560, 149},
                          {261, 567, 149}, {263, 554, 161}, {278, 554, 150}, {308, 567, 150},
                          {311, 560, 164}, {333, 560, 166}, {349, 560, 165}, {371, 554, 167},
                          {382, 567, 167}, {384, 554, 168}, {399, 567, 168}, {370, 560, -1},
                          {383, 560, -1},  {346, 560, -1},  {20, 555, -1},   {142, 560, -1}};
  for (const Point& point : points) {
    const auto* hit = dynamic_cast<gui::CControl*>(
        rig.frame().getViewAt({static_cast<double>(point.x), static_cast<double>(point.y)}));
    EXPECT_EQ(hit == nullptr ? -1 : hit->getTag(), point.tag) << point.x << ", " << point.y;
  }
}

TEST_F(PanelTest, RockerStepsAndStopsAtTheEnds) {
  struct Step {
    int from;
    int x;
    int to;
  };
  const Step steps[] = {{0, 281, 0}, {0, 305, 1}, {5, 281, 4}, {30, 305, 31}, {31, 305, 31}};
  for (const Step& step : steps) {
    select(step.from);
    rig.effect.setParameter(5, 0.9F); // a change that belongs to the preset left
    rig.effect.setPresetSlot(step.to, [&] {
      auto slot = rig.effect.getPresetSlot(step.to);
      slot.values[5] = 0.125F;
      return slot;
    }());
    rig.click(step.x, 561);
    EXPECT_EQ(rig.effect.getCurrentPreset(), step.to);
    EXPECT_EQ(rig.effect.getParameter(5), 0.125F);
    EXPECT_EQ(nameField(), "Preset " + std::to_string(step.to));
    EXPECT_EQ(menu().getCurrentIndex(), step.to);
    EXPECT_EQ(storedName(), nameField());
  }
}

TEST_F(PanelTest, MenuChoosesAPreset) {
  rig.click(268, 561);
  ASSERT_TRUE(menu().isPopupOpen());
  const gui::CPoint entry = menu().getList()->getEntryRect(19).centre();
  for (const auto event : {WindowEventType::kMouseDown, WindowEventType::kMouseUp}) {
    platform::WindowEvent click;
    click.type = event;
    click.x = static_cast<int>(entry.x);
    click.y = static_cast<int>(entry.y);
    click.button = click.buttons = platform::kPointerLeft;
    rig.window().popup()->inject(click);
  }
  rig.editor->idle();
  EXPECT_FALSE(menu().isPopupOpen());
  EXPECT_EQ(rig.effect.getCurrentPreset(), 19);
  EXPECT_EQ(nameField(), "Preset 19");
  EXPECT_EQ(storedName(), "Preset 19");
  EXPECT_NEAR(rig.effect.getParameter(5), 19.0F / 32.0F, 1e-6F);
  EXPECT_EQ(menu().getCurrentIndex(), 19);
}

TEST_F(PanelTest, NamesAreCutAsTheyGoDown) {
  rig.click(200, 561);
  type("abcdefghijklmnopqrstuvwxyz0123"); // over the old name, which is selected
  EXPECT_EQ(nameField(), "abcdefghijklmnopqrstuvwxyz012");
  EXPECT_EQ(storedName(), "Preset 0");
  press(VirtualKey::kReturn);
  EXPECT_EQ(nameField(), "abcdefghijklmnopqrstuvwx");
  EXPECT_EQ(titleOfCurrentEntry(), "abcdefghijklmnopqrstuvwx");
  EXPECT_EQ(storedName(), "abcdefghijklmnopqrstuvw");
  EXPECT_FALSE(rig.window().hasFocus());
}

TEST_F(PanelTest, NamesAreNotCutInsideACharacter) {
  rig.click(200, 561);
  type("abcdefghijklmnopqrstu");
  rig.key(VirtualKey::kNone, "é");
  rig.key(VirtualKey::kNone, "é");
  press(VirtualKey::kTab);
  EXPECT_EQ(nameField(), "abcdefghijklmnopqrstué");
  EXPECT_EQ(storedName(), "abcdefghijklmnopqrstué");
}

TEST_F(PanelTest, NamingCanBeAbandonedAndEndsWithTheFocus) {
  rig.click(200, 561);
  type("gone");
  press(VirtualKey::kEscape);
  EXPECT_EQ(nameField(), "Preset 0");
  EXPECT_EQ(storedName(), "Preset 0");
  EXPECT_EQ(rig.effect.log, "");

  rig.click(200, 561);
  type("kept");
  rig.mouse(WindowEventType::kFocusLost, 0, 0);
  rig.editor->idle();
  EXPECT_EQ(storedName(), "kept");
  EXPECT_EQ(titleOfCurrentEntry(), "kept");
}

TEST_F(PanelTest, ClosingTheWindowAcceptsTheNameBeingTyped) {
  for (const bool closedTwice : {false, true}) {
    const std::string name = closedTwice ? "twice" : "once";
    rig.click(200, 561);
    type(name);
    if (closedTwice) rig.effect.onAutomate = [&] { rig.editor->close(); };
    rig.editor->close();
    EXPECT_EQ(storedName(), name);
    rig.effect.onAutomate = [] {};
    rig.open();
    EXPECT_EQ(nameField(), name);
  }
}

TEST_F(PanelTest, NamesFromTheStoreWhileOneIsTypedAreWhatEscapeBringsBack) {
  const auto* const field = dynamic_cast<gui::CTextEdit*>(&control(149));
  rig.click(200, 561);
  rig.editor->showPresetName("before typing");
  EXPECT_EQ(nameField(), "before typing");
  type("x");
  EXPECT_EQ(nameField(), "x") << "the new name was selected";
  rig.editor->showPresetName("while typing");
  type("y");
  EXPECT_EQ(nameField(), "xy");
  EXPECT_TRUE(field->isEditingText());
  press(VirtualKey::kEscape);
  EXPECT_EQ(nameField(), "while typing");
}

TEST_F(PanelTest, FileButtonsOpenTheirDialogs) {
  struct Row {
    int x;
    std::uint32_t button;
    const char* title;
  };
  const Row rows[] = {{60, platform::kPointerLeft, "Load bank"},
                      {60, platform::kPointerRight, "Load bank (endian-reversed)"},
                      {10, platform::kPointerLeft, "Save bank"},
                      {10, platform::kPointerRight, "Save bank"},
                      {134, platform::kPointerLeft, "Load preset"},
                      {134, platform::kPointerRight, "Load preset (endian-reversed)"},
                      {75, platform::kPointerRight, "Save preset"}};
  for (const Row& row : rows) {
    rig.mouse(WindowEventType::kMouseDown, row.x, 561, row.button);
    rig.mouse(WindowEventType::kMouseUp, row.x, 561, row.button);
    rig.editor->idle();
    ASSERT_TRUE(rig.selector->request()) << row.title;
    EXPECT_EQ(rig.selector->request()->title, row.title);
    EXPECT_EQ(rig.selector->request()->ownerWindow, rig.window().handle());
    rig.selector->answer({});
    rig.editor->idle();
    EXPECT_FALSE(rig.selector->request());
  }
  rig.click(60, 561);
  rig.editor->close();
  EXPECT_FALSE(rig.selector->request());
}

TEST_F(PanelTest, DefaultsAreStoredByDoubleClickAndClearedWithControl) {
  const std::pair<int, const char*> rows[] = {{34, "DefaultBank"}, {104, "DefaultPreset"}};
  for (const auto& [x, value] : rows) {
    rig.click(x, 561);
    EXPECT_FALSE(rig.settings->readBinary(value)) << value;
    doubleClick(x, 561);
    EXPECT_TRUE(rig.settings->readBinary(value)) << value;
    doubleClick(x, 561, platform::kModifierShift);
    EXPECT_TRUE(rig.settings->readBinary(value)) << value;
    doubleClick(x, 561, platform::kModifierControl);
    EXPECT_FALSE(rig.settings->readBinary(value)) << value;
  }
}

TEST_F(PanelTest, MemoriesKeepAPresetEach) {
  select(3);
  rig.click(317, 561); // store A
  select(9);
  rig.click(355, 561); // store B
  select(20);
  rig.click(339, 561); // recall A
  EXPECT_EQ(rig.effect.getCurrentPreset(), 20);
  EXPECT_EQ(nameField(), "Preset 3");
  EXPECT_EQ(titleOfCurrentEntry(), "Preset 3");
  EXPECT_NEAR(rig.effect.getParameter(5), 3.0F / 32.0F, 1e-6F);
  rig.click(377, 561); // recall B
  EXPECT_EQ(nameField(), "Preset 9");
  EXPECT_NEAR(rig.effect.getParameter(5), 9.0F / 32.0F, 1e-6F);
}

TEST_F(PanelTest, EveryTagReachesTheHostToo) {
  rig.click(317, 561);
  EXPECT_EQ(rig.effect.log, "164=1000");
}

TEST_F(PanelTest, ManualIsOpenedOrItsFailureTold) {
  struct Row {
    const char* path;
    std::optional<Outcome> outcome;
    const char* title;
    const char* text; ///< null for no message
  };
  const Row rows[] = {{"", std::nullopt, "", "Could not open user manual"},
                      {"/m/manual.pdf", Outcome::Opened, "", nullptr},
                      {"/m/manual.pdf", Outcome::Failed, "", "Could not open user manual"},
                      {"/m/manual.pdf", Outcome::NoProgram, "Could not open manual file",
                       "Make sure Acrobat Reader is installed"}};
  const TemporaryFolder data; // without an installed manual
  keepDocumentsIn(data.path());
  for (const Row& row : rows) {
    rig.settings->writeText("ManualPath", row.path);
    rig.click(392, 561);
    if (row.outcome) {
      ASSERT_EQ(rig.opener->path(), row.path);
      rig.click(392, 561); // once more while it is being opened
      EXPECT_EQ(rig.frame().getModalView(), nullptr);
      rig.opener->answer(*row.outcome);
      rig.editor->idle();
    }
    auto* box = dynamic_cast<gui::CMessageBox*>(rig.frame().getModalView());
    ASSERT_EQ(box != nullptr, row.text != nullptr) << row.path;
    if (box == nullptr) continue;
    std::string text;
    for (const std::string& line : box->getLines()) text += (text.empty() ? "" : " ") + line;
    EXPECT_EQ(text, row.text);
    EXPECT_EQ(box->getTitle(), row.title);
    press(VirtualKey::kReturn);
    EXPECT_EQ(rig.frame().getModalView(), nullptr);
  }
}

#ifndef _WIN32 // where it lies beside the program
TEST_F(PanelTest, InstalledManualIsOpenedWhereNoneIsSet) {
  const TemporaryFolder data;
  const auto folder = data / "doc/qlx-brezan";
  std::filesystem::create_directories(folder);
  std::ofstream(folder / "manual.pdf") << "paper";
  setenv("XDG_DATA_HOME", "relative", 1);
  setenv("XDG_DATA_DIRS", ("/nowhere:" + data.path().string()).c_str(), 1);
  rig.click(392, 561);
  EXPECT_EQ(rig.opener->path(), folder / "manual.pdf");
  rig.opener->answer(Outcome::Opened);
}
#endif

TEST_F(PanelTest, ManualThatFailsAfterTheWindowHasGoneIsNotTold) {
  rig.settings->writeText("ManualPath", "/m/manual.pdf");
  rig.click(392, 561);
  rig.editor->close();
  rig.open();
  rig.opener->answer(Outcome::Failed);
  rig.editor->idle();
  EXPECT_EQ(rig.frame().getModalView(), nullptr);
}

TEST_F(PanelTest, FollowsThePresetsThatComeFromTheHost) {
  rig.editor->showPresetName("a name that is longer than a slot");
  EXPECT_EQ(nameField(), "a name that is longer than a slot");
  EXPECT_EQ(titleOfCurrentEntry(), "a name that is longer th");
  EXPECT_EQ(storedName(), "Preset 0");
  rig.editor->close();
  rig.editor->showPresetName("nobody sees it");
  rig.open();
  EXPECT_EQ(nameField(), "Preset 0");
}

} // namespace
} // namespace qlx::test
