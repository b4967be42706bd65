// SPDX-License-Identifier: ISC
// A render sounds alike whatever the file's rate: two tones through `brezan render`, compared with
// the same at 48 kHz.
#include "brezan/sound/AudioFile.h"
#include "tests/support/CommandRun.h"

#include <algorithm>
#include <cmath>
#include <complex>
#include <cstdlib>
#include <fftw3.h>
#include <numbers>

namespace qlx::test {
using namespace tools;
namespace {

constexpr double kSeconds =
    8.0; // tells the rotors apart; a spectrum's bins are its reciprocal apart
struct Tone {
  double hz;
  double turnsPerSecond; // of the rotor that carries it, fast, first preset
};
constexpr Tone kTones[] = {{1000.0, 6.77}, {150.0, 6.53}};

struct Heard {
  double rotor[2];         // revolutions a second
  double levelDb[2];       // of the tones
  std::vector<double> bin; // power, both channels
};

double db(double power) { return 10.0 * std::log10(power); }

std::vector<double> spectrum(const std::vector<double>& sound, std::size_t channel,
                             std::size_t frames) {
  std::vector<double> windowed(frames);
  std::vector<std::complex<double>> bins(frames / 2 + 1);
  for (std::size_t i = 0; i < frames; ++i)
    windowed[i] =
        sound[2 * i + channel] * (1.0 - std::cos(2.0 * std::numbers::pi * static_cast<double>(i) /
                                                 static_cast<double>(frames)));
  fftw_plan plan =
      fftw_plan_dft_r2c_1d(static_cast<int>(frames), windowed.data(),
                           reinterpret_cast<fftw_complex*>(bins.data()), FFTW_ESTIMATE);
  fftw_execute(plan);
  fftw_destroy_plan(plan);
  std::vector<double> power;
  for (const auto& bin : bins) power.push_back(std::norm(2.0 * bin / static_cast<double>(frames)));
  return power;
}

// The tone's amplitude and phase every 10 ms, each the mean under a raised cosine of 40 ms.
std::vector<std::complex<double>> course(const std::vector<double>& sound, double rate, double hz) {
  std::vector<std::complex<double>> values;
  const auto length = static_cast<std::size_t>(0.04 * rate);
  for (int step = 0; (0.01 * step + 0.05) < kSeconds; ++step) {
    const auto first = static_cast<std::size_t>(0.01 * step * rate);
    std::complex<double> sum = 0.0;
    for (std::size_t i = 0; i < length; ++i) {
      const double turn = 2.0 * std::numbers::pi * hz * static_cast<double>(first + i) / rate;
      const double way = static_cast<double>(i) / static_cast<double>(length);
      sum += std::polar(sound[2 * (first + i)] * (1.0 - std::cos(2.0 * std::numbers::pi * way)),
                        -turn);
    }
    values.push_back(2.0 * sum / static_cast<double>(length));
  }
  return values;
}

// The strongest swing of the tone's level between 2 and 12 a second.
double swingRate(const std::vector<std::complex<double>>& tone) {
  double mean = 0.0;
  for (const auto& value : tone) mean += std::abs(value) / static_cast<double>(tone.size());
  double best = 0.0;
  double most = 0.0;
  for (double hz = 2.0; hz < 12.0; hz += 0.005) {
    std::complex<double> line = 0.0;
    for (std::size_t i = 0; i < tone.size(); ++i) {
      const auto now = static_cast<double>(i);
      const double window =
          1.0 - std::cos(2.0 * std::numbers::pi * now / static_cast<double>(tone.size()));
      line += std::polar((std::abs(tone[i]) - mean) * window,
                         -2.0 * std::numbers::pi * hz * 0.01 * now);
    }
    if (std::abs(line) > most) {
      most = std::abs(line);
      best = hz;
    }
  }
  return best;
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
        for (const Tone& tone : kTones)
          sound[i] +=
              0.1 * std::sin(2.0 * std::numbers::pi * tone.hz * static_cast<double>(i) / rate);
      dry.write(sound);
      dry.finish();
    }
    const auto done =
        run("cd " + m_folder.path().string() +
            " && " BREZAN " render dry.wav wet.wav --plugin " PLUGIN
            " --format float --tail 0 --settle 12 --set Lever=Tremolo --set CPUmode=" +
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
    for (std::size_t t = 0; t < std::size(kTones); ++t) {
      const auto tone = course(sound, rate, kTones[t].hz);
      double power = 0.0;
      for (const auto& value : tone) power += std::norm(value) / static_cast<double>(tone.size());
      heard.levelDb[t] = db(power);
      heard.rotor[t] = swingRate(tone);
    }
    heard.bin = spectrum(sound, 0, frames);
    const std::vector<double> right = spectrum(sound, 1, frames);
    for (std::size_t i = 0; i < heard.bin.size(); ++i) heard.bin[i] += right[i];
    return heard;
  }

  TemporaryFolder m_folder;
};

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
  for (const double rate :
       {8000.0, 11025.0, 16000.0, 22050.0, 24000.0, 32000.0, 44100.0, 48000.0, 64000.0, 88200.0,
        96000.0, 128000.0, 176400.0, 192000.0, 250000.0, 384000.0}) {
    SCOPED_TRACE(rate);
    const bool octaveHigher =
        rate == 88200.0 || rate == 96000.0 || rate == 176400.0 || rate == 192000.0;
    const Heard heard = hear(rate, octaveHigher || rate == 44100.0 || rate == 48000.0);
    // An octave and two higher the plug-in itself gives images of its cabinet's rate from 21 kHz
    // on, -40 dB at most.
    const double stranger =
        strongestStranger(heard.bin, reference.bin, octaveHigher ? 20000.0 : 0.5 * rate);
    std::printf("%s %6.0f Hz: horn %.3f drum %.3f rev/s, level %+.2f %+.2f dB, stranger %.1f dB\n",
                GetParam(), rate, heard.rotor[0], heard.rotor[1],
                heard.levelDb[0] - reference.levelDb[0], heard.levelDb[1] - reference.levelDb[1],
                stranger);
    for (std::size_t t = 0; t < std::size(kTones); ++t) {
      EXPECT_NEAR(heard.rotor[t] / kTones[t].turnsPerSecond, 1.0, 0.01);
      EXPECT_NEAR(heard.levelDb[t], reference.levelDb[t], 1.0);
    }
    EXPECT_LT(stranger, -60.0);
  }
}

INSTANTIATE_TEST_SUITE_P(Slow, RenderRates, testing::Values("LowCPU", "Brilliant"),
                         [](const auto& quality) { return std::string(quality.param); });

} // namespace qlx::test
