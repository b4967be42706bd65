// SPDX-License-Identifier: ISC
// The preset panel as a user works it: the plug-in in a window on a display, its files seen from
// outside.
#include "platform/WindowRobot.h"
#include "tests/support/CommandRun.h"
#include "tests/support/desktop/FakeDesktop.h"
#include "tests/support/desktop/VirtualDisplay.h"

#include <chrono>
#include <functional>
#include <optional>
#include <thread>

namespace qlx::test {
namespace {

using Clock = std::chrono::steady_clock;

enum class Backend { Portal, Zenity, List };

struct Place {
  int x;
  int y;
};
constexpr Place kName{204, 561};
constexpr Place kMenu{269, 561};
constexpr Place kNext{302, 561};
constexpr Place kSaveBank{10, 561};
constexpr Place kLoadBank{60, 561};
constexpr Place kSavePreset{75, 561};
constexpr Place kLoadPreset{134, 561};
constexpr Place kDefaultBank{34, 561};
constexpr Place kDefaultPreset{104, 561};
constexpr Place kStoreA{317, 561};
constexpr Place kRecallA{339, 561};

constexpr std::size_t kPresetFileBytes = 1361;
constexpr std::size_t kBankFileBytes = 42281;

class PresetPanelOnDisplay : public testing::TestWithParam<Backend> {
 protected:
  void SetUp() override {
    ASSERT_TRUE(display.isRunning()) << "Xvfb is needed";
    setenv("XDG_CONFIG_HOME", (folder / "config").c_str(), 1);
    setenv("HOME", (folder / "home").c_str(), 1);
    unsetenv("DBUS_SESSION_BUS_ADDRESS");
    unsetenv("XDG_RUNTIME_DIR");
    std::filesystem::create_directory(folder / "home");
    if (GetParam() == Backend::Portal) {
      bus.emplace();
      ASSERT_TRUE(bus->isRunning()) << "dbus-daemon is needed";
      portal.emplace(*bus, FakePortal::Manner::Accepts);
    } else if (GetParam() == Backend::Zenity) {
      programs.write("zenity", "read -r path <$HERE/choice && echo \"$path\"");
    }
    robot = platform::openWindowRobot();
    ASSERT_NE(robot, nullptr);
    startEditor();
  }

  bool until(const std::function<bool()>& isSo) {
    const auto end = Clock::now() + std::chrono::seconds(20);
    while (!isSo()) {
      if (Clock::now() > end) return false;
      if (portal) portal->pump();
      std::this_thread::sleep_for(std::chrono::milliseconds(5));
    }
    return true;
  }

  static std::string user(const std::string& does) {
    return run("/usr/bin/xdotool " + does).output;
  }
  static void click(Place at, const std::string& how = "click 1") {
    user("mousemove " + std::to_string(at.x) + " " + std::to_string(at.y) + " " + how);
  }
  static void type(const std::string& text) { user("type --delay 1 '" + text + "'"); }
  static void key(const std::string& keys) { user("key --delay 1 " + keys); }

  std::uint32_t pixel(Place at) const {
    const auto picture = robot->picture(window, 0);
    if (!picture || at.x >= picture->width || at.y >= picture->height) return 0;
    return picture->pixels[static_cast<std::size_t>(at.y * picture->width + at.x)];
  }

  bool listIsOpen() const { return pixel(kInList) == kListColour; }

  void startEditor() {
    editor.emplace(std::vector<std::string>{BREZAN, "edit", "--plugin", PLUGIN});
    ASSERT_TRUE(until([this] {
      const std::string found = user("search --onlyvisible --name 'QLX Brezan'");
      if (!found.empty()) window = std::stoul(found);
      // The name field is lighter than anything before the editor is drawn.
      return !found.empty() && (pixel({150, 561}) & 0xFFU) > 0x80;
    }));
  }

  /// Presses a file button and answers the dialog with a file of the folder.
  void choose(Place button, const std::string& name, bool saves) {
    const std::string path = folder / name;
    if (GetParam() == Backend::Zenity) write(programs.path("choice"), path + "\n");
    const std::size_t asked = portal ? portal->requests().size() : 0;
    click(button);
    if (GetParam() == Backend::Portal) {
      ASSERT_TRUE(until([&] { return portal->requests().size() > asked; }));
      portal->respond(0, {"file://" + path});
    } else if (GetParam() == Backend::List) {
      ASSERT_TRUE(until([this] { return listIsOpen(); }));
      type(saves ? path : name.substr(0, 1));
      key("Return");
      ASSERT_TRUE(until([this] { return !listIsOpen(); }));
    }
  }
  std::string saved(Place button, const std::string& name, std::size_t bytes) {
    choose(button, name, true);
    EXPECT_TRUE(until([&] { return contents(folder / name).size() == bytes; })) << name;
    return contents(folder / name);
  }
  /// What the panel shows and the preset holds, by way of a file.
  std::string current() {
    return saved(kSavePreset, "p" + std::to_string(++m_count) + ".qlx", kPresetFileBytes);
  }
  /// The preset's name in its file, which ends at the first zero.
  static std::string nameIn(const std::string& presetFile) {
    return presetFile.size() == kPresetFileBytes ? presetFile.c_str() + kNameOffset : "";
  }

  std::string stored(const std::string& name) const {
    return contents(folder / "config" / "Meridane" / "QLXBRZ1" / name);
  }

  static constexpr Place kInList{30, 300};
  static constexpr std::uint32_t kListColour = 0xFF26211D;
  static constexpr std::size_t kNameOffset = 41 + 12;

  VirtualDisplay display{{"-screen", "0", "800x700x24"}};
  TemporaryFolder folder;
  FakePrograms programs;
  std::optional<PrivateBus> bus;
  std::optional<FakePortal> portal;
  std::unique_ptr<platform::WindowRobot> robot;
  std::optional<ChildProcess> editor; // with the window at the display's corner
  std::uintptr_t window = 0;

 private:
  int m_count = 0;
};

TEST_P(PresetPanelOnDisplay, NamesFilesDefaultsAndMemories) {
  // A name, taken by Return; a name given up by Escape.
  click(kName);
  type("My take");
  key("Return");
  click(kName);
  type("not this");
  key("Escape");
  const std::string take = saved(kSavePreset, "take.qlx", kPresetFileBytes);
  EXPECT_EQ(nameIn(take), "My take");
  EXPECT_EQ(take.substr(4, 1), "\x22");
  const std::string bank = saved(kSaveBank, "all.qlb", kBankFileBytes);

  // Other presets: the next one, and one from the menu.
  click(kNext);
  const std::string second = current();
  EXPECT_NE(nameIn(second), "My take");
  click(kMenu);
  key("Down Down Return");
  const std::string fourth = current();
  EXPECT_NE(nameIn(fourth), nameIn(second));
  EXPECT_NE(nameIn(fourth), "My take");

  // A preset into the fourth slot, then the whole bank, which starts at its first preset.
  choose(kLoadPreset, "take.qlx", false);
  EXPECT_EQ(current(), take);
  click(kNext);
  choose(kLoadBank, "all.qlb", false);
  EXPECT_EQ(current(), take);
  EXPECT_EQ(saved(kSaveBank, "again.qlb", kBankFileBytes), bank);

  // What a next start begins with: kept by a double click, dropped by one with Control.
  const struct {
    Place button;
    const char* name;
    std::size_t bytes;
  } defaults[]{{kDefaultBank, "DefaultBank", kBankFileBytes},
               {kDefaultPreset, "DefaultPreset", kPresetFileBytes}};
  for (const auto& kept : defaults) {
    click(kept.button);
    std::this_thread::sleep_for(std::chrono::milliseconds(600)); // no part of a double click
    EXPECT_EQ(stored(kept.name), "");
    click(kept.button, "click --repeat 2 --delay 30 1");
    EXPECT_TRUE(until([&] { return stored(kept.name).size() == kept.bytes; })) << kept.name;
    std::this_thread::sleep_for(std::chrono::milliseconds(600));
    click(kept.button, "keydown ctrl click --repeat 2 --delay 30 1 keyup ctrl");
    EXPECT_TRUE(until([&] { return stored(kept.name).empty(); })) << kept.name;
  }

  // The memory that one process fills is there in the next.
  click(kStoreA);
  ASSERT_TRUE(until([&] { return stored("MemoA") == take; }));
  EXPECT_NE(editor->end(), -1);
  EXPECT_EQ(stored("CurrDir"), folder.path().string() + "/");
  startEditor();
  EXPECT_NE(nameIn(current()), "My take");
  click(kRecallA);
  EXPECT_EQ(current(), take);
}

TEST_P(PresetPanelOnDisplay, FaultsLeaveTheEditorAtWork) {
  const std::string before = current();
  // A file that is gone by the time it is to be read, and a place that nothing can be saved to.
  if (GetParam() != Backend::List) {
    choose(kLoadPreset, "gone.qlx", false);
    EXPECT_EQ(current(), before);
  }
  choose(kSavePreset, "no/such/folder.qlx", true);
  EXPECT_EQ(current(), before);
  EXPECT_FALSE(std::filesystem::exists(folder / "no"));
  if (GetParam() == Backend::List) {
    // A name that a file has already: a question, which Return alone answers with no.
    write(folder / "mine.qlx", "precious");
    click(kSavePreset);
    ASSERT_TRUE(until([this] { return listIsOpen(); }));
    type((folder / "mine").string());
    key("Return");
    ASSERT_TRUE(until([this] { return !listIsOpen(); }));
    key("Return");
    ASSERT_TRUE(until([this] { return listIsOpen(); }));
    key("Escape");
    ASSERT_TRUE(until([this] { return !listIsOpen(); }));
    EXPECT_EQ(contents(folder / "mine.qlx"), "precious");
  }
  // The window closes while a dialog is open.
  const std::size_t asked = portal ? portal->requests().size() : 0;
  if (GetParam() == Backend::Zenity)
    programs.write("zenity", "echo >$HERE/open; exec /bin/sleep 30");
  click(kSavePreset);
  EXPECT_TRUE(until([&] {
    switch (GetParam()) {
    case Backend::Portal: return portal->requests().size() > asked;
    case Backend::Zenity: return !programs.read("open").empty();
    case Backend::List: break;
    }
    return listIsOpen();
  }));
  EXPECT_NE(editor->end(), -1);
  if (portal) {
    EXPECT_TRUE(until([&] { return portal->wasClosed(); }));
  }
}

INSTANTIATE_TEST_SUITE_P(Through, PresetPanelOnDisplay,
                         testing::Values(Backend::Portal, Backend::Zenity, Backend::List),
                         [](const auto& backend) {
                           return backend.param == Backend::Portal   ? "Portal"
                                  : backend.param == Backend::Zenity ? "Zenity"
                                                                     : "List";
                         });

} // namespace
} // namespace qlx::test
