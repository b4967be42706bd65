// SPDX-License-Identifier: ISC
#include <chrono>
#include <cstdlib>
#include <optional>

#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include "platform/linux/files/XdgSettingsStore.h"
#include "tests/support/PresetRig.h"
#include "tests/support/TemporaryFolder.h"

namespace qlx::test {
namespace {

/// A preset that shows by itself whether it is whole: its name says what all its values are.
presets::PresetSlot markedSlot(int mark) {
  presets::PresetSlot slot;
  slot.setNameText("mark " + std::to_string(mark));
  slot.values.fill(static_cast<float>(mark) / 65536.0F);
  return slot;
}

bool isMarked(const presets::PresetSlot& slot) {
  const auto mark = static_cast<int>(slot.values[0] * 65536.0F);
  return mark > 0 && slot == markedSlot(mark);
}

/// How long the memories are used. A long run is asked for from outside.
std::chrono::seconds stressTime() {
  const char* const asked = std::getenv("QLX_STRESS_SECONDS");
  return std::chrono::seconds(asked != nullptr ? std::atoi(asked) : 1);
}

/// Stores and recalls both memories in turn until the time is over. Answers how often, and nothing
/// as soon as something other than a whole preset comes back.
std::optional<int> useMemories(const std::string& folder, int process) {
  constexpr int kMarks = 300;
  PresetRig rig(std::make_shared<platform::XdgSettingsStore>(folder));
  rig.effect.setPresetSlot(3, markedSlot(65000 + process));
  rig.editor->storeMemoA();
  rig.editor->storeMemoB();
  const auto end = std::chrono::steady_clock::now() + stressTime();
  int round = 0;
  for (; std::chrono::steady_clock::now() < end; ++round) {
    rig.effect.setPresetSlot(3, markedSlot(1 + process * kMarks + round % kMarks));
    (round % 2 == 0) ? rig.editor->storeMemoA() : rig.editor->storeMemoB();
    rig.effect.setPresetSlot(3, presets::PresetSlot{});
    (round % 3 == 0) ? rig.editor->recallMemoB() : rig.editor->recallMemoA();
    if (!isMarked(rig.slot(3))) return std::nullopt;
  }
  return round;
}

TEST(PresetMemories, EightProcessesAtOnceReadOnlyWholePresets) {
  TemporaryFolder folder;
  std::vector<pid_t> users;
  for (int process = 0; process < 8; ++process) {
    users.push_back(::fork());
    if (users.back() != 0) continue;
    const auto rounds = useMemories(folder / "store", process);
    std::ofstream(folder / std::to_string(process)) << rounds.value_or(0);
    ::_exit(rounds ? 0 : 1);
  }
  int rounds = 0;
  for (std::size_t process = 0; process < users.size(); ++process) {
    int status = 0;
    ::waitpid(users[process], &status, 0);
    EXPECT_EQ(status, 0);
    int ofThisOne = 0;
    std::ifstream(folder / std::to_string(process)) >> ofThisOne;
    rounds += ofThisOne;
  }
  RecordProperty("rounds", rounds);
  EXPECT_GT(rounds, 8);
  EXPECT_EQ(std::distance(std::filesystem::directory_iterator(folder / "store"), {}),
            2); // the two memories and nothing unfinished
}

} // namespace
} // namespace qlx::test
