// SPDX-License-Identifier: ISC
#include "brezan/sound/AudioFile.h"
#include "tests/support/CommandRun.h"

#include <gmock/gmock.h>

#include <cmath>
#include <numbers>

namespace qlx::test {
using namespace tools;
namespace {

std::vector<double> sine(double frequency, double rate, std::size_t frames, double level) {
  std::vector<double> wave(frames);
  for (std::size_t i = 0; i < frames; ++i)
    wave[i] = level * std::sin(2.0 * std::numbers::pi * frequency * static_cast<double>(i) / rate);
  return wave;
}

void save(const std::filesystem::path& path, const std::string& format, double rate, int channels,
          const std::vector<double>& samples) {
  AudioOutput out(path, format, rate, channels);
  out.write(samples);
  out.finish();
}

std::vector<double> load(AudioInput& in, std::size_t block) {
  std::vector<double> all;
  std::vector<double> part(block * static_cast<std::size_t>(in.channels()));
  for (int got = in.read(part); got > 0; got = in.read(part))
    all.insert(all.end(), part.begin(), part.begin() + got * in.channels());
  return all;
}

} // namespace

TEST(AudioFile, KeepsSamplesInEveryFormat) {
  const TemporaryFolder folder;
  const struct {
    const char* name;
    const char* format;
    double tolerance;
  } cases[] = {
      {"a.wav", "pcm16", 0x1p-15},  {"a.wav", "pcm24", 0x1p-23}, {"a.wav", "pcm32", 0x1p-31},
      {"a.wav", "float", 0x1p-24},  {"a.wav", "double", 0.0},    {"a.aiff", "pcm24", 0x1p-23},
      {"a.flac", "pcm24", 0x1p-23}, {"A.WAV", "PCM24", 0x1p-23}, {"a.w64", "float", 0x1p-24}};
  const std::vector<double> samples = sine(441.0, 44100.0, 1000, 0.9);
  for (const auto& c : cases) {
    SCOPED_TRACE(std::string(c.name) + " " + c.format);
    save(folder / c.name, c.format, 44100.0, 2, samples);
    AudioInput in(folder / c.name);
    EXPECT_EQ(in.channels(), 2);
    EXPECT_EQ(in.rate(), 44100.0);
    EXPECT_EQ(in.frames(), 500);
    const std::vector<double> got = load(in, 77);
    ASSERT_EQ(got.size(), samples.size());
    for (std::size_t i = 0; i < got.size(); ++i) ASSERT_NEAR(got[i], samples[i], c.tolerance) << i;
  }
}

TEST(AudioFile, ConvertsRates) {
  const TemporaryFolder folder;
  save(folder / "a.wav", "float", 44100.0, 1, sine(1000.0, 44100.0, 44100, 0.5));
  for (const double rate : {22050.0, 48000.0, 96000.0}) {
    AudioInput in(folder / "a.wav", rate);
    EXPECT_EQ(in.rate(), rate);
    const std::vector<double> got = load(in, 512);
    EXPECT_NEAR(static_cast<double>(got.size()), rate, 1.0);
    const std::vector<double> expected = sine(1000.0, rate, got.size(), 0.5);
    double worst = 0.0;
    for (std::size_t i = got.size() / 8; i < got.size() * 7 / 8; ++i)
      worst = std::max(worst, std::abs(got[i] - expected[i]));
    EXPECT_LT(worst, 1e-4) << rate << " Hz: level, pitch and place in time";
  }
}

TEST(AudioFile, ConvertsWhatIsWritten) {
  const TemporaryFolder folder;
  for (const double rate : {8000.0, 11025.0, 44100.0, 250000.0}) {
    OutputSettings settings{"float", rate, 1};
    settings.sourceRate = 48000.0;
    AudioOutput out(folder / "a.wav", settings);
    const std::vector<double> written = sine(1000.0, 48000.0, 24000, 0.5);
    for (std::size_t i = 0; i < written.size(); i += 100)
      out.write(std::span(written).subspan(i, 100));
    out.finish();
    AudioInput in(folder / "a.wav");
    const std::vector<double> got = load(in, 512);
    EXPECT_EQ(static_cast<double>(got.size()), std::round(0.5 * rate));
    EXPECT_EQ(out.frames(), in.frames());
    const std::vector<double> expected = sine(1000.0, rate, got.size(), 0.5);
    double worst = 0.0;
    for (std::size_t i = got.size() / 8; i < got.size() * 7 / 8; ++i)
      worst = std::max(worst, std::abs(got[i] - expected[i]));
    EXPECT_LT(worst, 1e-4) << rate;
  }
}

TEST(AudioFile, WhatMayGrowPastFourGibibytesHasRoomForWiderSizes) {
  const TemporaryFolder folder;
  const std::vector<double> samples = sine(441.0, 44100.0, 1000, 0.9);
  for (const auto& [frames, chunk] : {std::pair{700000000LL, "fmt "}, {720000000LL, "JUNK"}}) {
    OutputSettings settings{"pcm24", 44100.0, 2};
    settings.mostFrames = frames;
    AudioOutput out(folder / "a.wav", settings);
    out.write(samples);
    out.finish();
    // The 64-bit sizes of RF64 would stand in a chunk at byte 12; small after all, it is a WAV.
    const std::string bytes = contents(folder / "a.wav");
    EXPECT_EQ(bytes.substr(0, 4), "RIFF");
    EXPECT_EQ(bytes.substr(12, 4), chunk);
    AudioInput in(folder / "a.wav");
    EXPECT_EQ(load(in, 512).size(), samples.size());
  }
}

TEST(AudioFile, GainAndLoudness) {
  const TemporaryFolder folder;
  // A sine in both channels has as many LUFS as its peak has decibels, the K weighting being 0 dB
  // at 997 Hz; one channel counts as two.
  for (const int channels : {1, 2})
    for (const double rate : {22050.0, 44100.0, 192000.0}) {
      const double level = std::pow(10.0, -30.0 / 20.0);
      std::vector<double> sound;
      for (const double sample : sine(997.0, rate, static_cast<std::size_t>(2.0 * rate), level))
        sound.insert(sound.end(), static_cast<std::size_t>(channels), sample);
      LoudnessMeter meter(channels, rate);
      meter.add(sound);
      EXPECT_NEAR(meter.integrated(), -30.0, 0.1);
      OutputSettings settings{"float", rate, channels};
      settings.gain = 0.5;
      for (const bool matching : {false, true}) {
        settings.matching = matching;
        AudioOutput out(folder / "a.wav", settings);
        out.write(sound);
        out.finish(matching ? std::optional(-18.0) : std::nullopt);
        const double expected = (matching ? std::pow(10.0, -18.0 / 20.0) : level) / 2.0;
        EXPECT_NEAR(out.peak() / expected, 1.0, 0.02);
        AudioInput in(folder / "a.wav");
        in.measureLoudness();
        load(in, 1000);
        EXPECT_NEAR(in.loudness(), 20.0 * std::log10(expected), 0.1);
      }
    }
  OutputSettings settings{"float", 44100.0, 1};
  settings.matching = true;
  AudioOutput silent(folder / "a.wav", settings);
  silent.write(std::vector<double>(44100));
  silent.finish(-18.0);
  EXPECT_EQ(silent.peak(), 0.0);
  EXPECT_EQ(silent.gain(), 1.0);
}

TEST(AudioFile, EqualSoundsAreEqualFiles) {
  const TemporaryFolder folder;
  save(folder / "a.wav", "float", 48000.0, 2, sine(100.0, 48000.0, 200, 0.3));
  save(folder / "b.wav", "float", 48000.0, 2, sine(100.0, 48000.0, 200, 0.3));
  EXPECT_EQ(contents(folder / "a.wav").find("PEAK"), std::string::npos);
  EXPECT_EQ(contents(folder / "a.wav"), contents(folder / "b.wav"));
}

TEST(AudioFile, CutsAtFullScaleAndSaysSo) {
  const TemporaryFolder folder;
  for (const char* format : {"pcm16", "pcm24", "float"}) {
    const bool integer = std::string(format) != "float";
    AudioOutput out(folder / "a.wav", format, 44100.0, 1);
    out.write(std::vector<double>{0.5, 1.5, -1.5});
    EXPECT_EQ(out.peak(), 1.5);
    EXPECT_EQ(out.clipped(), integer);
    out.finish();
    AudioInput in(folder / "a.wav");
    const std::vector<double> got = load(in, 8);
    EXPECT_NEAR(got[1], integer ? 1.0 : 1.5, 1e-4) << "not wrapped round";
    EXPECT_NEAR(got[2], integer ? -1.0 : -1.5, 1e-4);
  }
}

TEST(AudioFile, RefusesWithAReason) {
  const TemporaryFolder folder;
  save(folder / "surround.wav", "pcm16", 44100.0, 4, std::vector<double>(40, 0.1));
  write(folder / "text.wav", "no sound at all");
  using testing::HasSubstr;
  using testing::ThrowsMessage;
  const auto reading = [&](const char* name) {
    return [&, name] { AudioInput in(folder / name); };
  };
  const auto writing = [&](const char* name, const char* format) {
    return [&, name, format] { AudioOutput out(folder / name, format, 44100.0, 2); };
  };
  using Error = std::runtime_error;
  EXPECT_THAT(reading("surround.wav"), ThrowsMessage<Error>(HasSubstr("4 channels")));
  EXPECT_THAT(reading("text.wav"), ThrowsMessage<Error>(HasSubstr("cannot read")));
  EXPECT_THAT(reading("missing.wav"), ThrowsMessage<Error>(HasSubstr("cannot read")));
  EXPECT_THAT(writing("a.xyz", "pcm24"), ThrowsMessage<Error>(HasSubstr(".flac")));
  EXPECT_THAT(writing("a.wav", "pcm23"), ThrowsMessage<Error>(HasSubstr("pcm24")));
  EXPECT_THAT(writing("a.flac", "float"), ThrowsMessage<Error>(HasSubstr("cannot hold")));
  EXPECT_THAT(writing("none/a.wav", "pcm24"), ThrowsMessage<Error>(HasSubstr("cannot write")));
  EXPECT_EQ(folder.entries(), 2U) << "a refusal leaves nothing behind";
}

TEST(AudioFile, AppearsOnlyWhenFinished) {
  const TemporaryFolder folder;
  write(folder / "a.wav", "the old file");
  {
    AudioOutput out(folder / "a.wav", "pcm24", 44100.0, 1);
    out.write(std::vector<double>(100, 0.5));
    EXPECT_EQ(contents(folder / "a.wav"), "the old file");
  }
  EXPECT_EQ(contents(folder / "a.wav"), "the old file") << "given up, not finished";
  EXPECT_EQ(folder.entries(), 1U);
}

TEST(AudioFile, ALinkStaysALink) {
  const TemporaryFolder folder;
  write(folder / "real.wav", "old");
  std::filesystem::create_symlink("real.wav", folder / "link.wav");
  save(folder / "link.wav", "pcm16", 44100.0, 1, {0.5});
  EXPECT_TRUE(std::filesystem::is_symlink(folder / "link.wav"));
  EXPECT_EQ(AudioInput(folder / "real.wav").frames(), 1);
}

} // namespace qlx::test
