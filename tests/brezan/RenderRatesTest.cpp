// SPDX-License-Identifier: ISC
// A render sounds alike whatever the file's rate: two tones through `brezan render`, compared with
// the same at 48 kHz.
#include "brezan/sound/AudioFile.h"
#include "tests/support/CommandRun.h"

#include <algorithm>
#include <cmath>
#include <complex>
#include <cstdlib>
#include <kissfft/kissfft.hh>
#include <numbers>
#include <numeric>

namespace qlx::test {
using namespace tools;
namespace {

// Tells the rotors apart; a spectrum's bins are its reciprocal apart. Shorter, lines that are close
// together drown each other in one spectrum and not in the other.
constexpr double kSeconds = 8.0;
constexpr double kTonesHz[] = {1000.0, 150.0};

struct Heard {
  double levelDb[2];       // of the tones
  std::vector<double> bin; // power, both channels
};

double db(double power) { return 10.0 * std::log10(power); }

std::vector<double> spectrum(const std::vector<double>& sound, std::size_t channel,
                             std::size_t frames) {
  std::vector<std::complex<double>> windowed(frames), bins(frames);
  for (std::size_t i = 0; i < frames; ++i)
    windowed[i] =
        sound[2 * i + channel] * (1.0 - std::cos(2.0 * std::numbers::pi * static_cast<double>(i) /
                                                 static_cast<double>(frames)));
  kissfft<double>(frames, false).transform(windowed.data(), bins.data());
  bins.resize(frames / 2 + 1);
  std::vector<double> power;
  for (const auto& bin : bins) power.push_back(std::norm(2.0 * bin / static_cast<double>(frames)));
  return power;
}

class RenderRates : public testing::TestWithParam<const char*> {
 protected:
  RenderRates() { setenv("XDG_CONFIG_HOME", (m_folder / "config").c_str(), 1); }

  // `own`: the plug-in is to run at the file's rate.
  Heard hear(double rate, bool own) {
    const auto frames = static_cast<std::size_t>(kSeconds * rate);
    {
      AudioOutput dry(m_folder / "dry.wav", "float", rate, 1);
      std::vector<double> sound(frames);
      for (std::size_t i = 0; i < frames; ++i)
        for (const double hz : kTonesHz)
          sound[i] += 0.1 * std::sin(2.0 * std::numbers::pi * hz * static_cast<double>(i) / rate);
      dry.write(sound);
      dry.finish();
    }
    const auto done =
        run("cd " + m_folder.path().string() +
            " && " SHELL_WORD(BREZAN) " render dry.wav wet.wav --plugin " SHELL_WORD(
                PLUGIN) " --format float --tail 0 --settle 12 --set Lever=Tremolo --set CPUmode=" +
            GetParam());
    EXPECT_EQ(done.status, 0) << done.errors;
    EXPECT_EQ(done.output.find("converted there and back") != std::string::npos, !own)
        << done.output;
    AudioInput wet(m_folder / "wet.wav");
    EXPECT_EQ(wet.rate(), rate);
    EXPECT_EQ(wet.frames(), static_cast<long long>(frames));
    std::vector<double> sound(2 * frames);
    wet.read(sound);
    Heard heard;
    heard.bin = spectrum(sound, 0, frames);
    const std::vector<double> right = spectrum(sound, 1, frames);
    for (std::size_t i = 0; i < heard.bin.size(); ++i) heard.bin[i] += right[i];
    // With what the rotor makes of them beside it.
    for (std::size_t t = 0; t < std::size(kTonesHz); ++t) {
      const auto from =
          heard.bin.begin() + static_cast<std::ptrdiff_t>((kTonesHz[t] - 70.0) * kSeconds);
      const auto to =
          heard.bin.begin() + static_cast<std::ptrdiff_t>((kTonesHz[t] + 70.0) * kSeconds);
      heard.levelDb[t] = db(std::accumulate(from, to, 0.0));
    }
    return heard;
  }

  TemporaryFolder m_folder;
};

// Of an ordinary run: every way of conversion. QLX_ALL_RATES=1 in the environment takes all.
std::vector<double> rates(const std::string& quality) {
  if (std::getenv("QLX_ALL_RATES") != nullptr)
    return {8000.0,  11025.0, 16000.0, 22050.0,  24000.0,  32000.0,  44100.0,  48000.0,
            64000.0, 88200.0, 96000.0, 128000.0, 176400.0, 192000.0, 250000.0, 384000.0};
  if (quality == "LowCPU")
    return {8000.0, 22050.0, 24000.0, 32000.0, 44100.0, 96000.0, 192000.0, 384000.0};
  return {8000.0, 44100.0, 96000.0, 384000.0};
}

// A rotor at another speed has its side lines elsewhere, too.
// The strongest bin, in dB below the strongest of all, that has nothing like it (6 dB, 1.5 Hz) in
// the other spectrum; up to a frequency.
double strongestStranger(const std::vector<double>& bins, const std::vector<double>& others,
                         double highestHz) {
  constexpr std::size_t kNear = 12;
  const double top = *std::max_element(bins.begin(), bins.end());
  double worst = 0.0;
  for (std::size_t i = 0; i < std::min(bins.size(), static_cast<std::size_t>(highestHz * kSeconds));
       ++i) {
    double like = 0.0;
    for (std::size_t k = i < kNear ? 0 : i - kNear; k < std::min(others.size(), i + kNear + 1); ++k)
      like = std::max(like, others[k]);
    if (like < bins[i] / 4.0) worst = std::max(worst, bins[i]);
  }
  return db(worst / top);
}

} // namespace

TEST_P(RenderRates, SoundAlike) {
  const Heard reference = hear(48000.0, true);
  for (const double rate : rates(GetParam())) {
    SCOPED_TRACE(rate);
    const bool octaveHigher =
        rate == 88200.0 || rate == 96000.0 || rate == 176400.0 || rate == 192000.0;
    const Heard heard = hear(rate, octaveHigher || rate == 44100.0 || rate == 48000.0);
    // An octave and two higher the plug-in itself gives images of its cabinet's rate from 21 kHz
    // on, -40 dB at most.
    const double stranger =
        strongestStranger(heard.bin, reference.bin, octaveHigher ? 20000.0 : 0.5 * rate);
    for (std::size_t t = 0; t < std::size(kTonesHz); ++t)
      EXPECT_NEAR(heard.levelDb[t], reference.levelDb[t], 1.0) << kTonesHz[t];
    EXPECT_LT(stranger, -60.0);
  }
}

INSTANTIATE_TEST_SUITE_P(Slow, RenderRates, testing::Values("LowCPU", "Brilliant"),
                         [](const auto& quality) { return std::string(quality.param); });

} // namespace qlx::test
