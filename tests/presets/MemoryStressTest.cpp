#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include "platform/linux/XdgSettingsStore.h"
#include "tests/platform/TemporaryFolder.h"
#include "tests/presets/PresetRig.h"

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

/// Stores and recalls both memories in turn; false as soon as something other than a whole preset
/// comes back.
bool useMemories(const std::string& folder, int process) {
  constexpr int kRounds = 300;
  PresetRig rig(std::make_shared<platform::XdgSettingsStore>(folder));
  rig.effect.setPresetSlot(3, markedSlot(65000 + process));
  rig.editor->storeMemoA();
  rig.editor->storeMemoB();
  for (int round = 0; round < kRounds; ++round) {
    rig.effect.setPresetSlot(3, markedSlot(1 + process * kRounds + round));
    (round % 2 == 0) ? rig.editor->storeMemoA() : rig.editor->storeMemoB();
    rig.effect.setPresetSlot(3, presets::PresetSlot{});
    (round % 3 == 0) ? rig.editor->recallMemoB() : rig.editor->recallMemoA();
    if (!isMarked(rig.slot(3))) return false;
  }
  return true;
}

TEST(PresetMemories, EightProcessesAtOnceReadOnlyWholePresets) {
  TemporaryFolder folder;
  std::vector<pid_t> users;
  for (int process = 0; process < 8; ++process) {
    users.push_back(::fork());
    if (users.back() == 0) ::_exit(useMemories(folder / "store", process) ? 0 : 1);
  }
  for (const pid_t user : users) {
    int status = 0;
    ::waitpid(user, &status, 0);
    EXPECT_EQ(status, 0);
  }
}

} // namespace
} // namespace qlx::test
