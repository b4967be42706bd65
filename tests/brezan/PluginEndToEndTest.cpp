// SPDX-License-Identifier: ISC
// The plug-in itself through the command-line host.
#include "brezan/plugin/ParameterText.h"
#include "brezan/sound/AudioFile.h"
#include "tests/support/CommandRun.h"

#include <gmock/gmock.h>

#include <cstdlib>
#include <numbers>

namespace qlx::test {
using namespace tools;
namespace {

constexpr double kRate = 44100.0;
constexpr double kToneHz = 2205.0;

// A plug-in that sees no settings of the person who runs the tests.
class PluginEndToEnd : public testing::Test {
 protected:
  PluginEndToEnd() { setenv("XDG_CONFIG_HOME", (m_folder / "config").c_str(), 1); }

  TemporaryFolder m_folder;
};

} // namespace

TEST_F(PluginEndToEnd, WordsAndAmountsFindTheirValues) {
  ParameterText parameters(PLUGIN);
  PluginHost host(PLUGIN);
  const struct {
    const char* text;
    const char* shown;
    double value;
  } cases[] = {
      {"Type=Tube", "Tube ", 0.5},
      {"setup=Front Side", "FrontSide ", 0.2},
      {"Lever=Tremolo", "Tremolo ", 1.0},
      {"Lever=100", "Tremolo ", 1.0},
      {"Lever=50%", "", 0.0},
      {"Lever=1", "1 ", 0.01},
      {"Stop=1", "Stopped ", 1.0},
      {"Bypass=on", "On ", 1.0},
      {"MIDIchl=Ch 3", "Ch 3 ", 3 / 17.0},
      {"MIDIchl=16", "Ch 16 ", 16 / 17.0},
      {"Size=1", "1 ", 0.0},
      {"Size=5", "5 ", 1.0},
      {"HSlowSpd=0.67", "0.67Hz", 0.067},
      {"HSlowSpd=0.673", "0.67Hz", 0.0673}, // finer than the display
      {"HFastSpd=400rpm", "6.67Hz", 2 / 3.0},
      {"HAccel=0.5s", "500ms", 0.349485}, // log(5) / log(100)
      {"HAccel=997", "997ms", 0.499348},
      {"HAccel=3.2", "3.2s", 0.752575},
      {"HAccel=500000", "", 0.0},
      {"HDistance=65cm", "65cm", 0.5},
      {"HDistance=0.65m", "65cm", 0.5},
      {"HDistance=1.2", "1.20m", 1.2 / 1.3},
      {"DLPF=1.2kHz", "1.20kHz", 0.389075}, // log(6) / log(100)
      {"DLPF=997", "997Hz", 0.348832},
      {"DLPF=Off", "Off ", 1.0},
      {"HHPF=19", "", 0.0},
      {"Drive=-6", "-6.0dB", 0.35},
      {"Mech=-infdB", "-oodB", 0.0},
      {"DGain=12dB", "12.0dB", 1.0},
      {"Color=0.25", "0.2%", 0.0025},
      {"Color=norm:0.25", "25.0%", 0.25},
      {"34=norm:0.25", " ", 0.25},
      {"34=0.25", "", 0.0},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.text);
    if (std::string(c.shown).empty()) {
      EXPECT_THROW(parameters.assignment(c.text), std::runtime_error);
      continue;
    }
    const ParameterValue got = parameters.assignment(c.text);
    host.setValue(got.index, got.value);
    EXPECT_EQ(host.display(got.index) + host.label(got.index), c.shown);
    EXPECT_NEAR(static_cast<double>(got.value), c.value, 5e-4);
  }
}

TEST_F(PluginEndToEnd, PresetsAreChosenByNumber) {
  PluginHost host(PLUGIN);
  EXPECT_EQ(host.presetNames().size(), 32U);
  std::vector<std::vector<float>> settings;
  for (const int preset : {0, 3, 31, 0}) {
    host.selectPreset(preset);
    EXPECT_EQ(host.currentPreset(), preset);
    settings.emplace_back();
    for (int i = 0; i < host.parameterCount(); ++i) settings.back().push_back(host.value(i));
  }
  EXPECT_NE(settings[0], settings[1]);
  EXPECT_EQ(settings[0], settings[3]);
}

TEST_F(PluginEndToEnd, TheProgramTellsTheIdentity) {
  const Finished info = run(SHELL_WORD(BREZAN) " info --plugin " SHELL_WORD(PLUGIN) " --json");
  EXPECT_EQ(info.status, 0) << info.errors;
  for (const char* words : {"\"name\": \"QLX Brezan\"", "\"id\": \"QbrZ\"", "\"parameters\": 36",
                            "\"presets\": 32", "\"stateBytes\": 42289", "\"receivesMidi\": true"})
    EXPECT_THAT(info.output, testing::HasSubstr(words));
}

TEST_F(PluginEndToEnd, TheTailEndsWithTheProgrammeWhateverTheMotorsDo) {
  const struct {
    double tone, silence; // seconds of the input
    double least, most;   // of the render
  } cases[] = {
      {0.0, 0.0, 0.0, 0.0}, {0.0, 1.0, 1.0, 1.0}, {1.0, 0.0, 1.6, 2.5}, {1.0, 2.0, 3.0, 3.0}};
  for (const auto& c : cases) {
    {
      AudioOutput source(m_folder / "in.wav", "float", kRate, 1);
      std::vector<double> sound(static_cast<std::size_t>((c.tone + c.silence) * kRate));
      for (std::size_t i = 0; i < static_cast<std::size_t>(c.tone * kRate); ++i)
        sound[i] =
            0.5 * std::sin(2.0 * std::numbers::pi * kToneHz * static_cast<double>(i) / kRate);
      source.write(sound);
      source.finish();
    }
    for (const std::string options : {"", "--set Lever=Tremolo --set Mech=1"}) {
      const Finished done =
          run("cd " + m_folder.path().string() +
              " && " SHELL_WORD(BREZAN) " render in.wav out.wav --plugin " SHELL_WORD(PLUGIN) " " +
              options);
      ASSERT_EQ(done.status, 0) << done.errors;
      const auto seconds = static_cast<double>(AudioInput(m_folder / "out.wav").frames()) / kRate;
      EXPECT_GE(seconds, c.least) << done.output;
      EXPECT_LE(seconds, c.most) << done.output;
    }
  }
}

} // namespace qlx::test
