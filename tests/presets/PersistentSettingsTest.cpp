// SPDX-License-Identifier: ISC
#include "presets/store/PersistentSettings.h"

#include <gtest/gtest.h>

#include "platform/Files.h"
#include "tests/support/PresetRig.h"

namespace qlx::test {
namespace {

using Builder = PresetBytesBuilder;
using Order = Builder::Order;

class PresetSettings : public testing::Test {
 protected:
  std::shared_ptr<MemorySettingsStore> store = std::make_shared<MemorySettingsStore>();
};

/// A new instance as the host gets it: factory bank makeBank(700), then the user's defaults.
struct FreshInstance {
  RigEffect effect{&PresetRig::host};
  RigEditor editor;

  explicit FreshInstance(std::shared_ptr<platform::SettingsStore> settings)
      : editor(effect, std::move(settings), nullptr) {
    effect.setPresetEditor(&editor);
    const auto factory = makeBank(700);
    for (int i = 0; i < 32; ++i) {
      effect.setPresetSlot(i, factory[static_cast<std::size_t>(i)]);
    }
    effect.capturePresetTemplate();
    effect.selectPreset(0);
  }
};

void expectBank(const FreshInstance& instance, const std::array<presets::PresetSlot, 32>& bank) {
  for (int i = 0; i < 32; ++i) {
    auto wanted = bank[static_cast<std::size_t>(i)];
    wanted.values[2] = instance.effect.getPresetSlot(i).values[2]; // the last lever is everybody's
    EXPECT_TRUE(sameBits(instance.effect.getPresetSlot(i), wanted)) << i;
  }
  EXPECT_EQ(instance.effect.getCurrentPreset(), 0);
}

TEST_F(PresetSettings, NewInstancesStartFromTheUsersDefaults) {
  auto factory = makeBank(700);
  expectBank(FreshInstance(store), factory);

  PresetRig rig(store);
  const auto unchanged = rig.state();
  rig.editor->storeDefaultBank();
  EXPECT_EQ(store->readBinary("DefaultBank"),
            Builder().bankImage(rig.effect.getPresetSlots(), 3).bytes());
  expectBank(FreshInstance(store), makeBank(1));

  rig.editor->storeDefaultPreset();
  auto both = makeBank(1);
  both[0] = both[3];
  expectBank(FreshInstance(store), both);

  rig.editor->clearDefaultBank();
  rig.editor->clearDefaultBank(); // clearing nothing is no error
  factory[0] = makeBank(1)[3];
  expectBank(FreshInstance(store), factory);

  rig.editor->clearDefaultPreset();
  expectBank(FreshInstance(store), makeBank(700));
  EXPECT_TRUE(rig.state() == unchanged);
}

TEST_F(PresetSettings, OtherMachinesAndOlderDefaultsLoad) {
  std::vector<presets::PresetSlot> legacy;
  for (const auto& slot : makeBank(400)) legacy.push_back(slot);
  for (const Order order : {Order::Little, Order::Big}) {
    store->writeBinary("DefaultBank", Builder(order).bankImage(makeBank(400), 9).bytes());
    expectBank(FreshInstance(store), makeBank(400));
    store->writeBinary("DefaultBank", Builder(order).legacyFile(0x37, legacy, 36).bytes());
    store->writeBinary("DefaultPreset",
                       Builder(order).legacyFile(0x21, {makeSlot(60)}, 36).bytes());
    auto wanted = makeBank(400);
    wanted[0] = makeSlot(60);
    expectBank(FreshInstance(store), wanted);
    store->remove("DefaultPreset");
  }
}

TEST_F(PresetSettings, MemoriesAreSharedBetweenInstances) {
  PresetRig one(store);
  PresetRig other(store);
  one.editor->storeMemoA();
  one.effect.selectPreset(8);
  one.editor->storeMemoB();
  other.effect.selectPreset(20);
  other.editor->recallMemoA();
  EXPECT_EQ(other.slot(20).nameText(), makeBank(1)[3].nameText());
  EXPECT_EQ(other.slot(20).values, makeBank(1)[3].values);
  EXPECT_TRUE(other.inStep());
  other.editor->recallMemoB();
  EXPECT_EQ(other.slot(20).nameText(), makeBank(1)[8].nameText());
  EXPECT_EQ(other.effect.getCurrentPreset(), 20);
}

TEST_F(PresetSettings, UselessMemoriesChangeNothing) {
  auto bad = makeSlot(60);
  bad.values[35] = 2.0F;
  PresetRig rig(store);
  const auto before = rig.state();
  for (const auto& value :
       {std::vector<std::uint8_t>{}, std::vector<std::uint8_t>{0x5A, 0x72, 0x62},
        Builder().u32(kFileId ^ 0x100U).u8(0x22).zeros(1356).bytes(),
        Builder().bankImage(makeBank(9), 2).bytes(), Builder().presetImage(bad).bytes()}) {
    store->writeBinary("MemoB", value);
    rig.editor->recallMemoB();
    rig.editor->recallMemoA();
    EXPECT_TRUE(rig.state() == before);
  }
}

TEST_F(PresetSettings, StoreThatCannotBeWrittenKeepsWhatItHas) {
  PresetRig rig(store);
  rig.editor->storeMemoA();
  const auto kept = store->readBinary("MemoA");
  store->setWritable(false);
  rig.effect.selectPreset(9);
  rig.editor->storeMemoA();
  rig.editor->storeDefaultBank();
  rig.editor->clearDefaultPreset();
  rig.editor->saveFileLocations();
  EXPECT_EQ(store->readBinary("MemoA"), kept);
  EXPECT_FALSE(store->readBinary("DefaultBank"));
}

TEST_F(PresetSettings, FileLocationsOutliveTheEditor) {
  {
    PresetRig rig(store);
    EXPECT_EQ(rig.editor->fileLocations().presetDirectory, "");
    store->setWritable(false);
  }
  store->setWritable(true);
  EXPECT_FALSE(store->readBinary("CurrDir")); // nothing chosen, nothing written
  {
    RigEffect effect(nullptr);
    RigEditor editor(effect, store, nullptr);
    EXPECT_EQ(editor.fileLocations().presetDirectory, platform::currentDirectory());
  }
  EXPECT_EQ(store->readText("CurrDir"), platform::currentDirectory());
  store->writeText("CurrDir", "/music/presets/");
  store->writeText("CurrBank", "b.qlb");
  store->writeText("CurrPreset", "p.qlx");
  const FreshInstance instance(store);
  EXPECT_EQ(instance.editor.fileLocations().presetDirectory, "/music/presets/");
  EXPECT_EQ(instance.editor.fileLocations().bankFileName, "b.qlb");
  EXPECT_EQ(instance.editor.fileLocations().presetFileName, "p.qlx");
}

TEST_F(PresetSettings, LongTextsAreCutBetweenCharacters) {
  struct Case {
    std::string text;
    std::size_t kept;
  };
  const std::string a(255, 'a');
  for (const Case& test : {Case{a + "b", 256}, Case{a + "bc", 256}, Case{a + "\xC3\xA9", 255},
                           Case{a.substr(1) + "\xC3\xA9z", 256},
                           Case{a.substr(2) + "\xF0\x9F\x8E\xB9", 253}, Case{"", 0}}) {
    presets::PersistentSettings settings(store);
    settings.writeLocations({test.text, "", ""});
    EXPECT_EQ(store->readText("CurrDir"), test.text.substr(0, test.kept));
  }
}

} // namespace
} // namespace qlx::test
