#include "tools/brezan/AudioFile.h"
#include "tests/tools/CommandRun.h"

#include <gmock/gmock.h>

#include <cmath>
#include <numbers>

using namespace qlx::tools;
using qlx::tests::TemporaryFolder;

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

TEST(AudioFile, keepsSamplesInEveryFormat) {
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

TEST(AudioFile, convertsRates) {
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

TEST(AudioFile, equalSoundsAreEqualFiles) {
  const TemporaryFolder folder;
  save(folder / "a.wav", "float", 48000.0, 2, sine(100.0, 48000.0, 200, 0.3));
  save(folder / "b.wav", "float", 48000.0, 2, sine(100.0, 48000.0, 200, 0.3));
  EXPECT_EQ(qlx::tests::contents(folder / "a.wav").find("PEAK"), std::string::npos);
  EXPECT_EQ(qlx::tests::contents(folder / "a.wav"), qlx::tests::contents(folder / "b.wav"));
}

TEST(AudioFile, cutsAtFullScaleAndSaysSo) {
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

TEST(AudioFile, refusesWithAReason) {
  const TemporaryFolder folder;
  save(folder / "surround.wav", "pcm16", 44100.0, 4, std::vector<double>(40, 0.1));
  qlx::tests::write(folder / "text.wav", "no sound at all");
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

TEST(AudioFile, appearsOnlyWhenFinished) {
  const TemporaryFolder folder;
  qlx::tests::write(folder / "a.wav", "the old file");
  {
    AudioOutput out(folder / "a.wav", "pcm24", 44100.0, 1);
    out.write(std::vector<double>(100, 0.5));
    EXPECT_EQ(qlx::tests::contents(folder / "a.wav"), "the old file");
  }
  EXPECT_EQ(qlx::tests::contents(folder / "a.wav"), "the old file") << "given up, not finished";
  EXPECT_EQ(folder.entries(), 1U);
}

TEST(AudioFile, aLinkStaysALink) {
  const TemporaryFolder folder;
  qlx::tests::write(folder / "real.wav", "old");
  std::filesystem::create_symlink("real.wav", folder / "link.wav");
  save(folder / "link.wav", "pcm16", 44100.0, 1, {0.5});
  EXPECT_TRUE(std::filesystem::is_symlink(folder / "link.wav"));
  EXPECT_EQ(AudioInput(folder / "real.wav").frames(), 1);
}
