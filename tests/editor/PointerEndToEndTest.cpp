// SPDX-License-Identifier: ISC
// The editor as its user meets it: in a window on a display, worked with a real pointer and
// keyboard, while a host listens and another thread plays.
#include "tests/support/CommandRun.h"
#include "tests/support/TemporaryFolder.h"
#include "tests/support/desktop/VirtualDisplay.h"

#include <gtest/gtest.h>

#include <chrono>
#include <cmath>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <string>
#include <thread>
#include <vector>

namespace qlx::test {
namespace {

using namespace std::chrono_literals;

constexpr int kFirstCalibration = 36;
constexpr int kLastCalibration = 119;

/// `brezan edit --log` as a process of its own.
class EditedPlugin {
 public:
  EditedPlugin(const std::vector<std::string>& settings, std::string log, const char* scale)
      : m_log(std::move(log)) {
    std::vector<std::string> words{BREZAN, "edit", "--plugin", PLUGIN, "--log", "--scale", scale};
    for (const std::string& setting : settings) words.insert(words.end(), {"--set", setting});
    m_process.emplace(words, m_log);
  }

  /// The exit status after an interrupt; -1 when it ended otherwise.
  int end() { return m_process->end(); }

  /// What was logged since the last call, in short: "(n" and ")n" around gestures, "n=v" what the
  /// host heard, then "n:v" what the effect came to hold, values in thousandths. Waits until that
  /// is `awaited`, for a minute at most: an editor opens a hundred times slower under a sanitizer.
  std::string heard(const std::string& awaited) {
    std::string found;
    const auto patience = std::chrono::steady_clock::now() + (awaited.empty() ? 300ms : 60000ms);
    while (std::chrono::steady_clock::now() < patience) {
      found = shortened();
      if (found == awaited && !awaited.empty()) break;
      std::this_thread::sleep_for(20ms);
    }
    m_read += static_cast<std::streamoff>(m_pending.size());
    return found;
  }

 private:
  std::string shortened() {
    std::ifstream in(m_log, std::ios::binary);
    in.seekg(m_read);
    std::ostringstream text;
    text << in.rdbuf();
    m_pending = text.str();
    m_pending.resize(m_pending.rfind('\n') + 1); // whole lines
    std::istringstream lines(m_pending);
    std::string host;
    std::string values;
    for (std::string line; std::getline(lines, line);) {
      std::istringstream words(line);
      std::vector<std::string> word;
      for (std::string w; words >> w;) word.push_back(w);
      if (word[0] == "automate") {
        // What a room or a microphone setup brings along comes from the audio thread at its own
        // time.
        const int index = std::stoi(word[1]);
        if (index >= kFirstCalibration && index <= kLastCalibration) continue;
      }
      const auto thousandths = [&word] {
        return std::to_string(std::lround(std::stod(word.back()) * 1000.0));
      };
      if (word[0] == "begin") host += " (" + word[2];
      if (word[0] == "end") host += " )" + word[2];
      if (word[0] == "automate") host += " " + word[1] + "=" + thousandths();
      if (word[0] == "value") values += " " + word[1] + ":" + thousandths();
      if (word[0] == "open") host += " open";
    }
    host += values; // at which idle they are seen is a matter of time
    return host.empty() ? host : host.substr(1);
  }

  std::string m_log;
  std::string m_pending;
  std::streamoff m_read = 0;
  std::optional<ChildProcess> m_process;
};

struct HandGesture {
  const char* what;
  const char* moves; ///< of xdotool, places in the layout's pixels
  const char* heard;
};

constexpr HandGesture kGestures[] = {
    {"drag", "mousemove 42 75 mousedown 1 mousemove 52 65 mouseup 1", "(17 17=150 )17 17:150"},
    {"fine drag",
     "mousemove 132 325 keydown shift mousedown 1 mousemove 182 325 mouseup 1 keyup shift",
     "(13 13=540 )13 13:540"},
    {"Control-click", "mousemove 270 75 keydown ctrl click 1 keyup ctrl", "(21 21=500 )21 21:500"},
    {"double click", "mousemove 360 75 click --repeat 2 --delay 60 1",
     "(23 )23 (23 23=500 )23 23:500"},
    {"wheel", "mousemove 96 224 click 4", "(6 6=550 )6 6:550"},
    {"right button", "mousemove 186 224 mousedown 3 mousemove 196 204 mouseup 3", ""},
    {"out of its menu", "key Escape", ""},
    {"stop", "mousemove 372 365 click 1", "(4 4=0 4=1000 )4 4:1000"},
    // The lever releases the brake.
    {"speed", "mousemove 343 366 click 1", "(3 (2 4=0 2=1000 )2 )3 2:1000 4:0"},
    {"lever", "mousemove 357 187 mousedown 1 mousemove 357 244 mouseup 1", "(2 2=500 )2 2:500"},
    {"key", "key Up", "(2 2=484 )2 2:484"},
    {"key with a modifier", "key shift+Down", ""},
    {"bypass", "mousemove 369 543 click 1", "(0 0=0 0=1000 )0 0:1000"},
    {"MIDI channel", "mousemove 62 543 click 1", "35=56 148=1000 35:56"},
    {"about", "mousemove 100 165 click 1", ""},
    {"on the about screen", "mousemove 87 75 mousedown 1 mousemove 97 75 mouseup 1", ""},
    {"after it", "mousemove 87 80 mousedown 1 mousemove 107 80 mouseup 1", "(18 18=550 )18 18:550"},
};

/// The moves in a window of another scale.
std::string scaled(const std::string& moves, double scale) {
  std::istringstream words(moves);
  std::string result;
  for (std::string word; words >> word;) {
    result += " " + word;
    if (word != "mousemove") continue;
    double x = 0.0;
    double y = 0.0;
    words >> x >> y;
    result += " " + std::to_string(std::lround(x * scale));
    result += " " + std::to_string(std::lround(y * scale));
  }
  return result;
}

class EditorByHand : public testing::TestWithParam<const char*> {};

TEST_P(EditorByHand, EffectAndHostHearWhatTheHandDoes) {
  const TemporaryFolder folder;
  setenv("XDG_CONFIG_HOME", (folder / "config").c_str(), 1);
  const VirtualDisplay display({"-screen", "0", "1000x1200x24"});
  ASSERT_TRUE(display.isRunning()) << "Xvfb is needed";
  EditedPlugin plugin({"HSlowSpd=norm:0.1", "HFastSpd=norm:0.5", "HDistance=norm:0.3",
                       "HGain=norm:0.2", "Bottom=norm:0.5", "LoMid=norm:0.5", "Drive=norm:0.5",
                       "Size=norm:0.5", "Lever=norm:0", "Stop=norm:0", "Bypass=norm:0",
                       "CPUmode=norm:0", "MIDIchl=norm:0"},
                      std::filesystem::path(folder / "log").string(), GetParam());
  ASSERT_EQ(plugin.heard("open"), "open");
  for (const HandGesture& gesture : kGestures) {
    const std::string moves = scaled(gesture.moves, std::stod(GetParam()));
    ASSERT_EQ(std::system(("xdotool" + moves).c_str()), 0) << gesture.what;
    EXPECT_EQ(plugin.heard(gesture.heard), gesture.heard) << gesture.what;
  }
  constexpr int kInterrupted = 128 + SIGTERM;
  EXPECT_EQ(plugin.end(), kInterrupted);
}

INSTANTIATE_TEST_SUITE_P(Scales, EditorByHand, testing::Values("1", "1.5", "2"));

TEST(EditorInWords, NeedsNoDisplay) {
  const TemporaryFolder folder;
  setenv("XDG_CONFIG_HOME", (folder / "config").c_str(), 1);
  unsetenv("DISPLAY");
  const std::string file = std::filesystem::path(folder / "words").string();
  const std::string command = SHELL_WORD(BREZAN) " edit --describe --plugin " SHELL_WORD(
      PLUGIN) " --preset 'Old Rotary' --set Lever=Tremolo --set Bypass=On >";
  ASSERT_EQ(std::system((command + file).c_str()), 0);
  std::ostringstream text;
  text << std::ifstream(file).rdbuf();
  for (const char* line :
       {"Lever: Tremolo (lever)\n", "Stop: Running (switch)\n", "Bypass: On (switch)\n",
        "MIDI channel: OMNI (rocker)\n", "CPU mode: LowCPU (switch)\n",
        "Preset name: Old Rotary (text field)\n", "Preset menu: Old Rotary (menu)\n"})
    EXPECT_NE(text.str().find(line), std::string::npos) << line << text.str();
  EXPECT_EQ(text.str().find("empty"), std::string::npos) << text.str();
}

TEST(EditorPictures, NeedNoDisplay) {
  const TemporaryFolder folder;
  setenv("XDG_CONFIG_HOME", (folder / "config").c_str(), 1);
  unsetenv("DISPLAY");
  const auto pictureWith = [&folder](const std::string& options) {
    const std::filesystem::path file = folder / "editor.png";
    const std::string command =
        SHELL_WORD(BREZAN) " screenshot --plugin " SHELL_WORD(PLUGIN) " " + options + " ";
    EXPECT_EQ(std::system((command + file.string() + " >/dev/null").c_str()), 0) << options;
    std::ostringstream bytes;
    bytes << std::ifstream(file, std::ios::binary).rdbuf();
    return bytes.str();
  };
  const std::string plain = pictureWith("");
  // 401 x 570 behind the signature and the first chunk's head.
  EXPECT_EQ(plain.substr(1, 3), "PNG");
  EXPECT_EQ(plain.substr(16, 8), std::string("\0\0\1\x91\0\0\2\x3A", 8));
  EXPECT_EQ(plain, pictureWith(""));
  std::ostringstream readme;
  readme << std::ifstream(README_PICTURE, std::ios::binary).rdbuf();
  EXPECT_TRUE(plain == readme.str())
      << "README shows another editor: brezan screenshot " README_PICTURE;
  for (const char* options : {"--about", "--set Lever=Tremolo", "--set Bypass=On", "--control 1=99",
                              "--scale 1.5", "--scale 3"}) {
    EXPECT_NE(pictureWith(options), plain) << options;
  }
}

} // namespace
} // namespace qlx::test
