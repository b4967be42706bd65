// SPDX-License-Identifier: ISC
#include "brezan/sound/Renderer.h"
#include "tests/support/CommandRun.h"

#include <gtest/gtest.h>

#include <cmath>
#include <functional>

namespace qlx::test {
using namespace tools;
namespace {

constexpr double kRate = 44100.0;

struct Score {
  std::vector<AutomationMove> moves;
  std::vector<TimedMidi> midi;
};

class RendererTest : public testing::Test {
 protected:
  // Frame i carries i / 1000 in every channel, then silence.
  std::vector<double> render(int channels, const RenderSettings& settings, const Score& score,
                             const std::function<void(PluginHost&)>& prepare = nullptr) {
    {
      AudioOutput source(m_folder / "in.wav", "double", kRate, channels);
      for (int i = 0; i < kFrames; ++i)
        source.write(std::vector<double>(static_cast<std::size_t>(channels), i / 1000.0));
      source.finish();
    }
    PluginHost host(TEST_EFFECT);
    if (prepare) prepare(host);
    AudioInput in(m_folder / "in.wav");
    AudioOutput out(m_folder / "out.wav", "double", kRate, settings.outputs);
    AutomationPlayer automation(score.moves, kRate);
    MidiPlayer midi(score.midi, kRate);
    ProgressBar progress;
    m_report = Renderer(host, settings).render(in, out, automation, midi, progress);
    out.finish();
    m_peak = out.peak();
    m_rms = out.rms();
    AudioInput result(m_folder / "out.wav");
    std::vector<double> samples(static_cast<std::size_t>(result.frames() * settings.outputs));
    EXPECT_EQ(result.read(samples), result.frames());
    return samples;
  }

  static constexpr int kFrames = 1000;
  TemporaryFolder m_folder;
  RenderReport m_report;
  double m_peak = 0.0;
  double m_rms = 0.0;
};

double at(int frame) { return frame / kRate; }

} // namespace

TEST_F(RendererTest, BlocksPrecisionAndSettlingLeaveNoTrace) {
  const Score score{{{at(100), 0, 1.0F, 0.0}, {at(400), 0, 0.25F, 0.0}},
                    {{at(250), {0xB0, 64, 127}}, {at(777), {0xB0, 64, 0}}}};
  for (const int block : {1, 7, 64, 512, 4096})
    for (const bool useDouble : {false, true})
      for (const double settle : {0.0, 0.05}) {
        SCOPED_TRACE("block " + std::to_string(block));
        const RenderSettings settings{block, useDouble, 2, settle, 0.0};
        const std::vector<double> out = render(2, settings, score);
        ASSERT_EQ(out.size(), 2U * kFrames);
        for (int i = 0; i < kFrames; ++i) {
          const double gain = i < 100 ? 1.0 : (i < 400 ? 2.0 : 0.5);
          const double lever = i >= 250 && i < 777 ? 1.0 : 0.0;
          const auto k = static_cast<std::size_t>(2 * i);
          ASSERT_NEAR(out[k], gain * i / 1000.0, 1e-6) << "frame " << i;
          ASSERT_NEAR(out[k + 1], gain * i / 1000.0 + lever, 1e-6) << "frame " << i;
        }
      }
}

TEST_F(RendererTest, ChannelLayouts) {
  for (const int inputs : {1, 2})
    for (const int outputs : {1, 2}) {
      const std::vector<double> out = render(inputs, {128, true, outputs, 0.0, 0.0}, {});
      ASSERT_EQ(out.size(), static_cast<std::size_t>(outputs * kFrames));
      for (std::size_t i = 0; i < out.size(); ++i)
        ASSERT_DOUBLE_EQ(out[i],
                         static_cast<double>(i / static_cast<std::size_t>(outputs)) / 1000.0)
            << inputs << " to " << outputs;
    }
}

TEST_F(RendererTest, TheTailEndsAfterHalfASecondOfQuiet) {
  const auto ringing = [](PluginHost& host) { host.setValue(4, 0.5F); };
  const std::vector<double> out = render(1, {100, true, 2, 0.0, 10.0}, {}, ringing);
  // The ring starts the tail at the last input's sum and loses 0.1 % a sample.
  const double start = out[2 * (kFrames - 1)];
  const double audible = std::log(3.16227766e-5 / start) / std::log(0.999);
  EXPECT_NEAR(static_cast<double>(m_report.frames), kFrames + audible + 0.5 * kRate, 300.0);
}

TEST_F(RendererTest, ATailThatNeverQuietensIsCut) {
  const auto endless = [](PluginHost& host) { host.selectPreset(2); };
  for (const double tail : {0.0, 0.5})
    EXPECT_EQ(render(1, {64, false, 2, 0.0, tail}, {}, endless).size(),
              2U * static_cast<std::size_t>(kFrames + tail * kRate));
}

TEST_F(RendererTest, ReportsWhatItWrote) {
  render(2, {64, true, 2, 0.0, 0.0}, {{{0.0, 0, 0.25F, 0.0}}, {}});
  EXPECT_EQ(m_report.frames, kFrames);
  EXPECT_EQ(m_report.rate, kRate);
  EXPECT_NEAR(m_peak, 0.5 * 0.999, 1e-12);
  EXPECT_NEAR(m_rms * m_rms, 0.25 / 3.0, 1e-3);
  EXPECT_GT(m_report.processingSeconds, 0.0);
}

} // namespace qlx::test
