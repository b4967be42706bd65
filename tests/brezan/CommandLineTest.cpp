// SPDX-License-Identifier: ISC
// The program as its users meet it: commands, files, exit codes and what it says.
#include "brezan/ProgressBar.h"
#include "brezan/sound/AudioFile.h"
#include "tests/support/CommandRun.h"

#include <gmock/gmock.h>

#include <algorithm>

namespace qlx::test {

using testing::HasSubstr;

namespace {

class CommandLine : public testing::Test {
 protected:
  CommandLine() {
    sound("in.wav", 2, 4410);
    sound("mono.wav", 1, 4410);
    sound("surround.wav", 6, 100);
    write(m_folder / "text.wav", "words");
    write(m_folder / "bad.mid", "MThd and no more");
    write(m_folder / "moves.txt", "0.01 Gain norm:0.25\n");
    write(m_folder / "bad.txt", "0.01 Gain norm:0.25\n0.02 Gain loud\n");
    write(m_folder / "state.bin", "short");
  }

  void sound(const std::string& name, int channels, int frames) {
    qlx::tools::AudioOutput out(m_folder / name, "pcm24", 44100.0, channels);
    std::vector<double> square(static_cast<std::size_t>(channels * frames)); // of 1 kHz
    for (int i = 0; i < channels * frames; ++i)
      square[static_cast<std::size_t>(i)] = i / channels / 22 % 2 == 0 ? 0.25 : -0.25;
    out.write(square);
    out.finish();
  }

  Finished brezan(const std::string& arguments) {
    const std::string plugin = "--plugin " SHELL_WORD(TEST_EFFECT);
    std::string line = arguments;
    if (const auto at = line.find("@"); at != std::string::npos) line.replace(at, 1, plugin);
    return run("cd " + m_folder.path().string() + " && " SHELL_WORD(BREZAN) " " + line);
  }

  double firstSample(const std::string& name) {
    qlx::tools::AudioInput in(m_folder / name);
    std::vector<double> frame(static_cast<std::size_t>(in.channels()));
    EXPECT_EQ(in.read(frame), 1);
    return frame[0];
  }

  TemporaryFolder m_folder;
};

} // namespace

TEST_F(CommandLine, EveryBadInputGetsOneClearLine) {
  const struct {
    const char* arguments;
    const char* words;
  } cases[] = {
      {"", "command is required"},
      {"polish", "polish"},
      {"render @", "IN"},
      {"render @ missing.wav out.wav", "cannot read 'missing.wav': No such file"},
      {"render @ . out.wav", "cannot read '.': it is a folder"},
      {"render @ /dev/null out.wav", "it is empty"},
      {"render @ text.wav out.wav", "'text.wav': it is no sound file"},
      {"render @ surround.wav out.wav", "6 channels"},
      {"render @ in.wav none/out.wav", "cannot write 'none/out.wav': there is no folder 'none'"},
      {"render @ in.wav .", "is a folder"},
      {"render @ in.wav out.xyz", "kind of sound file '.xyz'"},
      {"render @ in.wav out.wav --format mp3", "sample format 'mp3'"},
      {"render @ in.wav out.wav --set Volume=1", "no parameter 'Volume'"},
      {"render @ in.wav out.wav --set Mode=Pink", "Red, Green, BlueSky"},
      {"render @ in.wav out.wav --preset 3", "no preset '3'"},
      {"render @ in.wav out.wav --preset -1", "no preset '-1'"},
      {"render @ in.wav out.wav --preset Loud", "no preset 'Loud'"},
      {"render @ in.wav out.wav --automate missing.txt", "cannot read 'missing.txt'"},
      {"render @ in.wav out.wav --automate bad.txt", "bad.txt, line 2: 'loud' is no value"},
      {"render @ in.wav out.wav --midi missing.mid", "cannot read 'missing.mid'"},
      {"render @ in.wav out.wav --midi bad.mid", "'bad.mid': MIDI file"},
      {"render @ in.wav out.wav --state state.bin", "refused the state"},
      {"render @ in.wav out.wav --state missing.bin", "cannot read 'missing.bin'"},
      {"render @ in.wav out.wav --block 0", "block"},
      {"render @ in.wav out.wav --rate fast", "rate"},
      {"render @ in.wav out.wav --tail -1", "tail"},
      {"render --plugin missing.so in.wav out.wav", "no plug-in file 'missing.so'"},
      {"render --plugin text.wav in.wav out.wav", "cannot load"},
      {"params --plugin missing.so", "no plug-in file 'missing.so'"},
      {"bench --plugin missing.so", "no plug-in file 'missing.so'"},
      {"bench @", "no parameter 'CPUmode'"},
      {"bench @ --picture growth.png", "--growth"},
      {"bench @ --growth --json", "--json"},
      {"organ out.txt", "kind of sound file"},
      {"picture missing.wav out.png", "cannot read 'missing.wav'"},
      {"picture in.wav none/out.png", "cannot write 'none/out.png'"},
      {"picture in.wav out.jpg", "must end in .png"},
      {"report @ missing.wav in.wav", "cannot read 'missing.wav'"},
      {"report @ in.wav missing.wav", "cannot read 'missing.wav'"},
      {"render @ in.wav /dev/full", "cannot write '/dev/full': No space left"},
      {"params @ >/dev/full", "cannot write to standard output: No space left"},
      {"help polish", "polish"},
      {"picture in.wav out.png --automate missing.txt", "cannot read 'missing.txt'"},
  };
  const std::size_t before = m_folder.entries();
  for (const auto& c : cases) {
    const Finished got = brezan(c.arguments);
    EXPECT_GT(got.status, 0) << c.arguments;
    EXPECT_THAT(got.errors, HasSubstr(c.words)) << c.arguments;
    EXPECT_EQ(std::count(got.errors.begin(), got.errors.end(), '\n'), 1) << got.errors;
    EXPECT_EQ(got.output, "") << c.arguments;
    ASSERT_EQ(m_folder.entries(), before) << "left behind by: " << c.arguments;
  }
}

TEST_F(CommandLine, RendersWithSettingsFromEverySource) {
  const struct {
    const char* options;
    double sample;
  } cases[] = {
      {"", 0.25},
      {"--set Gain=norm:0.25", 0.125},
      {"--set Gain=norm:0.25 --set Gain=-12dB", 0.0625},
      {"--preset 1", 0.125},
      {"--preset 'half level' --set Gain=6", 0.5},
      {"--double --block 1 --format double", 0.25},
      {"--state saved.bin", 0.125},
      {"--mono", 0.25},
  };
  ASSERT_EQ(brezan("render @ in.wav x.wav --preset 1 --save-state saved.bin").status, 0);
  for (const auto& c : cases)
    for (const std::string input : {"in.wav", "mono.wav"}) {
      const Finished got = brezan("render @ " + input + " out.wav --tail 0 " + c.options);
      ASSERT_EQ(got.status, 0) << got.errors;
      EXPECT_EQ(got.errors, "") << "no progress bar where no terminal is";
      EXPECT_THAT(got.output, HasSubstr("out.wav: 0.10 s at 44100 Hz, peak "));
      EXPECT_NEAR(firstSample("out.wav"), c.sample, 2e-3) << c.options;
    }
}

TEST_F(CommandLine, LoudnessIsChangedMatchedAndListed) {
  sound("long.wav", 1, 44100);
  const std::pair<const char*, double> cases[] = {
      {"", 0.125}, {"--gain 6", 0.2494}, {"--match", 0.25}, {"--match --gain -12", 0.0628}};
  for (const auto& [options, sample] : cases) {
    ASSERT_EQ(
        brezan(std::string("render @ long.wav out.wav --tail 0 --set Gain=norm:0.25 ") + options)
            .status,
        0);
    EXPECT_NEAR(firstSample("out.wav"), sample, 2e-3) << options;
  }
  EXPECT_THAT(brezan("presets @ --loudness").output,
              testing::ContainsRegex("Half Level +-[0-9.]+ +-6\\.0\n"));
}

TEST_F(CommandLine, RunsAtAnotherRate) {
  ASSERT_EQ(brezan("render @ in.wav out.wav --rate 96000 --tail 0").status, 0);
  const qlx::tools::AudioInput out(m_folder / "out.wav");
  EXPECT_EQ(out.rate(), 96000.0);
  EXPECT_NEAR(static_cast<double>(out.frames()), 9600.0, 1.0);
}

TEST_F(CommandLine, WarnsWhenTheFormatCannotHoldThePeak) {
  const std::string loud = "render @ in.wav out.wav --set Gain=norm:1 --set Lever=Tremolo --tail 0";
  EXPECT_THAT(brezan(loud).errors, HasSubstr("warning: the peak is above full scale"));
  EXPECT_EQ(brezan(loud + " --format float").errors, "");
}

TEST_F(CommandLine, ListsAsTablesAndAsJson) {
  const Finished params = brezan("params @");
  EXPECT_EQ(params.status, 0);
  EXPECT_THAT(params.output, HasSubstr("index  name    value  display  unit"));
  EXPECT_THAT(params.output, HasSubstr("    2  Lever  0.0000  Chorale"));
  EXPECT_THAT(brezan("params @ --json").output,
              AllOf(HasSubstr("\"display\": \"Chorale\""), HasSubstr("\"highest\": \"Tremolo\"")));
  EXPECT_THAT(brezan("presets @").output, HasSubstr("     1  Half Level\n"));
  EXPECT_THAT(brezan("presets @ --json").output, HasSubstr("\"name\": \"Half Level\""));
  EXPECT_THAT(brezan("info @").output, HasSubstr("Test Effect\n"));
  EXPECT_THAT(brezan("info @ --json").output, HasSubstr("\"doublePrecision\": true"));
}

TEST_F(CommandLine, HelpShowsOptionsAndExamples) {
  EXPECT_THAT(brezan("--help").output, HasSubstr("render"));
  const Finished help = brezan("render --help");
  EXPECT_EQ(help.status, 0);
  for (const char* words : {"--preset", "--automate", "Type=Tube", "converted", "Examples:"})
    EXPECT_THAT(help.output, HasSubstr(words));
}

TEST_F(CommandLine, OutputsAreReplacedOrWrittenThroughAsTheirKindWants) {
  const struct {
    const char* before;
    const char* arguments;
    const char* after; // a shell's test
  } cases[] = {
      {"touch out.wav; chmod 600 out.wav", "in.wav out.wav", "test $(stat -c %a out.wav) = 600"},
      {"ln -sf new.wav link.wav", "in.wav link.wav", "test -L link.wav && test -s new.wav"},
      {"mkfifo pipe; cat pipe >piped.wav & true", "in.wav pipe",
       "sleep 0.2; test -p pipe && cmp piped.wav new.wav"},
      {"true", "in.wav - >stdout.wav", "cmp stdout.wav new.wav"},
      {"true", "- out.wav <in.wav", "cmp out.wav new.wav"},
      {"cat in.wav |", "- out.wav", "cmp out.wav new.wav"},
  };
  for (const auto& c : cases) {
    const std::string join = std::string(c.before).ends_with('|') ? " " : "; ";
    const Finished got =
        run("cd " + m_folder.path().string() + "; " + c.before + join + SHELL_WORD(BREZAN) +
            " render --plugin " SHELL_WORD(TEST_EFFECT) " --tail 0 " + c.arguments + " && { " +
            c.after + "; }");
    EXPECT_EQ(got.status, 0) << c.arguments << got.errors;
  }
}

TEST_F(CommandLine, TagsOfTheInputAreKept) {
  SF_INFO info{0, 44100, 1, SF_FORMAT_WAV | SF_FORMAT_PCM_16, 0, 0};
  SNDFILE* tagged = sf_open((m_folder / "tagged.wav").c_str(), SFM_WRITE, &info);
  sf_set_string(tagged, SF_STR_TITLE, "Prelude");
  sf_set_string(tagged, SF_STR_ARTIST, "An organist");
  const std::vector<double> sound(4410, 0.25);
  sf_write_double(tagged, sound.data(), 4410);
  sf_close(tagged);
  for (const std::string name : {"out.wav", "out.flac"}) {
    ASSERT_EQ(brezan("render @ tagged.wav " + name + " --tail 0.1").status, 0);
    const qlx::tools::AudioInput out(m_folder / name);
    EXPECT_STREQ(sf_get_string(out.file(), SF_STR_TITLE), "Prelude") << name;
    EXPECT_STREQ(sf_get_string(out.file(), SF_STR_ARTIST), "An organist") << name;
  }
}

TEST_F(CommandLine, WhatWasSetVersionAndHelpArePrinted) {
  EXPECT_THAT(brezan("render @ in.wav out.wav --set Gain=-6 --set mode=red").output,
              HasSubstr("set Gain -6.0 dB, Mode Red\n"));
  EXPECT_THAT(brezan("--version").output,
              testing::MatchesRegex("brezan [0-9]+\\.[0-9]+\\.[0-9]+\n"));
  EXPECT_THAT(brezan("help presets save").output, HasSubstr("FILE"));
}

TEST(ProgressBar, FitsTheTerminal) {
  for (const int columns : {10, 24, 40, 80}) {
    const std::string line = qlx::tools::progressLine(0.5, 123.0, columns);
    const auto width =
        std::count_if(line.begin(), line.end(), [](char c) { return (c & 0xC0) != 0x80; });
    EXPECT_LT(width, columns);
    EXPECT_GT(width, std::min(columns - 2, 20)) << line;
  }
}

TEST_F(CommandLine, AnInterruptedRenderLeavesTheOldFile) {
  write(m_folder / "out.wav", "old");
  const std::size_t before = m_folder.entries();
  for (const char* signal : {"INT", "HUP", "TERM"}) {
    // An endless tail in blocks of one frame keeps the program busy until it is stopped.
    const Finished got =
        run("cd " + m_folder.path().string() + " && timeout -s " + signal +
            " 1 " SHELL_WORD(BREZAN) " render mono.wav out.wav --plugin " SHELL_WORD(
                TEST_EFFECT) " --preset Endless --tail 3600 --block 1; test $? = 124");
    EXPECT_THAT(got.errors, HasSubstr("brezan: interrupted\n")) << signal;
    EXPECT_EQ(contents(m_folder / "out.wav"), "old");
    EXPECT_EQ(m_folder.entries(), before) << signal;
  }
}

TEST_F(CommandLine, OrganAndPictureMakeTheirFiles) {
  ASSERT_EQ(brezan("organ o.wav --midi o.mid --automation o.txt --rate 22050").status, 0);
  const Finished drawn = brezan("picture o.wav o.png --midi o.mid --automate o.txt");
  EXPECT_EQ(drawn.status, 0);
  EXPECT_EQ(std::count(drawn.output.begin(), drawn.output.end(), '\n'), 6) << drawn.output;
  EXPECT_EQ(contents(m_folder / "o.png").substr(1, 3), "PNG");
}

} // namespace qlx::test
