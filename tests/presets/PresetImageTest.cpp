// SPDX-License-Identifier: ISC
#include "presets/format/PresetImage.h"

#include <functional>
#include <limits>

#include <gtest/gtest.h>

#include "tests/support/PresetRig.h"

namespace qlx::test {
namespace {

using presets::Scope;
using Builder = PresetBytesBuilder;
using Order = Builder::Order;

constexpr float kNan = std::numeric_limits<float>::quiet_NaN();
constexpr float kInfinity = std::numeric_limits<float>::infinity();

TEST(PresetImage, WritersGiveTheLayoutByteForByte) {
  PresetRig rig;
  const auto preset = rig.editor->writePresetImage();
  EXPECT_EQ(preset.size(), 1361U);
  EXPECT_EQ(preset, Builder().presetImage(rig.slot(3)).bytes());
  const auto bank = rig.editor->writeBankImage();
  EXPECT_EQ(bank.size(), 42281U);
  EXPECT_EQ(bank, Builder().bankImage(rig.effect.getPresetSlots(), 3).bytes());
}

TEST(PresetImage, BankWriterRepairsAndReportsWhatPresetWriterWritesAsItStands) {
  PresetRig rig;
  auto wanted = rig.effect.getPresetSlots();
  auto broken = wanted[3];
  broken.values[5] = -0.25F;
  broken.values[6] = kNan;
  broken.values[7] = 3.4e38F;
  rig.effect.setPresetSlot(3, broken);
  EXPECT_EQ(rig.editor->writePresetImage(), Builder().presetImage(broken).bytes());

  wanted[3].values[5] = 0.0F;
  wanted[3].values[6] = 0.0F;
  wanted[3].values[7] = 1.0F;
  testing::internal::CaptureStderr();
  EXPECT_EQ(rig.editor->writeBankImage(), Builder().bankImage(wanted, 3).bytes());
  EXPECT_EQ(testing::internal::GetCapturedStderr(),
            "Invalid parameter 5 value -0.250000 on save of preset 3 EFG\n"
            "Invalid parameter 6 value nan on save of preset 3 EFG\n"
            "Invalid parameter 7 value 339999995214436424907732413799364296704.000000 on save of "
            "preset 3 EFG\n");
  EXPECT_TRUE(sameBits(rig.slot(3), broken));
}

TEST(PresetImage, BothOrdersRestoreEveryBit) {
  for (const Order order : {Order::Little, Order::Big}) {
    PresetRig rig;
    auto bank = makeBank(500);
    // The lever is one for all presets: whichever is applied last decides.
    for (auto& slot : bank) slot.values[2] = 0.5F;
    EXPECT_TRUE(rig.editor->loadPresetData(Builder(order).bankImage(bank, 7).bytes(), Scope::Bank));
    for (int i = 0; i < 32; ++i) {
      EXPECT_TRUE(sameBits(rig.slot(i), bank[static_cast<std::size_t>(i)])) << i;
    }
    EXPECT_EQ(rig.effect.getCurrentPreset(), 7);
    EXPECT_TRUE(rig.inStep());

    EXPECT_TRUE(rig.editor->loadPresetData(Builder(order).presetImage(makeSlot(77)).bytes(),
                                           Scope::Preset));
    EXPECT_TRUE(sameBits(rig.slot(7), makeSlot(77)));
    EXPECT_TRUE(rig.inStep());
  }
}

TEST(PresetImage, FullNameIsKeptInBanksAndCutInPresets) {
  PresetRig rig;
  auto bank = makeBank(1);
  bank[4] = makeSlot(4, 24);
  rig.editor->loadPresetData(Builder().bankImage(bank, 4).bytes(), Scope::Bank);
  EXPECT_EQ(rig.slot(4).nameText().size(), 24U);
  EXPECT_EQ(rig.panel.titles[4].size(), 24U);
  rig.editor->loadPresetData(Builder().presetImage(makeSlot(9, 24)).bytes(), Scope::Preset);
  EXPECT_EQ(rig.slot(4).nameText(), std::string_view(makeSlot(9, 24).nameText()).substr(0, 23));
  EXPECT_EQ(rig.panel.nameField.size(), 24U);
}

/// What becomes of slot 5, parameter 8 (and others) with unusual records.
struct RecordCase {
  const char* title;
  int count; ///< the header's record count
  std::function<void(Builder&)> records;
  std::function<void(std::array<presets::PresetSlot, 32>&)> change; ///< of the slots as they were
  const char* diagnostics = "";
};

void becomesTemplate(presets::PresetSlot& slot, int nameSeed) {
  slot.values = makeSlot(900).values;
  slot.name = makeSlot(nameSeed).name;
}

const std::vector<RecordCase>& recordCases() {
  using Slots = std::array<presets::PresetSlot, 32>;
  static const std::vector<RecordCase> cases{
      {"a value alone", 1, [](Builder& b) { b.valueRecord(5, 8, 0.125F); },
       [](Slots& s) { s[5].values[8] = 0.125F; }},
      {"above 1", 1, [](Builder& b) { b.valueRecord(5, 8, 1.5F); },
       [](Slots& s) { s[5].values[8] = 1.0F; },
       "Invalid parameter 8 value 1.500000 on load of preset 5 GHIJK\n"},
      {"infinite", 1, [](Builder& b) { b.valueRecord(5, 8, kInfinity); },
       [](Slots& s) { s[5].values[8] = 1.0F; },
       "Invalid parameter 8 value inf on load of preset 5 GHIJK\n"},
      {"below 0, after a name", 2,
       [](Builder& b) { b.nameRecord(5, makeSlot(60).name).valueRecord(5, 8, -1.0F); },
       [](Slots& s) {
         becomesTemplate(s[5], 60);
         s[5].values[8] = 0.0F;
       },
       "Invalid parameter 8 value -1.000000 on load of preset 5 IJKLMNOPQ\n"},
      {"not a number", 1, [](Builder& b) { b.valueRecord(5, 8, kNan); },
       [](Slots& s) { s[5].values[8] = 0.0F; },
       "Invalid parameter 8 value nan on load of preset 5 GHIJK\n"},
      {"unknown type is skipped", 3,
       [](Builder& b) {
         b.valueRecord(5, 8, 0.25F).u32(7).u32(40).u32(5).zeros(40).valueRecord(5, 9, 0.5F);
       },
       [](Slots& s) {
         s[5].values[8] = 0.25F;
         s[5].values[9] = 0.5F;
       }},
      {"longer body is skipped over", 2,
       [](Builder& b) {
         b.u32(1).u32(24).u32(5).u32(8).zeros(8).f32(0.25F).zeros(8).valueRecord(5, 9, 0.5F);
       },
       [](Slots& s) {
         s[5].values[8] = 0.25F;
         s[5].values[9] = 0.5F;
       }},
      {"foreign slots and parameters", 6,
       [](Builder& b) {
         b.valueRecord(32, 8, 0.25F).valueRecord(-1, 8, 0.25F).nameRecord(99, makeSlot(60).name);
         b.valueRecord(5, 36, 0.25F).valueRecord(5, -1, 0.25F).valueRecord(5, 9, 0.5F);
       },
       [](Slots& s) { s[5].values[9] = 0.5F; }},
      {"value of a foreign parameter is reported too", 1,
       [](Builder& b) { b.valueRecord(5, 40, 2.0F); }, [](Slots&) {},
       "Invalid parameter 40 value 2.000000 on load of preset 5 GHIJK\n"},
      {"a name starts from the template", 3,
       [](Builder& b) {
         b.valueRecord(5, 8, 0.25F).nameRecord(5, makeSlot(60).name).valueRecord(5, 9, 0.5F);
       },
       [](Slots& s) {
         becomesTemplate(s[5], 60);
         s[5].values[9] = 0.5F;
       }},
      {"fewer records counted than there are", 1,
       [](Builder& b) { b.valueRecord(5, 8, 0.25F).valueRecord(5, 9, 0.5F); },
       [](Slots& s) { s[5].values[8] = 0.25F; }},
      {"more records counted than there are", 2000000000,
       [](Builder& b) { b.valueRecord(5, 8, 0.25F); }, [](Slots& s) { s[5].values[8] = 0.25F; }},
      {"too short a body ends the image", 3,
       [](Builder& b) {
         b.valueRecord(5, 8, 0.25F).u32(1).u32(19).u32(5).zeros(19).valueRecord(5, 9, 0.5F);
       },
       [](Slots& s) { s[5].values[8] = 0.25F; }},
      {"too short a name ends the image", 3,
       [](Builder& b) {
         b.valueRecord(5, 8, 0.25F).u32(0).u32(24).u32(5).zeros(24).valueRecord(5, 9, 0.5F);
       },
       [](Slots& s) { s[5].values[8] = 0.25F; }},
      {"a length past the end ends the image", 3,
       [](Builder& b) {
         b.valueRecord(5, 8, 0.25F).u32(7).u32(0xFFFFFFFF).u32(5).valueRecord(5, 9, 0.5F);
       },
       [](Slots& s) { s[5].values[8] = 0.25F; }},
      {"no records", 0, [](Builder&) {}, [](Slots&) {}},
  };
  return cases;
}

TEST(PresetImage, BankReaderTakesUnusualRecordsInBothOrders) {
  for (const Order order : {Order::Little, Order::Big}) {
    for (const RecordCase& test : recordCases()) {
      SCOPED_TRACE(test.title);
      PresetRig rig;
      auto wanted = rig.effect.getPresetSlots();
      test.change(wanted);
      Builder records(order);
      test.records(records);
      testing::internal::CaptureStderr();
      rig.editor->loadPresetData(Builder(order).image(0x38, test.count, 40, records).bytes(),
                                 Scope::Bank);
      EXPECT_EQ(testing::internal::GetCapturedStderr(), test.diagnostics);
      for (auto& slot : wanted) slot.values[2] = rig.effect.getParameter(2); // one for all
      EXPECT_TRUE(rig.effect.getPresetSlots() == wanted);
      EXPECT_EQ(rig.effect.getCurrentPreset(), 0);
      EXPECT_TRUE(rig.inStep());
    }
  }
}

TEST(PresetImage, PresetReaderIgnoresSlotNumbersAndStartsFromTheTemplate) {
  PresetRig rig;
  Builder records;
  records.valueRecord(-9, 8, 0.25F).nameRecord(17, makeSlot(60).name).valueRecord(40, 36, 9.0F);
  rig.editor->loadPresetData(Builder().image(0x22, 3, 31, records).bytes(), Scope::Preset);
  auto wanted = makeSlot(900);
  wanted.name = makeSlot(60).name;
  wanted.values[8] = 0.25F;
  EXPECT_TRUE(sameBits(rig.slot(3), wanted));
  EXPECT_EQ(rig.effect.getCurrentPreset(), 3);
  EXPECT_TRUE(rig.inStep());
}

TEST(PresetImage, RecordsBehindTheAnnouncedLengthCountInChunksOnly) {
  // The header announces the first record's bytes and counts two records.
  Builder image = Builder().image(0x38, 2, 0, Builder().valueRecord(5, 8, 0.25F));
  image.valueRecord(5, 9, 0.5F);
  PresetRig rig;
  rig.editor->loadPresetData(image.bytes(), Scope::Bank);
  EXPECT_EQ(rig.slot(5).values[8], 0.25F);
  EXPECT_EQ(rig.slot(5).values[9], makeBank(1)[5].values[9]);
  rig.setChunk(Builder().chunk(image).bytes());
  EXPECT_EQ(rig.slot(5).values[9], 0.5F);
}

TEST(PresetImage, RefusedDataChangesNothing) {
  const auto with = [](float value) {
    auto slot = makeSlot(60);
    slot.values[20] = value;
    return slot;
  };
  std::vector<std::pair<Scope, std::vector<std::uint8_t>>> cases{
      {Scope::Preset, Builder().image(0x22, -1, 0, Builder().valueRecord(0, 1, 0.5F)).bytes()},
      {Scope::Bank, Builder().image(0x38, -1, 9, Builder().valueRecord(0, 1, 0.5F)).bytes()},
      {Scope::Preset, Builder().bankImage(makeBank(2), 0).bytes()},
      {Scope::Bank, Builder().presetImage(makeSlot(60)).bytes()},
      {Scope::Preset, Builder().legacyFile(0x21, {makeSlot(60)}, 0).bytes()},
      {Scope::Preset, Builder().u32(kFileId).u8(0x21).zeros(23).bytes()},
      {Scope::Bank, Builder().u32(kFileId).u8(0x37).zeros(32 * 27).bytes()},
      {Scope::Preset, Builder().u32(kFileId).u8(0x22).zeros(35).bytes()},
      {Scope::Preset, Builder().u32(kFileId).bytes()},
      {Scope::Preset, Builder().u32(kFileId + 1).u8(0x22).zeros(36).bytes()},
      {Scope::Preset, {}},
  };
  for (const float bad : {-1e-9F, 1.0000002F, kNan, kInfinity, -kInfinity}) {
    cases.emplace_back(Scope::Preset, Builder().presetImage(with(bad)).bytes());
    cases.emplace_back(Scope::Preset, Builder().legacyFile(0x21, {with(bad)}, 36).bytes());
    std::vector<presets::PresetSlot> slots(32, makeSlot(60));
    slots[31] = with(bad);
    cases.emplace_back(Scope::Bank, Builder(Order::Big).legacyFile(0x37, slots, 36).bytes());
  }
  PresetRig rig;
  const RigState before = rig.state();
  for (std::size_t i = 0; i < cases.size(); ++i) {
    rig.editor->loadPresetData(cases[i].second, cases[i].first);
    EXPECT_TRUE(rig.state() == before) << "case " << i;
  }
}

TEST(PresetImage, LegacyLayoutsLoadAsManyValuesAsTheyHold) {
  for (const Order order : {Order::Little, Order::Big}) {
    for (const int values : {1, 20, 36, 40}) {
      SCOPED_TRACE(values);
      const auto expected = [values](int seed) {
        auto slot = makeSlot(seed);
        for (std::size_t p = static_cast<std::size_t>(std::min(values, 36)); p < 36; ++p) {
          slot.values[p] = makeSlot(900).values[p];
        }
        return slot;
      };
      PresetRig rig;
      rig.editor->loadPresetData(Builder(order).legacyFile(0x21, {makeSlot(60)}, values).bytes(),
                                 Scope::Preset);
      EXPECT_TRUE(sameBits(rig.slot(3), expected(60)));
      EXPECT_TRUE(rig.inStep());

      std::vector<presets::PresetSlot> bank;
      for (int i = 0; i < 32; ++i) bank.push_back(makeSlot(200 + i));
      rig.editor->loadPresetData(Builder(order).legacyFile(0x37, bank, values).bytes(),
                                 Scope::Bank);
      for (int i = 0; i < 32; ++i) {
        auto wanted = expected(200 + i);
        wanted.values[2] = rig.effect.getParameter(2);
        EXPECT_TRUE(sameBits(rig.slot(i), wanted)) << i;
      }
      EXPECT_EQ(rig.effect.getCurrentPreset(), 0);
      EXPECT_TRUE(rig.inStep());
    }
  }
}

TEST(PresetImage, CutOffAnywhereTheWholeRecordsCount) {
  auto bank = makeBank(500);
  const auto whole = Builder().bankImage(bank, 0).bytes();
  for (std::size_t length = 0; length < whole.size(); length += 97) {
    PresetRig rig;
    const auto before = rig.effect.getPresetSlots();
    const std::unique_ptr<std::uint8_t[]> cut(new std::uint8_t[length]);
    std::copy_n(whole.begin(), length, cut.get());
    rig.editor->loadPresetData({cut.get(), length}, Scope::Bank);
    const std::size_t slots = length < 41 ? 0 : (length - 41) / 1320;
    for (std::size_t i = 0; i < 32; ++i) {
      if (i == slots) continue; // the cut goes through it
      auto wanted = i < slots ? bank[i] : before[i];
      wanted.values[2] = rig.slot(static_cast<int>(i)).values[2];
      EXPECT_TRUE(sameBits(rig.slot(static_cast<int>(i)), wanted)) << length << " slot " << i;
    }
  }
}

} // namespace
} // namespace qlx::test
