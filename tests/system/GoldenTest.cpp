// SPDX-License-Identifier: ISC
#include "tests/support/TemporaryFolder.h"
#include "tests/support/ThisSystem.h"
#include "tests/system/Scenario.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <fstream>
#include <random>
#include <sstream>

namespace qlx::test {
namespace {

constexpr double kTolerance = -120.0;

class SoundTest : public ::testing::Test {
 protected:
  SoundTest() { keepSettingsIn(m_home.path()); }
  TemporaryFolder m_home;
};

class GoldenTest : public SoundTest, public ::testing::WithParamInterface<std::string> {};

std::string textOf(const std::filesystem::path& path) {
  std::ifstream file(path);
  std::stringstream text;
  text << file.rdbuf();
  return text.str();
}

TEST_P(GoldenTest, RendersAsKept) {
  const std::filesystem::path folder = SYSTEM_TESTS;
  PluginPlayer player(PLUGIN);
  const Stereo actual = thinned(play(textOf(folder / "scenarios" / (GetParam() + ".txt")), player),
                                kKeptFrames, kFramesPerWindow);
  Stereo expected;
  std::ifstream kept(folder / "golden" / (GetParam() + ".f64"), std::ios::binary);
  for (double pair[2]; kept.read(reinterpret_cast<char*>(pair), sizeof pair);) {
    expected.left.push_back(pair[0]);
    expected.right.push_back(pair[1]);
  }
  ASSERT_GT(expected.left.size(), 1000U);
  EXPECT_LT(errorDb(expected, actual), kTolerance);
}

std::vector<std::string> scenarioNames() {
  std::vector<std::string> names;
  for (const auto& entry :
       std::filesystem::directory_iterator(std::filesystem::path(SYSTEM_TESTS) / "scenarios"))
    names.push_back(entry.path().stem().string());
  std::sort(names.begin(), names.end());
  return names;
}

INSTANTIATE_TEST_SUITE_P(Scenarios, GoldenTest, ::testing::ValuesIn(scenarioNames()),
                         [](const auto& scenario) {
                           std::string name = scenario.param;
                           std::replace(name.begin(), name.end(), '-', '_');
                           return name;
                         });

/// A random session: rates, quality, controls, presets, pedals and blocks, over all parameters or
/// the player's alone.
std::string randomScript(unsigned seed, bool calibration) {
  std::mt19937 random(seed);
  const auto below = [&](unsigned n) { return static_cast<int>(random() % n); };
  const auto pick = [&](auto... values) {
    const double all[] = {static_cast<double>(values)...};
    return all[random() % std::size(all)];
  };
  std::ostringstream s;
  s << "signal " << (below(2) != 0 ? "noise" : "chord") << "\nrate "
    << pick(22050, 32000, 44100, 48000, 88200, 96000, 192000) << "\nsuspend\nresume\n";
  s << "param 1 " << below(2) << "\n";
  for (int frames = 0; frames < 60000;) {
    for (int i = below(4); i > 0; --i) {
      const int index =
          calibration ? 36 + below(84) : static_cast<int>(pick(0, 1, 2, 2, 4, 5 + below(26), 35));
      s << "param " << index << " " << pick(0, 1, 0.5, below(1000) / 1000.0, below(1000) / 1000.0)
        << "\n";
    }
    if (below(6) == 0)
      s << "midi " << pick(176, 177) << " " << pick(1, 64, 7) << " " << below(128) << "\n";
    if (below(12) == 0) s << "preset " << below(20) << "\n";
    if (below(15) == 0) s << "rate " << pick(44100, 48000, 96000) << "\nsuspend\nresume\n";
    const int n = 1000 + below(9000);
    s << "blocks " << pick(16, 64, 100, 333, 512, 1024, 4096) << " " << n << "\n";
    frames += n;
  }
  return s.str();
}

/// 16, or what QLX_RANDOM_SESSIONS says.
unsigned randomSessions() {
  const char* wanted = std::getenv("QLX_RANDOM_SESSIONS");
  return wanted != nullptr ? static_cast<unsigned>(std::strtoul(wanted, nullptr, 10)) : 16;
}

void expectFollowsThePlainModel(const std::string& script) {
  PluginPlayer plugin(PLUGIN);
  ReferencePlayer plain(plugInRecordings());
  const Stereo expected = play(script, plain), actual = play(script, plugin);
  const auto alike = [](double a, double b) { return std::abs(a - b) < 1e-6; };
  EXPECT_LT(errorDb(expected, actual), kTolerance)
      << script << "from frame "
      << std::ranges::mismatch(expected.left, actual.left, alike).in1 - expected.left.begin();
}

TEST_F(SoundTest, RandomSessionsFollowThePlainModel) {
  for (unsigned seed = 1; seed <= randomSessions(); ++seed)
    expectFollowsThePlainModel(randomScript(seed, seed % 2 == 0));
}

// The law of each, what it reaches and what has to be computed anew.
TEST_F(SoundTest, EveryParameterFollowsThePlainModel) {
  for (const char* value : {" 0.3", " 0.7"}) {
    std::string script = "signal noise\nrate 44100\nsuspend\nresume\nblocks 512 6000\n";
    for (int index = 2; index < 120; ++index)
      script += "param " + std::to_string(index) + value + "\nblocks 64 320\n";
    expectFollowsThePlainModel(script);
  }
}

} // namespace
} // namespace qlx::test
