// SPDX-License-Identifier: ISC
#include "tests/fuzz/FuzzTargets.h"

#include "tests/support/PresetRig.h"

namespace qlx::test {
namespace {

using Builder = PresetBytesBuilder;
using Order = Builder::Order;
using presets::Scope;
using Seeds = std::vector<std::vector<std::uint8_t>>;
using Input = std::span<const std::uint8_t>;

/// One instance for all inputs, as a host loads project after project into one.
PresetRig& rig() {
  static PresetRig instance;
  return instance;
}

void checkSlot(const presets::PresetSlot& slot) {
  for (const float value : slot.values) require(presets::isNormalised(value));
}

/// What may have changed: all slots, or with Scope::Preset the current one.
void checkInvariants(PresetRig& tested, Scope scope) {
  const int current = tested.effect.getCurrentPreset();
  require(current >= 0 && current < 32);
  require(!tested.effect.isPresetLoading());
  for (int p = 0; p < 36; ++p) require(presets::isNormalised(tested.effect.getParameter(p)));
  if (scope == Scope::Preset) return checkSlot(tested.slot(current));
  for (const auto& slot : tested.effect.getPresetSlots()) checkSlot(slot);
}

void runChunk(Input bytes) {
  std::vector<std::uint8_t> chunk(bytes.begin(), bytes.end());
  const bool taken = rig().setChunk(chunk) == 0;
  require(rig().hostBufferKept);
  checkInvariants(rig(), Scope::Bank);
  // Saving is the slow part and depends little on the input: every sixteenth time, beginning with
  // the first, is enough.
  static unsigned takenSoFar = 0;
  if (!taken || takenSoFar++ % 16 != 0) return;
  // What was taken must survive the host's next save and load. The first load makes the lever
  // common to all slots, which it is not after an old bank that stopped half-way.
  require(rig().setChunk(rig().getChunk()) == 0);
  const auto saved = rig().getChunk();
  require(saved.size() == 42289);
  require(rig().setChunk(saved) == 0 && rig().getChunk() == saved);
}

void runFile(Input bytes, Scope scope) {
  for (const bool otherOrder : {false, true}) {
    rig().editor->loadPresetData(bytes, scope, otherOrder);
    checkInvariants(rig(), scope);
  }
}

void runPresetFile(Input bytes) { runFile(bytes, Scope::Preset); }
void runBankFile(Input bytes) { runFile(bytes, Scope::Bank); }

/// The first byte chooses the value that the rest is stored as.
void runStoredValues(Input bytes) {
  constexpr std::array<const char*, 8> kNames{"DefaultBank", "DefaultPreset", "MemoA",
                                              "MemoB",       "CurrDir",       "CurrBank",
                                              "CurrPreset",  "ManualPath"};
  static const auto store = std::make_shared<MemorySettingsStore>();
  static PresetRig user(store);
  if (bytes.empty()) return;
  const char* const name = kNames[bytes[0] % kNames.size()];
  store->writeBinary(name, bytes.subspan(1));
  user.editor->loadStartupDefaults();
  user.editor->recallMemoA();
  user.editor->recallMemoB();
  require(user.editor->fileLocations().presetDirectory.size() <= 256);
  require(user.editor->settings().manualPath().size() <= 1024);
  user.editor->saveFileLocations();
  checkInvariants(user, Scope::Bank);
  store->remove(name);
}

/// Records that each reader treats in its own way.
Builder oddRecords(Order order) {
  Builder records(order);
  records.valueRecord(0, 3, 1.5F).nameRecord(2, makeSlot(5, 24).name).valueRecord(2, 35, -0.0F);
  return records.u32(7).u32(8).u32(0).zeros(8).valueRecord(40, 3, 0.5F).valueRecord(1, 99, 0.5F);
}

std::vector<presets::PresetSlot> legacyBank() {
  const auto bank = makeBank(40);
  return {bank.begin(), bank.end()};
}

Seeds presetSeeds() {
  Seeds seeds;
  for (const Order order : {Order::Little, Order::Big}) {
    seeds.push_back(Builder(order).presetImage(makeSlot(1)).bytes());
    seeds.push_back(Builder(order).image(0x22, 6, 0, oddRecords(order)).bytes());
    seeds.push_back(Builder(order).legacyFile(0x21, {makeSlot(2)}, 36).bytes());
    seeds.push_back(Builder(order).legacyFile(0x21, {makeSlot(3)}, 3).bytes());
  }
  return seeds;
}

Seeds bankSeeds() {
  Seeds seeds;
  for (const Order order : {Order::Little, Order::Big}) {
    seeds.push_back(Builder(order).bankImage(makeBank(1), 4).bytes());
    seeds.push_back(Builder(order).image(0x38, 6, 40, oddRecords(order)).bytes());
    seeds.push_back(Builder(order).legacyFile(0x37, legacyBank(), 36).bytes());
    seeds.push_back(Builder(order).legacyFile(0x37, legacyBank(), 1).bytes());
  }
  return seeds;
}

Seeds chunkSeeds() {
  Seeds seeds;
  for (const Order order : {Order::Little, Order::Big}) {
    seeds.push_back(Builder(order).chunk(Builder(order).bankImage(makeBank(1), 4)).bytes());
    seeds.push_back(
        Builder(order).chunk(Builder(order).image(0x38, 6, 40, oddRecords(order))).bytes());
    seeds.push_back(Builder(order).legacyChunk(legacyBank(), 31, 36).bytes());
    seeds.push_back(Builder(order).legacyChunk({makeSlot(2), makeSlot(3)}, 1, 2).bytes());
  }
  return seeds;
}

Seeds storedSeeds() {
  Seeds seeds;
  const auto add = [&](std::uint8_t value, const std::vector<std::uint8_t>& bytes) {
    seeds.push_back({value});
    seeds.back().insert(seeds.back().end(), bytes.begin(), bytes.end());
  };
  for (const auto& bytes : bankSeeds()) add(0, bytes);
  for (const auto& bytes : presetSeeds()) {
    add(1, bytes);
    add(2, bytes);
  }
  add(4, {'/', 'm', 'u', 's', 'i', 'c', '/'});
  add(7, std::vector<std::uint8_t>(1100, 0xC3));
  return seeds;
}

constexpr std::array<FuzzTarget, 4> kTargets{{
    {"chunk", &runChunk, &chunkSeeds},
    {"preset_file", &runPresetFile, &presetSeeds},
    {"bank_file", &runBankFile, &bankSeeds},
    {"stored_values", &runStoredValues, &storedSeeds},
}};

} // namespace

std::span<const FuzzTarget> presetFuzzTargets() { return kTargets; }

} // namespace qlx::test
