// SPDX-License-Identifier: ISC
// The machine's own voice as the plug-in file gives it out.

#include "brezan/organ/DrawbarOrgan.h"
#include "brezan/sound/AudioFile.h"
#include "brezan/sound/PlayThrough.h"
#include "brezan/sound/SoundLevel.h"
#include "tests/support/CommandRun.h"

#include <gmock/gmock.h>

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <numbers>

namespace qlx::test {
using namespace tools;
namespace {

constexpr double kRate = 44100.0;

using Channels = std::vector<std::vector<double>>;
using Settings = std::vector<std::pair<const char*, float>>;

class MachineNoise : public testing::Test {
 protected:
  MachineNoise() { setenv("XDG_CONFIG_HOME", (m_folder / "config").c_str(), 1); }

  Channels play(const Settings& settings, std::span<const double> sound,
                const std::vector<AutomationMove>& moves = {}, double settle = 8.0) {
    PluginHost host(PLUGIN);
    for (const auto& [name, value] : settings) host.setValue(m_parameters.index(name), value);
    return playThrough(host, sound, kRate, {moves, {}}, settle);
  }

  Channels silence(const Settings& settings, double seconds,
                   const std::vector<AutomationMove>& moves = {}, double settle = 8.0) {
    return play(settings, std::vector<double>(static_cast<std::size_t>(seconds * kRate)), moves,
                settle);
  }

  AutomationMove move(double seconds, const char* name, float value) {
    return {seconds, m_parameters.index(name), value, 0.0};
  }

  static double db(double linear) { return 20.0 * std::log10(linear); }
  static double rmsDb(const Channels& sound, double from, double to) {
    return db(levelBetween(sound, kRate, from, to).rms);
  }

  TemporaryFolder m_folder;
  ParameterText m_parameters{PLUGIN};
};

} // namespace

TEST_F(MachineNoise, LiesWhereItIsHeardBetweenTheNotes) {
  // A full chord on both manuals and the pedal, as loud as the input goes.
  OrganScore score{{}, {}, {}, 5.0};
  for (const Manual manual : {Manual::Upper, Manual::Lower, Manual::Pedal})
    score.registrations.push_back({0.0, manual, {8, 8, 8, 8, 0, 0, 0, 0, 0}, false});
  for (const int key : {29, 33, 36, 41}) score.keys.push_back({0.0, 5.0, Manual::Upper, key});
  for (const int key : {17, 21, 24}) score.keys.push_back({0.0, 5.0, Manual::Lower, key});
  score.keys.push_back({0.0, 5.0, Manual::Pedal, 5});
  const double chord = rmsDb(play({{"Mech", 0.0F}}, playOrgan(score, kRate, 1.0)), 1.0, 5.0);

  const Channels slowSound = silence({}, 12.0);
  const double slow = rmsDb(slowSound, 0.0, 12.0);
  EXPECT_GT(chord - slow, 50.0);
  EXPECT_LT(chord - slow, 60.0);
  const double fast = rmsDb(silence({{"Lever", 1.0F}}, 12.0, {}, 20.0), 0.0, 12.0);
  EXPECT_GT(fast - slow, 6.0);
  EXPECT_LT(fast - slow, 12.0);
  EXPECT_EQ(levelBetween(silence({{"Mech", 0.0F}}, 2.0), kRate, 0.0, 2.0).peak, 0.0);
  EXPECT_GT(rmsDb(silence({{"Mech", 1.0F}}, 12.0), 0.0, 12.0) - slow, 10.0);
  for (const std::vector<double>& channel : slowSound) {
    double sum = 0.0;
    for (const double sample : channel) sum += sample;
    EXPECT_LT(db(std::abs(sum) / static_cast<double>(channel.size())), slow - 50.0) << "offset";
  }
}

TEST_F(MachineNoise, SwitchIsAnEventAndNoDigitalClick) {
  for (const float lever : {0.0F, 1.0F}) {
    const Channels sound = silence({{"Lever", lever}}, 12.0,
                                   {move(2.0, "Stop", 1.0F), move(10.0, "Stop", 0.0F)}, 20.0);
    for (const double event : {2.0, 10.0}) {
      const double peak = levelBetween(sound, kRate, event, event + 0.1).peak;
      EXPECT_GT(db(peak) - db(levelBetween(sound, kRate, 1.5, 2.0).peak), lever > 0.0F ? 3.0 : 9.0)
          << event;
      // A machine part rings on: after the loudest moment most of the event is still to come.
      const double early = levelBetween(sound, kRate, event, event + 0.003).rms;
      const double late = levelBetween(sound, kRate, event + 0.003, event + 0.03).rms;
      EXPECT_GT(late * late * 27.0, 0.5 * early * early * 3.0) << event;
    }
  }
}

TEST_F(MachineNoise, ReportTellsSpeedsAndRests) {
  {
    AudioOutput quiet(m_folder / "dry.wav", "pcm16", kRate, 1);
    quiet.write(std::vector<double>(static_cast<std::size_t>(12.0 * kRate)));
    quiet.finish();
  }
  write(m_folder / "moves.txt", "3 Lever Tremolo\n");
  const auto brezan = [&](const std::string& words) {
    const Finished done =
        run("cd " + m_folder.path().string() + " && " SHELL_WORD(BREZAN) " " + words +
            " --plugin " SHELL_WORD(PLUGIN) " --automate moves.txt --set CPUmode=LowCPU");
    EXPECT_EQ(done.status, 0) << done.errors;
    return done.output;
  };
  brezan("render dry.wav wet.wav --tail 0");
  EXPECT_THAT(
      brezan("report dry.wav wet.wav"),
      testing::AllOf(testing::ContainsRegex("0\\.00 +slow .* 0\\.6[678] +0\\.9[0-5]\n"),
                     testing::ContainsRegex(
                         "3\\.00 +fast .* 6\\.[78][0-9] +0\\.[56][0-9] +6\\.[45][0-9] +3\\."),
                     testing::ContainsRegex("0\\.30 +1[12]\\.[0-9]+ +-6[0-9]\\.")));
  EXPECT_THAT(brezan("report dry.wav wet.wav --set HSlowSpd=0"),
              testing::HasSubstr("The horn: no turn of the rotor can be recognised.\n"));
}

} // namespace qlx::test
