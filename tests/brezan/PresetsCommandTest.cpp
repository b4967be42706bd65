// SPDX-License-Identifier: ISC
// Presets on the command line, with files put together by hand and the plug-in itself.
#include "tests/support/CommandRun.h"
#include "tests/support/PresetBytesBuilder.h"

#include <gmock/gmock.h>

#include <algorithm>

namespace qlx::test {

using testing::HasSubstr;
using Builder = PresetBytesBuilder;
using Order = Builder::Order;
using Bytes = std::vector<std::uint8_t>;

namespace {

constexpr int kDrive = 13;

class PresetsCommand : public testing::Test {
 protected:
  PresetsCommand() { setenv("XDG_CONFIG_HOME", (m_folder / "config").c_str(), 1); }

  Finished presets(const std::string& arguments) {
    return run("cd " + m_folder.path().string() + " && " SHELL_WORD(BREZAN) " presets " +
               arguments + " --plugin " SHELL_WORD(PLUGIN));
  }
  void given(const std::string& name, const Bytes& bytes) { writeBytes(m_folder / name, bytes); }
  Bytes saved(const std::string& name) { return readBytes(m_folder / name); }

  TemporaryFolder m_folder;
};

// The values that all presets share are those of the last one applied.
std::array<qlx::presets::PresetSlot, 32> sharingBank(int seed) {
  auto bank = makeBank(seed);
  for (auto& slot : bank)
    for (const std::size_t p : {0U, 1U, 2U, 3U, 4U, 35U}) slot.values[p] = 0.25F;
  return bank;
}

Bytes cut(Bytes bytes, std::size_t length) {
  bytes.resize(length);
  return bytes;
}

std::vector<qlx::presets::PresetSlot> list(const std::array<qlx::presets::PresetSlot, 32>& bank) {
  return {bank.begin(), bank.end()};
}

} // namespace

TEST_F(PresetsCommand, FilesOfAllLayoutsAreLoadedAndSavedBitForBit) {
  const auto bank = sharingBank(300);
  for (const Order order : {Order::Little, Order::Big}) {
    const struct {
      const char* title;
      Bytes bytes;
      int current;
    } banks[] = {
        {"bank", Builder(order).bankImage(bank, 7).bytes(), 0},
        {"state", Builder(order).chunk(Builder(order).bankImage(bank, 7)).bytes(), 7},
        {"old bank", Builder(order).legacyFile(0x37, list(bank), 36).bytes(), 0},
        {"old state", Builder(order).legacyChunk(list(bank), 7, 36).bytes(), 7},
    };
    for (const auto& given_ : banks) {
      given("given", given_.bytes);
      const Finished got = presets("save out.qlb --from given");
      ASSERT_EQ(got.status, 0) << given_.title << got.errors;
      EXPECT_EQ(got.output, "out.qlb: 32 presets\n");
      EXPECT_EQ(got.errors, "");
      EXPECT_EQ(saved("out.qlb"), Builder().bankImage(bank, given_.current).bytes())
          << given_.title;
    }
    const Bytes singles[] = {Builder(order).presetImage(bank[9]).bytes(),
                             Builder(order).legacyFile(0x21, {bank[9]}, 36).bytes()};
    for (const Bytes& bytes : singles) {
      given("given", bytes);
      EXPECT_EQ(presets("save out.qlx --from given").status, 0);
      EXPECT_EQ(saved("out.qlx"), Builder().presetImage(bank[9]).bytes());
    }
  }
}

TEST_F(PresetsCommand, OnePresetIsTakenOutChangedAndPutElsewhere) {
  auto bank = sharingBank(300);
  given("all.qlb", Builder().bankImage(bank, 7).bytes());
  EXPECT_EQ(presets("save five.qlx --from all.qlb --index 5 --set Drive=norm:0.5").status, 0);
  bank[5].values[kDrive] = 0.5F;
  const Bytes five = Builder().presetImage(bank[5]).bytes();
  EXPECT_EQ(saved("five.qlx"), five);

  const Finished loaded = presets("load five.qlx --index 30 --save-state after.state");
  EXPECT_THAT(loaded.output, HasSubstr("    30  TUVWX              current\n"));
  EXPECT_EQ(saved("after.state").size(), 42289U);
  EXPECT_EQ(presets("save again.qlx --state after.state").status, 0);
  EXPECT_EQ(saved("again.qlx"), five);

  // Of what a file doesn't mention, the plug-in's own template remains.
  given("part.qlx",
        Builder()
            .image(0x22, 2, 0, Builder().nameRecord(0, bank[6].name).valueRecord(0, 8, 0.125F))
            .bytes());
  presets("save part2.qlx --from part.qlx");
  presets("save template.qlx --index 0");
  const Bytes rest = saved("template.qlx");
  Bytes part = saved("part2.qlx");
  ASSERT_EQ(part.size(), rest.size());
  constexpr auto kBeforeValues = 41 + 168;
  constexpr auto kEighth = kBeforeValues + 8 * 32 + 24;
  std::copy_n(rest.begin() + kEighth, 4, part.begin() + kEighth);
  EXPECT_TRUE(std::equal(part.begin() + kBeforeValues, part.end(), rest.begin() + kBeforeValues));
}

TEST_F(PresetsCommand, FilesAreStartingPoints) {
  auto bank = sharingBank(300);
  given("all.qlb", Builder().bankImage(bank, 7).bytes());
  given("nine.qlx", Builder().presetImage(bank[9]).bytes());
  const Bytes nine = saved("nine.qlx");
  for (const char* start : {"--bank all.qlb --preset 9", "--preset nine.qlx"}) {
    EXPECT_EQ(presets(std::string("save out.qlx ") + start).status, 0);
    EXPECT_EQ(saved("out.qlx"), nine) << start;
  }
  EXPECT_THAT(presets("save out.qlx --bank nine.qlx").errors, HasSubstr("give it with --preset"));
}

TEST_F(PresetsCommand, ListsNamesAndValues) {
  auto bank = sharingBank(300);
  bank[9].name = {'A', '\x1b', '[', '2', 'J'}; // a terminal would clear its screen
  bank[9].values[kDrive] = 0.5F;
  given("all.qlb", Builder().bankImage(bank, 7).bytes());
  const Finished one = presets("--from all.qlb --index 9");
  EXPECT_EQ(std::count(one.output.begin(), one.output.end(), '\n'), 37) << one.output;
  EXPECT_THAT(one.output, HasSubstr("     9  A?[2J     13  Drive       0.5000  0.0        dB\n"));
  const std::string all = presets("--from all.qlb").output;
  EXPECT_EQ(std::count(all.begin(), all.end(), '\n'), 32 * 36 + 1);
  const std::string json = presets("--from all.qlb --index 9 --json").output;
  EXPECT_THAT(json, HasSubstr("\"number\": 9"));
  EXPECT_THAT(json, HasSubstr("\"value\": 0.5,"));
  EXPECT_THAT(presets("--help").output, HasSubstr("presets show doubtful.qlb"));
}

TEST_F(PresetsCommand, ShowTellsWhatIsWrongWhere) {
  const auto bank = makeBank(300);
  const Bytes whole = Builder(Order::Big).bankImage(bank, 7).bytes();
  auto bad = makeSlot(60);
  bad.values[kDrive] = 1.5F;
  Builder odd;
  odd.valueRecord(5, kDrive, -1.0F).u32(7).u32(4).u32(0).zeros(4).valueRecord(40, 8, 0.5F);
  odd.valueRecord(1, 99, 0.5F).u32(1).u32(19).u32(5).zeros(19);
  const struct {
    Bytes bytes;
    std::vector<const char*> words;
    int status;
  } cases[] = {
      {Builder().presetImage(makeSlot(60)).bytes(), {": preset, 1361 bytes\n", "IJKLMNOPQ"}, 0},
      {whole, {": bank, 42281 bytes, in the byte order of other machines, current preset 7\n"}, 0},
      {Builder().legacyFile(0x21, {makeSlot(60)}, 20).bytes(),
       {"preset without records", " 20\n"},
       0},
      {Builder(Order::Big).legacyChunk(list(bank), 7, 36).bytes(),
       {"bank without records in a saved state"},
       0},
      // 15 presets of 1320 bytes and a name record are whole.
      {cut(whole, 41 + 15 * 1320 + 168 + 20),
       {"announces 42240 bytes of records, 19988 are there",
        "end too early, at byte 20029, in record 557 at byte 20009: 628 announced records missing"},
       1},
      {Builder().presetImage(bad).bytes(),
       {"record 15 at byte 625: 13 (Drive) is 1.5, not within 0..1", "does not load it"},
       1},
      {Builder().image(0x38, 5, 40, odd).bytes(),
       {"current preset is to be 40", "record 1 at byte 41: 13 (Drive) of preset 5 is -1",
        "record 2 at byte 73 is of unknown type 7", "record 3 at byte 89 belongs to preset 40",
        "record 4 at byte 121: parameter 99 of preset 1 is unknown",
        "record 5 at byte 153 is shorter than its type needs"},
       1},
      {Builder().image(0x22, -1, 0, odd).bytes(), {"announces -1 records", "does not load it"}, 1},
      {Builder().legacyFile(0x37, std::vector(32, bad), 36).bytes(),
       {"preset 31 at byte 5289: 13 (Drive) is 1.5", "does not load it"},
       1},
      {Builder().legacyChunk({makeSlot(1), bad}, 0, 36).bytes(),
       {"preset 1: the value of 13 (Drive) is not within 0..1"},
       1},
      {Builder().u32(kFileId).u8(0x39).zeros(9).bytes(), {"its kind, 57, is unknown"}, 1},
      {cut(Builder().presetImage(bad).bytes(), 30), {"ends at byte 30, inside its header"}, 1},
      {cut(Builder().presetImage(bad).bytes(), 4), {"ends behind its identifier"}, 1},
      {cut(Builder().chunk(Builder()).bytes(), 8), {"state", "ends at byte 8"}, 1},
      {cut(Builder().legacyFile(0x37, list(bank), 36).bytes(), 700), {"too short for 32 names"}, 1},
      {{'n', 'o', 't', ' ', 'o', 'u', 'r', 's', '!'}, {"holds no presets of this plug-in"}, 1},
  };
  for (const auto& c : cases) {
    given("file", c.bytes);
    const Finished got = presets("show file");
    EXPECT_EQ(got.status, c.status) << got.output;
    for (const char* words : c.words) EXPECT_THAT(got.output + got.errors, HasSubstr(words));
  }
}

TEST_F(PresetsCommand, WhatFailsSaysSoAndHarmsNothing) {
  auto bad = makeSlot(60);
  bad.values[kDrive] = 1.5F;
  given("bad.qlx", Builder().presetImage(bad).bytes());
  given("good.qlb", Builder().bankImage(makeBank(300), 7).bytes());
  given("part.qlb", Builder().image(0x38, 1, 0, Builder().valueRecord(5, 8, 1.5F)).bytes());
  given("out.qlx", {'o', 'l', 'd'});
  std::filesystem::create_directory(m_folder / "folder.qlx");
  std::filesystem::create_directory(m_folder / "config");
  const std::size_t before = m_folder.entries();
  const struct {
    const char* arguments;
    const char* words;
  } cases[] = {
      {"--from missing.qlb", "cannot read 'missing.qlb'"},
      {"--from bad.qlx", "not within 0..1"},
      {"--from part.qlb --index 6", "has no such preset"},
      {"--index 6", "--index chooses a preset"},
      {"--from good.qlb --index 32", "index"},
      {"show", "FILE"},
      {"show missing.qlb", "cannot read 'missing.qlb'"},
      {"load bad.qlx --save-state out.qlx", "'bad.qlx' cannot be loaded"},
      {"load good.qlb --save-state none/state", "cannot write 'none/state'"},
      {"save out.qlx --from bad.qlx", "'bad.qlx' cannot be loaded"},
      {"save out.qlx --from good.qlb --set Drive=loud", "'loud' is no value of Drive"},
      {"save out.wav", "must end in .qlx for one preset or .qlb for all"},
      {"save folder.qlx", "'folder.qlx' is a folder"},
      {"save none/out.qlb", "cannot write 'none/out.qlb'"},
  };
  for (const auto& c : cases) {
    const Finished got = presets(c.arguments);
    EXPECT_GT(got.status, 0) << c.arguments;
    EXPECT_THAT(got.errors, HasSubstr(c.words)) << c.arguments;
    EXPECT_EQ(got.output, "") << c.arguments;
    EXPECT_EQ(contents(m_folder / "out.qlx"), "old") << c.arguments;
    ASSERT_EQ(m_folder.entries(), before) << "left behind by: " << c.arguments;
  }
  const Finished mended = presets("save mended.qlb --from part.qlb");
  EXPECT_EQ(mended.status, 0);
  EXPECT_THAT(mended.errors, HasSubstr("warning: 'part.qlb': record 1 at byte 41: 8 ("));
}

} // namespace qlx::test
