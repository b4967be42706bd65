// SPDX-License-Identifier: ISC
#include "brezan/plugin/Automation.h"

#include <gmock/gmock.h>

#include <sstream>

namespace qlx::test {
using namespace tools;
namespace {

std::vector<AutomationMove> moves(const std::string& text) {
  ParameterText parameters(TEST_EFFECT);
  std::istringstream in(text);
  return resolved(readAutomation(in, "moves.txt"), "moves.txt", parameters);
}

constexpr double kRate = 1000.0;

} // namespace

TEST(Automation, ReadsLinesInOrderOfTime) {
  const auto list = moves("# moves\n\n2.5 Mode BlueSky # late\r\n  1\tGain norm:0.25 0.5\n");
  ASSERT_EQ(list.size(), 2U);
  EXPECT_EQ(list[0].seconds, 1.0);
  EXPECT_EQ(list[0].index, 0);
  EXPECT_EQ(list[0].value, 0.25F);
  EXPECT_EQ(list[0].ramp, 0.5);
  EXPECT_EQ(list[1].index, 1);
  EXPECT_EQ(list[1].value, 1.0F);
}

TEST(Automation, NamesTheLineThatIsWrong) {
  const std::pair<const char*, const char*> cases[] = {
      {"1 Gain\n", "line 1: a line is"},
      {"# x\n\n1 Gain norm:0.5\nsoon Gain 1\n", "line 4: 'soon' is no time"},
      {"-1 Gain norm:1\n", "line 1: '-1' is no time"},
      {"1 Gain norm:1 slowly\n", "line 1: 'slowly' is no ramp"},
      {"1 Gain norm:1 2 3\n", "line 1: too many words"},
      {"9 Gain norm:1\n1 Volume 1\n", "line 2: no parameter 'Volume'"},
      {"1 Mode Yellow\n", "line 1: 'Yellow' is no value"},
  };
  for (const auto& [text, words] : cases)
    EXPECT_THAT([text = text] { moves(text); },
                testing::ThrowsMessage<std::runtime_error>(testing::HasSubstr(words)))
        << text;
}

TEST(Automation, RampsAreStraightAndEndExactly) {
  PluginHost host(TEST_EFFECT);
  host.setValue(0, 0.0F);
  AutomationPlayer player(moves("0.1 Gain norm:1 0.2\n0.5 Gain norm:0.5\n"), kRate);
  for (long long now = 0; now < 600;) {
    const int frames = player.advance(host, now, 1000);
    const double seconds = static_cast<double>(now) / kRate;
    const double expected = now >= 500 ? 0.5 : std::clamp((seconds - 0.1) / 0.2, 0.0, 1.0);
    EXPECT_NEAR(static_cast<double>(host.value(0)), expected, 1e-6) << now;
    if (now == 300 || now >= 500) {
      EXPECT_EQ(host.value(0), now == 300 ? 1.0F : 0.5F);
    }
    // No call may be needed before the next move begins or ends.
    if (now < 100) {
      EXPECT_EQ(now + frames, 100);
    }
    if (now > 100 && now < 300) {
      EXPECT_LE(frames, 32);
    }
    if (now >= 300 && now < 500) {
      EXPECT_EQ(now + frames, 500);
    }
    now += frames;
  }
}

TEST(Automation, ANewMoveTakesOverARampUnderWay) {
  PluginHost host(TEST_EFFECT);
  host.setValue(0, 0.0F);
  AutomationPlayer player(moves("0 Gain norm:1 1\n0.5 Gain norm:0 0.1\n"), kRate);
  for (long long now = 0; now < 500; now += player.advance(host, now, 1000)) {
  }
  player.advance(host, 500, 1000);
  EXPECT_NEAR(static_cast<double>(host.value(0)), 0.5, 0.04)
      << "the new ramp starts where the old was";
  player.advance(host, 600, 1000);
  EXPECT_EQ(host.value(0), 0.0F);
  player.advance(host, 1000, 1000);
  EXPECT_EQ(host.value(0), 0.0F) << "the old ramp is over";
}

} // namespace qlx::test
