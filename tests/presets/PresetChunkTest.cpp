// SPDX-License-Identifier: ISC
#include <cstring>
#include <limits>
#include <thread>

#include <gtest/gtest.h>

#include "tests/support/PresetRig.h"

namespace qlx::test {
namespace {

using Builder = PresetBytesBuilder;
using Order = Builder::Order;
using sdk::EffectOpcode;

std::vector<std::uint8_t> chunkOf(const std::array<presets::PresetSlot, 32>& slots, int current,
                                  Order order = Order::Little) {
  return Builder(order).chunk(Builder(order).bankImage(slots, current)).bytes();
}

std::array<presets::PresetSlot, 32> bankWithLever(int seed, float lever) {
  auto bank = makeBank(seed);
  for (auto& slot : bank) slot.values[2] = lever;
  return bank;
}

TEST(PresetChunk, IsTheBankImageBehindItsHead) {
  PresetRig rig;
  const auto chunk = rig.getChunk();
  EXPECT_EQ(chunk.size(), 42289U);
  EXPECT_EQ(chunk, chunkOf(rig.effect.getPresetSlots(), 3));
}

TEST(PresetChunk, RestoresTheStateFromEitherOrderAndLeavesTheHostsBytesAlone) {
  for (const Order order : {Order::Little, Order::Big}) {
    PresetRig rig;
    const auto bank = bankWithLever(300, 0.25F);
    EXPECT_EQ(rig.setChunk(chunkOf(bank, 11, order)), 0);
    EXPECT_TRUE(rig.hostBufferKept);
    EXPECT_EQ(rig.getChunk(), chunkOf(bank, 11));
    EXPECT_TRUE(rig.inStep());
  }
}

TEST(PresetChunk, SurvivesWhatHostsDoAfterwards) {
  PresetRig rig;
  const auto wanted = chunkOf(bankWithLever(300, 0.25F), 11);
  rig.setChunk(wanted);
  rig.dispatch(EffectOpcode::SetProgram, 0, 0, nullptr);
  EXPECT_EQ(rig.getChunk(), wanted);
  for (int p = 0; p < 36; ++p) {
    auto* record = rig.effect.getRecord();
    record->setParameter(record, p, record->getParameter(record, p));
  }
  EXPECT_EQ(rig.getChunk(), wanted);
  EXPECT_EQ(rig.setChunk(wanted), 0);
  EXPECT_EQ(rig.getChunk(), wanted);
}

TEST(PresetChunk, ForeignOrCutChunksAreRefused) {
  const auto whole = chunkOf(makeBank(300), 11);
  std::vector<std::vector<std::uint8_t>> cases{
      Builder()
          .u32(0x02000000)
          .u32(kFileId ^ 1U)
          .append(Builder().bankImage(makeBank(2), 1))
          .bytes(),
      Builder().u32(0x03000000).u32(kFileId).append(Builder().bankImage(makeBank(2), 1)).bytes(),
      Builder(Order::Big).u32(2).u32(kFileId).append(Builder().bankImage(makeBank(2), 1)).bytes(),
      Builder().legacyChunk({}, 0, 36).zeros(1000).bytes(),
      Builder().legacyChunk({makeSlot(60)}, 0, 0).bytes(),
  };
  for (std::size_t length = 0; length < 49; ++length) {
    cases.emplace_back(whole.begin(), whole.begin() + static_cast<std::ptrdiff_t>(length));
  }
  for (const std::uint32_t count : {0xFFFFFFFFU, 0x80000000U, 0x7FFFFFFFU, 50U}) {
    cases.push_back(Builder().u32(0x01000000).u32(kFileId).u32(count).zeros(20 + 1024).bytes());
  }
  PresetRig rig;
  const RigState before = rig.state();
  for (std::size_t i = 0; i < cases.size(); ++i) {
    EXPECT_EQ(rig.setChunk(cases[i]), -1) << "case " << i;
    EXPECT_TRUE(rig.state() == before) << "case " << i;
  }
  std::array<std::uint8_t, 8> few{};
  EXPECT_EQ(rig.dispatch(EffectOpcode::SetChunk, 0, -5, few.data()), -1);
  EXPECT_EQ(rig.effect.setChunk(nullptr, 42289, false), -1);
}

TEST(PresetChunk, LegacyBanksOfAnySizeLoad) {
  struct Case {
    int slots, values, current, selected;
    Order order;
  };
  for (const Case& test : {Case{32, 36, 5, 5, Order::Little}, Case{32, 40, 31, 31, Order::Big},
                           Case{3, 20, 32, 0, Order::Big}, Case{40, 36, -1, 0, Order::Little}}) {
    PresetRig rig;
    std::vector<presets::PresetSlot> bank;
    for (int i = 0; i < test.slots; ++i) bank.push_back(makeSlot(200 + i));
    const auto before = rig.effect.getPresetSlots();
    EXPECT_EQ(
        rig.setChunk(Builder(test.order).legacyChunk(bank, test.current, test.values).bytes()), 0);
    EXPECT_TRUE(rig.hostBufferKept);
    for (std::size_t i = 0; i < 32; ++i) {
      auto wanted = i < bank.size() ? bank[i] : before[i];
      for (auto p = static_cast<std::size_t>(test.values); i < bank.size() && p < 36; ++p) {
        wanted.values[p] = makeSlot(900).values[p];
      }
      wanted.values[2] = rig.effect.getParameter(2);
      EXPECT_TRUE(sameBits(rig.slot(static_cast<int>(i)), wanted)) << i;
    }
    EXPECT_EQ(rig.effect.getCurrentPreset(), test.selected);
    EXPECT_TRUE(rig.inStep());
  }
}

TEST(PresetChunk, LegacyBankStopsAtABadValueAndSelectsNothing) {
  PresetRig rig;
  std::vector<presets::PresetSlot> bank{makeSlot(200), makeSlot(201), makeSlot(202)};
  bank[1].values[10] = std::numeric_limits<float>::quiet_NaN();
  auto wanted = rig.state();
  wanted.slots[0] = bank[0];
  wanted.slots[1] = makeSlot(900);
  wanted.slots[1].name = bank[1].name;
  std::copy_n(bank[1].values.begin(), 10, wanted.slots[1].values.begin());
  EXPECT_EQ(rig.setChunk(Builder().legacyChunk(bank, 1, 36).bytes()), -1);
  for (int i = 0; i < 2; ++i) { // so that choosing an entry later doesn't bring an old name back
    wanted.titles[static_cast<std::size_t>(i)] =
        wanted.slots[static_cast<std::size_t>(i)].nameText();
  }
  EXPECT_TRUE(rig.state() == wanted);
}

TEST(PresetStore, HostNamesAreCutBetweenCharacters) {
  const std::string a(30, 'a');
  const auto as = [&a](std::size_t n, const char* more = "") { return a.substr(0, n) + more; };
  struct Case {
    std::string name, shown, kept; ///< shown at most 24 bytes, kept 23
  };
  const Case cases[] = {{"", "", ""},
                        {as(5), as(5), as(5)},
                        {as(23), as(23), as(23)},
                        {as(24), as(24), as(23)},
                        {as(30), as(24), as(23)},
                        {as(21, "éé"), as(21, "é"), as(21, "é")},
                        {as(22, "éé"), as(22, "é"), as(22)},
                        {as(23, "éé"), as(23), as(23)},
                        {as(24, "é"), as(24), as(23)}};
  PresetRig rig;
  const auto named = [&rig](EffectOpcode opcode, int index, std::intptr_t answer) {
    std::array<char, 33> text{};
    text.fill('x');
    EXPECT_EQ(rig.dispatch(opcode, index, 0, text.data()), answer);
    EXPECT_EQ(text[32], 'x') << "no farther than 32 bytes";
    return std::string(text.data(), strnlen(text.data(), text.size()));
  };
  for (const Case& c : cases) {
    std::string buffer = c.name;
    rig.dispatch(EffectOpcode::SetProgramName, 0, 0, buffer.data());
    EXPECT_EQ(rig.panel.nameField, c.shown);
    EXPECT_EQ(rig.slot(3).nameText(), c.kept);
    EXPECT_EQ(named(EffectOpcode::GetProgramName, 0, 0), c.kept);
    EXPECT_EQ(named(EffectOpcode::GetProgramNameIndexed, 3, 1), c.kept);
  }
  for (const int nobody : {32, -1})
    EXPECT_EQ(rig.dispatch(EffectOpcode::GetProgramNameIndexed, nobody, 0, nullptr), 0);
}

TEST(PresetStore, SelectingAppliesWhatLiesInRangeAndKeepsEdits) {
  PresetRig rig;
  auto slot = makeSlot(60);
  slot.values[7] = 1.25F;
  rig.effect.setPresetSlot(9, slot);
  const float before = rig.effect.getParameter(7);
  rig.effect.selectPreset(9);
  EXPECT_EQ(rig.effect.getParameter(7), before);
  EXPECT_EQ(rig.effect.getParameter(8), slot.values[8]);
  EXPECT_EQ(rig.dispatch(EffectOpcode::GetProgram, 0, 0, nullptr), 0);
  EXPECT_FALSE(rig.effect.isPresetLoading());

  rig.effect.setParameter(8, 0.875F);
  rig.effect.setParameter(2, 0.0625F);
  rig.effect.selectPreset(3);
  rig.effect.selectPreset(9);
  EXPECT_EQ(rig.effect.getParameter(8), 0.875F);
  for (int i = 0; i < 32; ++i) {
    EXPECT_EQ(rig.slot(i).values[2], 0.0625F);
    const auto untouched = makeBank(1)[static_cast<std::size_t>(i)];
    EXPECT_EQ(rig.slot(i).values[8], i == 9 ? 0.875F : untouched.values[8]);
  }
}

// Meant for the thread sanitizer; without it, the chunk must still hold only values that somebody
// wrote.
TEST(PresetStore, AnyThreadMayStoreValuesWhilePresetsAndChunksMove) {
  PresetRig rig;
  std::atomic<bool> done{false};
  std::thread audio([&] {
    for (int i = 0; !done.load(std::memory_order_relaxed); ++i) {
      rig.effect.setParameter(2, static_cast<float>(i % 2));
      rig.effect.setParameter(8, static_cast<float>(i % 2));
    }
  });
  const auto chunk = chunkOf(bankWithLever(300, 0.25F), 11);
  std::thread loader([&] {
    for (int i = 0; i < 200; ++i) rig.effect.setChunk(chunk.data(), 42289, false);
  });
  for (int i = 0; i < 200; ++i) {
    rig.effect.selectPreset(i % 32);
    rig.editor->applyPresetName("name " + std::to_string(i));
    EXPECT_EQ(rig.getChunk().size(), 42289U);
    rig.editor->idle();
  }
  loader.join();
  done.store(true, std::memory_order_relaxed);
  audio.join();
  for (int i = 0; i < 32; ++i) {
    const float lever = rig.slot(i).values[2];
    EXPECT_TRUE(lever == 0.0F || lever == 1.0F || lever == 0.25F) << lever;
  }
}

TEST(PresetChunk, LoadedOnAnotherThreadReachesThePanelAtTheNextIdle) {
  PresetRig rig;
  const RigState before = rig.state();
  std::thread([&] { rig.setChunk(chunkOf(bankWithLever(300, 0.25F), 11)); }).join();
  EXPECT_EQ(rig.panel.titles, before.titles);
  rig.editor->idle();
  EXPECT_TRUE(rig.inStep());
}

} // namespace
} // namespace qlx::test
