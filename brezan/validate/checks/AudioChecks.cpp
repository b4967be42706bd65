// SPDX-License-Identifier: ISC
// Blocks of every size at every rate. The buffers of all of these end at a page that nobody may
// touch, the inputs cannot be written to, and outputs are marked beforehand.
#include "brezan/validate/checks/AudioRun.h"
#include "brezan/validate/host/FloatingPointMode.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <limits>
#include <string>

namespace qlx::validate {

namespace {

constexpr double kRate = 48000.0;
constexpr int kBlock = 512;
constexpr std::array<double, 13> kRates = {1234.5678, 8000.0,   11025.0, 16000.0, 22050.0,
                                           32000.0,   44100.0,  48000.0, 88200.0, 96000.0,
                                           192000.0,  384000.0, 768000.0};

/// Calls `what` for float and, where the effect has it, for double.
template <typename What>
void inBothPrecisions(const Effect& effect, What what) {
  what(float{});
  if (effect.has(sdk::kCanDoubleReplacing)) what(double{});
}

template <typename Sample>
std::string precisionName() {
  return sizeof(Sample) == 4 ? "single precision" : "double precision";
}

/// Plays blocks of random length up to `longest`, for so many seconds.
template <typename Sample>
void playVaried(const Effect& effect, double rate, int longest) {
  AudioRun<Sample> audio(effect, longest);
  TestSound sound(effect.run().random());
  int left = framesOf(effect.run().seconds(), rate);
  while (left > 0) {
    const int frames = std::min(left, effect.run().random().between(1, longest));
    audio.process(frames, std::ref(sound));
    left -= frames;
  }
}

void rates(CheckRun& run) {
  const Effect effect(run);
  for (const double rate : kRates)
    inBothPrecisions(effect, [&](auto sample) {
      run.trying(std::to_string(rate) + " Hz, " + precisionName<decltype(sample)>());
      effect.mains(false);
      effect.start(rate, kBlock);
      playVaried<decltype(sample)>(effect, rate, kBlock);
    });
}

void blocks(CheckRun& run) {
  for (const int size : {1, 2, 3, 7, 16, 31, 64, 441, 512, 1000, 1024, 4096, 8192, 16384}) {
    const Effect effect(run);
    effect.start(kRate, size);
    inBothPrecisions(effect, [&](auto sample) {
      run.trying("blocks of " + std::to_string(size) + ", " + precisionName<decltype(sample)>());
      AudioRun<decltype(sample)> audio(effect, size);
      TestSound sound(run.random());
      const int count = std::max(3, framesOf(run.seconds(), kRate) / 14 / size);
      for (int i = 0; i < count; ++i) audio.process(size, std::ref(sound));
    });
  }
}

void larger(CheckRun& run) {
  const Effect effect(run);
  for (const int announced : {1, 64, 512}) {
    effect.mains(false);
    effect.start(kRate, announced);
    inBothPrecisions(effect, [&](auto sample) {
      run.trying("blocks of up to 16384 where " + std::to_string(announced) + " was announced, " +
                 precisionName<decltype(sample)>());
      playVaried<decltype(sample)>(effect, kRate, 16384);
    });
  }
}

void noFrames(CheckRun& run) {
  const Effect effect(run);
  effect.start(kRate, kBlock);
  inBothPrecisions(effect, [&](auto sample) {
    run.trying("blocks of 0 frames, " + precisionName<decltype(sample)>());
    AudioRun<decltype(sample)> audio(effect, kBlock);
    TestSound sound(run.random());
    for (const int frames : {0, 64, 0, 0, 512, 0}) audio.process(frames, std::ref(sound));
  });
}

void inputs(CheckRun& run) {
  const Effect effect(run);
  effect.start(kRate, kBlock);
  inBothPrecisions(effect, [&](auto sample) {
    run.trying("inputs in memory that cannot be written to, " + precisionName<decltype(sample)>());
    play<decltype(sample)>(effect, framesOf(run.seconds(), kRate), kBlock);
  });
}

template <typename Sample>
std::vector<Sample> playNew(CheckRun& run, Layout layout = Layout::Apart) {
  const Effect effect(run);
  effect.start(kRate, kBlock);
  return play<Sample>(effect, framesOf(run.seconds(), kRate), kBlock, layout);
}

/// The sound must not depend on where the buffers lie, unless it differs from run to run anyway.
void sameIn(CheckRun& run, Layout layout) {
  inBothPrecisions(Effect(run), [&](auto sample) {
    using Sample = decltype(sample);
    run.trying(precisionName<Sample>());
    const std::vector<Sample> apart = playNew<Sample>(run);
    const std::vector<Sample> other = playNew<Sample>(run, layout);
    const auto differs = std::mismatch(apart.begin(), apart.end(), other.begin()).first;
    if (differs == apart.end() || apart != playNew<Sample>(run)) return;
    run.fail("sample " + std::to_string(differs - apart.begin()) +
             " differs from that with buffers apart");
  });
}

void inPlace(CheckRun& run) { sameIn(run, Layout::InPlace); }
void crossed(CheckRun& run) { sameIn(run, Layout::Crossed); }

void precision(CheckRun& run) {
  if (!Effect(run).has(sdk::kCanDoubleReplacing)) run.skip("it has single precision only");
  const std::vector<float> single = playNew<float>(run);
  if (single != playNew<float>(run)) run.skip("the sound differs from run to run");
  const std::vector<double> exact = playNew<double>(run);
  double power = 0.0, error = 0.0;
  for (std::size_t i = 0; i < exact.size(); ++i) {
    power += exact[i] * exact[i];
    error += std::pow(exact[i] - static_cast<double>(single[i]), 2);
  }
  run.require(error <= 1e-6 * power, "single and double precision differ by more than -60 dB");
}

void settings(CheckRun& run) {
  const Effect effect(run);
  effect.start(kRate, kBlock);
  for (int i = run.rounds(3, 60); i > 0; --i) {
    effect.randomizeValues();
    inBothPrecisions(
        effect, [&](auto sample) { playVaried<decltype(sample)>(effect, kRate / 10, kBlock); });
  }
}

/// Fails for a stretch of subnormal output: as slow as it is useless.
template <typename Sample>
void decay(const Effect& effect) {
  constexpr int kLongest = 64;
  CheckRun& run = effect.run();
  AudioRun<Sample> audio(effect, kBlock);
  TestSound sound(run.random());
  for (int i = 0; i < 50; ++i) audio.process(kBlock, std::ref(sound));
  int stretch = 0;
  for (int left = framesOf(8.0 * run.seconds(), kRate); left > 0; left -= kBlock) {
    audio.process(kBlock, [](int) { return 0.0; });
    for (int c = 0; c < audio.outputs(); ++c)
      for (int i = 0; i < kBlock; ++i) {
        stretch = std::fpclassify(audio.output(c)[i]) == FP_SUBNORMAL ? stretch + 1 : 0;
        run.require(stretch <= kLongest, "the output goes on in subnormal numbers");
      }
  }
}

void subnormals(CheckRun& run) {
  const Effect effect(run);
  effect.start(kRate, kBlock);
  inBothPrecisions(effect, [&](auto sample) {
    run.trying("silence after sound, " + precisionName<decltype(sample)>());
    decay<decltype(sample)>(effect);
  });
}

template <typename Sample>
void burst(const Effect& effect, double value) {
  CheckRun& run = effect.run();
  AudioRun<Sample> audio(effect, kBlock);
  TestSound sound(run.random());
  for (int i = 0; i < 8; ++i) audio.process(kBlock, std::ref(sound));
  audio.process(
      64, [value](int) { return value; }, false);
  for (int left = framesOf(std::max(2.0, run.seconds()), kRate); left > 0; left -= kBlock)
    audio.process(kBlock, std::ref(sound), false);
  for (int i = 0; i < 8; ++i) audio.process(kBlock, std::ref(sound));
}

void recovery(CheckRun& run) {
  const Effect effect(run);
  effect.start(kRate, kBlock);
  constexpr double kInfinite = std::numeric_limits<double>::infinity();
  inBothPrecisions(effect, [&](auto sample) {
    for (const double value : {std::numeric_limits<double>::quiet_NaN(), kInfinite, -kInfinite,
                               static_cast<double>(std::numeric_limits<float>::max()), 1e-310}) {
      run.trying("two seconds after 64 input samples of " + std::to_string(value) + ", " +
                 precisionName<decltype(sample)>());
      burst<decltype(sample)>(effect, value);
    }
  });
}

void floatingPointMode(CheckRun& run) {
  const Effect effect(run);
  effect.start(kRate, kBlock);
  inBothPrecisions(effect, [&](auto sample) {
    const FloatingPointMode before;
    play<decltype(sample)>(effect, 4 * kBlock, kBlock);
    run.require(FloatingPointMode() == before,
                "the processor's floating-point mode is another one after a block");
  });
}

constexpr Check kChecks[] = {
    {"audio", "rates", 1, "13 rates from 1234.5678 Hz to 768 kHz, blocks of random length", rates},
    {"audio", "blocks", 1, "blocks of 1 to 16384 frames", blocks},
    {"audio", "larger", 2, "blocks longer than announced", larger},
    {"audio", "no-frames", 2, "blocks of 0 frames", noFrames},
    {"audio", "inputs", 1, "inputs are not written to", inputs},
    {"audio", "in-place", 2, "outputs in the memory of their inputs", inPlace},
    {"audio", "crossed", 7, "outputs in the memory of the other channel's input", crossed},
    {"audio", "precision", 2, "double precision gives the sound of single", precision},
    {"audio", "settings", 2, "random parameters: the output stays finite", settings},
    {"audio", "subnormals", 3, "silence after sound does not end in subnormal numbers", subnormals},
    {"audio", "recovery", 3, "sound two seconds after bursts of NaN, infinity and huge numbers",
     recovery},
    {"audio", "fp-mode", 3, "the processor's floating-point mode is as it was", floatingPointMode},
};

} // namespace

std::span<const Check> audioChecks() { return kChecks; }

} // namespace qlx::validate
