// SPDX-License-Identifier: ISC
#include <gtest/gtest.h>

#include "platform/Files.h"
#include "tests/support/PresetRig.h"
#include "tests/support/TemporaryFolder.h"
#include "tests/support/ThisSystem.h"

namespace qlx::test {
namespace {

using Builder = PresetBytesBuilder;
using Order = Builder::Order;
using Style = platform::FileRequest::Style;
using Command = void (*)(RigEditor&);

constexpr Command kSavePreset = [](RigEditor& editor) { editor.savePresetFile(); };
constexpr Command kSaveBank = [](RigEditor& editor) { editor.saveBankFile(); };
constexpr Command kLoadPreset = [](RigEditor& editor) { editor.loadPresetFile(false); };
constexpr Command kLoadBank = [](RigEditor& editor) { editor.loadBankFile(false); };
constexpr Command kLoadPresetReversed = [](RigEditor& editor) { editor.loadPresetFile(true); };
constexpr Command kLoadBankReversed = [](RigEditor& editor) { editor.loadBankFile(true); };

/// Runs in a current directory of its own, because the commands change it.
class PresetFiles : public testing::Test {
 protected:
  PresetFiles() { std::filesystem::current_path(folder.path()); }
  ~PresetFiles() override { std::filesystem::current_path(before); }

  void run(Command command, platform::FileSelector::Paths answer) {
    command(*rig.editor);
    rig.selector->answer(std::move(answer));
    rig.editor->idle();
  }
  void load(Command command, const Builder& bytes) {
    writeBytes(folder / "given", bytes.bytes());
    run(command, {(folder / "given").string()});
  }

  std::filesystem::path before = std::filesystem::current_path();
  TemporaryFolder folder;
  PresetRig rig;
};

TEST_F(PresetFiles, DialogsAskForTheRightThing) {
  struct Case {
    Command command;
    Style style;
    const char* title;
    const char* proposed;
    const char* description;
    const char* extension;
  };
  run(kSavePreset, {(folder / "mine.qlx").string()});
  run(kSaveBank, {(folder / "all.qlb").string()});
  for (const Case& test : {
           Case{kSavePreset, Style::Save, "Save preset", "mine.qlx", "QLX Preset", "qlx"},
           Case{kSaveBank, Style::Save, "Save bank", "all.qlb", "QLX Bank", "qlb"},
           Case{kLoadPreset, Style::Open, "Load preset", "", "QLX Preset", "qlx"},
           Case{kLoadBank, Style::Open, "Load bank", "", "QLX Bank", "qlb"},
           Case{kLoadPresetReversed, Style::Open, "Load preset (endian-reversed)", "", "QLX Preset",
                "qlx"},
           Case{kLoadBankReversed, Style::Open, "Load bank (endian-reversed)", "", "QLX Bank",
                "qlb"},
       }) {
    test.command(*rig.editor);
    const auto request = rig.selector->request();
    ASSERT_TRUE(request);
    EXPECT_EQ(request->style, test.style);
    EXPECT_EQ(request->title, test.title);
    EXPECT_EQ(request->directory, (folder.path() / "").string());
    EXPECT_EQ(request->fileName, test.proposed);
    ASSERT_EQ(request->types.size(), 1U);
    EXPECT_EQ(request->types[0].description, test.description);
    EXPECT_EQ(request->types[0].extension, test.extension);
    EXPECT_EQ(request->ownerWindow, 77U);
    // No second dialog while one is open.
    kSavePreset(*rig.editor);
    EXPECT_EQ(rig.selector->request()->title, test.title);
    rig.selector->answer({});
    rig.editor->idle();
    EXPECT_FALSE(rig.selector->request());
  }
}

TEST_F(PresetFiles, SavedFilesAreTheImages) {
  run(kSavePreset, {(folder / "a.qlx").string()});
  EXPECT_EQ(readBytes(folder / "a.qlx"), Builder().presetImage(rig.slot(3)).bytes());
  run(kSaveBank, {(folder / "b.qlb").string()});
  EXPECT_EQ(readBytes(folder / "b.qlb"),
            Builder().bankImage(rig.effect.getPresetSlots(), 3).bytes());
  EXPECT_EQ(folder.entries(), 2U);
}

TEST_F(PresetFiles, FilesAboveSixteenMebibytesAreIgnored) {
  const std::string file = (folder / "large.qlx").string();
  writeBytes(file, Builder().presetImage(makeSlot(60)).bytes());
  const auto kept = rig.state();
  for (const bool ignored : {true, false}) {
    std::filesystem::resize_file(file, (std::size_t{16} << 20) + (ignored ? 1 : 0));
    run(kLoadPreset, {file});
    EXPECT_EQ(rig.state() == kept, ignored);
  }
}

TEST_F(PresetFiles, ChosenPathsAreTakenApart) {
  struct Case {
    std::string path, directory, name;
  };
  std::filesystem::create_directory(folder / "sub");
  std::filesystem::create_directory(folder / "v1.5");
  const std::string root = (folder.path() / "").string();
  const std::string sub = (folder / "sub" / "").string();
  const std::string dotted = (folder / "v1.5" / "").string();
  // The current directory follows each choice; in the end it is root/sub.
  for (const Case& test :
       {Case{root + "sub/a.qlx", sub, "a.qlx"}, Case{"b", sub, "b.qlx"},
        Case{root + "v1.5/c", dotted, "c.qlx"}, Case{root + ".hidden", root, ".hidden.qlx"},
        Case{"sub/old.bak", sub, "old.bak.qlx"}}) {
    run(kSavePreset, {test.path});
    EXPECT_EQ(rig.editor->fileLocations().presetDirectory, test.directory) << test.path;
    EXPECT_EQ(rig.editor->fileLocations().presetFileName, test.name) << test.path;
    EXPECT_EQ(readBytes(test.directory + test.name).size(), 1361U) << test.path;
    EXPECT_EQ(platform::currentDirectory(), test.directory) << test.path;
  }
}

TEST_F(PresetFiles, WithoutOneChosenPathNothingHappens) {
  const auto wanted = rig.state();
  const auto locations = rig.editor->fileLocations();
  for (const Command command : {kSavePreset, kSaveBank, kLoadPreset, kLoadBank}) {
    writeBytes(folder / "x", Builder().presetImage(makeSlot(60)).bytes());
    run(command, {});
    run(command, {(folder / "x").string(), (folder / "y").string()});
    run(command, {""});
  }
  EXPECT_TRUE(rig.state() == wanted);
  EXPECT_EQ(rig.editor->fileLocations().presetDirectory, locations.presetDirectory);
  EXPECT_EQ(folder.entries(), 1U);
  EXPECT_EQ(rig.panel.redraws, 0);
}

TEST_F(PresetFiles, FilesOfBothOrdersLoadAndForcingTurnsTheReading) {
  for (const Order order : {Order::Little, Order::Big}) {
    load(kLoadPreset, Builder(order).presetImage(makeSlot(60)));
    EXPECT_TRUE(sameBits(rig.slot(3), makeSlot(60)));
    load(kLoadBank, Builder(order).bankImage(makeBank(400), 7));
    EXPECT_EQ(rig.effect.getCurrentPreset(), 0);
    EXPECT_EQ(rig.slot(31).values[9], makeBank(400)[31].values[9]);
    EXPECT_TRUE(rig.inStep());
    rig.fill(makeBank(1), 3);

    // An identifier of one order in front of a file of the other.
    auto bytes = Builder(order).presetImage(makeSlot(61)).bytes();
    std::reverse(bytes.begin(), bytes.begin() + 4);
    writeBytes(folder / "turned", bytes);
    run(kLoadPresetReversed, {(folder / "turned").string()});
    EXPECT_TRUE(sameBits(rig.slot(3), makeSlot(61)));
    run(kLoadPreset, {(folder / "turned").string()});
    auto wanted = makeSlot(900); // no record can be read: what is left is the template
    wanted.values[2] = rig.effect.getParameter(2);
    EXPECT_TRUE(sameBits(rig.slot(3), wanted));
  }
  EXPECT_EQ(rig.panel.redraws, 8);
}

TEST_F(PresetFiles, UnreadableFilesChangeNothingButWhereTheyWere) {
  const auto wanted = rig.state();
  load(kLoadPreset, Builder().zeros(4));
  load(kLoadBank, Builder().zeros(4));
  load(kLoadPreset, Builder().u32(kFileId).u8(0x39).zeros(100));
  load(kLoadBank, Builder().u32(kFileId ^ 1U).u8(0x38).zeros(100));
  run(kLoadPreset, {(folder / "missing").string()});
  run(kLoadBank, {(folder / "missing").string()});
  run(kLoadBank, {folder.path().string()});
  run(kLoadBank, {device().string()});
  EXPECT_TRUE(rig.state() == wanted);
  const auto& locations = rig.editor->fileLocations();
  EXPECT_EQ(locations.presetDirectory + locations.bankFileName, device().string());
}

TEST_F(PresetFiles, BankLoaderEndsOnTheFirstPresetWhateverTheKind) {
  load(kLoadBank, Builder().u32(kFileId).u8(0x39).zeros(100));
  EXPECT_EQ(rig.effect.getCurrentPreset(), 0);
  EXPECT_TRUE(rig.inStep());
}

TEST_F(PresetFiles, ClosedWindowTakesItsDialogAlong) {
  kLoadPreset(*rig.editor);
  rig.editor->close();
  EXPECT_FALSE(rig.selector->request());
  writeBytes(folder / "late", Builder().presetImage(makeSlot(60)).bytes());
  rig.selector->answer({(folder / "late").string()});
  rig.editor->idle();
  EXPECT_TRUE(sameBits(rig.slot(3), makeBank(1)[3]));
  kSavePreset(*rig.editor);
  EXPECT_FALSE(rig.selector->request());

  rig.editor->setPanel(&rig.panel);
  kLoadPreset(*rig.editor);
  rig.editor.reset(); // the effect goes away with a dialog open
}

} // namespace
} // namespace qlx::test
