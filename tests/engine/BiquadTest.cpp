// SPDX-License-Identifier: ISC
#include "engine/signal/Biquad.h"
#include "engine/cabinet/RayLanes.h"
#include "engine/signal/Interpolation.h"
#include "engine/signal/ParallelForm.h"

#include <gtest/gtest.h>

#include <cmath>
#include <complex>
#include <numbers>
#include <vector>

namespace qlx::test {
using namespace engine;
namespace {

constexpr double kPi = std::numbers::pi;

/// Gain in dB of the analogue-prototype design at `hz`, by an evaluation of its own: the bilinear
/// transform of the normalised prototypes H(s), with s = j tan(w/2) / tan(w0/2) and the warped Q.
double designDb(Response type, double f0, double q, double db, double fs, double hz) {
  const double exponents[] = {0, 6, 0, 3.5, 2.8, 2.8, 2.8, 4, 8, 0, 0};
  const double e = exponents[static_cast<int>(type)];
  if (e > 0) q *= 1 - std::pow(f0 / ((type == Response::LowPass ? 0.50001 : 0.5001) * fs), e);
  const std::complex<double> s(0, std::tan(kPi * hz / fs) / std::tan(kPi * f0 / fs));
  const double A = std::pow(10, db / 40);
  std::complex<double> h = 1;
  switch (type) {
  case Response::HighPass: h = s * s / (s * s + s / q + 1.0); break;
  case Response::HighPassFirstOrder: h = s / (s + 1.0); break;
  case Response::LowShelf:
    h = A * (s * s + std::sqrt(A) / q * s + A) / (A * s * s + std::sqrt(A) / q * s + 1.0);
    break;
  case Response::Peaking: h = (s * s + s * (A / q) + 1.0) / (s * s + s / (A * q) + 1.0); break;
  case Response::BandPass: h = (s / q) / (s * s + s / q + 1.0); break;
  case Response::Notch: h = (s * s + 1.0) / (s * s + s / q + 1.0); break;
  case Response::HighShelf:
    h = A * (A * s * s + std::sqrt(A) / q * s + 1.0) / (s * s + std::sqrt(A) / q * s + A);
    break;
  case Response::LowPass: h = 1.0 / (s * s + s / q + 1.0); break;
  case Response::LowPassFirstOrder: {
    // Matched pole of a low-pass through 1 - cos w: unity at DC, y = b0 x + (1 - b0) y.
    const double d = 2 - std::cos(2 * kPi * f0 / fs), a1 = std::sqrt(d * d - 1) - d;
    h = (1 + a1) / (1.0 + a1 * std::polar(1.0, -2 * kPi * hz / fs));
    break;
  }
  default: break;
  }
  return 20 * std::log10(std::abs(h));
}

using Tick = double (Biquad::*)(double);

double measuredDb(Biquad& filter, Tick tick, double fs, double hz) {
  const auto n = static_cast<int>(fs * 0.5);
  double re = 0, im = 0, inRe = 0, inIm = 0;
  for (int i = 0; i < n; ++i) {
    const double w = 2 * kPi * hz * i / fs, x = 1e-3 * std::sin(w), y = (filter.*tick)(x);
    if (i < n / 2) continue;
    re += y * std::cos(w);
    im += y * std::sin(w);
    inRe += x * std::cos(w);
    inIm += x * std::sin(w);
  }
  return 20 * std::log10(std::hypot(re, im) / std::hypot(inRe, inIm));
}

TEST(Biquad, EveryResponseInEveryTickFollowsItsDesign) {
  struct Design {
    Response type;
    double f0, q, db;
  };
  const Design designs[] = {
      {Response::HighPass, 700, 0.9, 0},  {Response::HighPassFirstOrder, 900, 1, 0},
      {Response::LowShelf, 350, 0.6, -9}, {Response::Peaking, 2200, 1.4, 7},
      {Response::Peaking, 5950, 12, -25}, {Response::BandPass, 1000, 2, 0},
      {Response::Notch, 3000, 1, 0},      {Response::HighShelf, 6000, 0.7, -9},
      {Response::LowPass, 1170, 0.93, 0}, {Response::LowPassFirstOrder, 1500, 1, 0},
      {Response::AllPass, 800, 1, 0}};
  const Tick ticks[] = {&Biquad::tickGlide, &Biquad::tickGlideSaturating, &Biquad::tickFixed,
                        &Biquad::tickFixedSaturating};
  for (const double fs : {22050.0, 44100.0, 96000.0}) {
    for (const Design& d : designs) {
      for (const Tick tick : ticks) {
        for (const double hz : {60.0, 440.0, 1900.0, 7000.0}) {
          Biquad filter(fs, d.type, d.f0, d.q, d.db);
          filter.setEnabled(true);
          filter.setSampleRate(fs);
          EXPECT_NEAR(measuredDb(filter, tick, fs, hz), designDb(d.type, d.f0, d.q, d.db, fs, hz),
                      0.02)
              << "type " << int(d.type) << " fs " << fs << " hz " << hz;
        }
      }
    }
  }
}

TEST(Biquad, GlidesOverThreeMillisecondsUnlessInstant) {
  Biquad filter(44100, Response::Peaking, 1000, 1, 6);
  filter.setEnabled(true);
  filter.setFrequency(2000);
  EXPECT_EQ(filter.glideRemaining(), 0) << "instant";
  filter.setInstantUpdate(false);
  filter.setFrequency(500);
  EXPECT_EQ(filter.glideRemaining(), 132);
  for (int i = 0; i < 131; ++i) filter.tickGlide(0.1);
  EXPECT_EQ(filter.glideRemaining(), 1);
  filter.tickGlide(0.1);
  EXPECT_EQ(filter.glideRemaining(), 0);
}

TEST(Biquad, DisabledPassesAndForgets) {
  Biquad filter(44100, Response::LowPass, 200, 0.7, 0);
  filter.setEnabled(true);
  for (int i = 0; i < 10; ++i) filter.tickGlide(1.0);
  filter.setEnabled(false);
  EXPECT_EQ(filter.tickGlide(0.25), 0.25);
  for (const double cell : filter.memory()) EXPECT_EQ(cell, 0.0);

  Biquad through(44100, Response::PassThrough, 200, 0.7, 0);
  through.setEnabled(true);
  EXPECT_EQ(through.tickGlide(0.125), 0.125);
  for (const double cell : through.memory()) EXPECT_EQ(cell, 0.0);
}

TEST(Biquad, OddSampleRatesCountAsStandard) {
  Biquad odd(48000, Response::Peaking, 1000, 2, 6), standard(48000, Response::Peaking, 1000, 2, 6);
  for (Biquad* filter : {&odd, &standard}) filter->setEnabled(true);
  odd.setSampleRate(16000);
  standard.setSampleRate(44100);
  EXPECT_EQ(odd.target().a1, standard.target().a1);
  EXPECT_EQ(odd.target().b0, standard.target().b0);
}

TEST(Biquad, SaturationLimitsAndFollowsQNotFrequency) {
  Biquad filter(44100, Response::Peaking, 1000, 1, 0);
  filter.setEnabled(true);
  filter.setSaturation(0.3);
  const double k = 1000 * 0.01 * 0.3 * 3 / 1000;
  EXPECT_NEAR(filter.tickFixedSaturating(20.0), 20.0 / (20.0 * k + 1), 1e-9);

  filter.clearState();
  filter.setFrequency(2000);
  EXPECT_NEAR(filter.tickFixedSaturating(20.0), 20.0 / (20.0 * k + 1), 1e-9) << "frequency alone";
  filter.clearState();
  filter.setQ(1);
  EXPECT_NEAR(filter.tickFixedSaturating(20.0), 20.0 / (20.0 * 2 * k + 1), 1e-9) << "after a Q";
}

TEST(ParallelForm, SumsToItsSeriesWithConjugateAndWithRealPoles) {
  constexpr auto kDesigns = std::to_array<FilterDesign>({{Response::Peaking, 775, 20, -11},
                                                         {Response::Peaking, 1000, 0.3, -6},
                                                         {Response::Peaking, 400, 0.3, 6},
                                                         {Response::Peaking, 5950, 30, -25}});
  kernels::ReducedBodySections sections{};
  makeParallel(sections, kDesigns, 22050);
  double series[64], sum[64];
  for (int i = 0; i < 64; ++i) series[i] = sum[i] = std::sin(0.3 * i * i);
  for (const FilterDesign& d : kDesigns) {
    Biquad filter(22050, d.response, d.hz, d.q, d.db);
    filter.setEnabled(true);
    filter.processFixed(series);
  }
  kernels::chooseKernels().reducedBody(sections, sum, 64);
  for (int i = 0; i < 64; ++i) EXPECT_NEAR(sum[i], series[i], 1e-12) << i;
}

TEST(Interpolation, CubicReadsGoThroughTheirPointsAndKeepParabolas) {
  std::vector<double> table;
  for (int i = 0; i < 16; ++i) table.push_back(0.5 * i * i - 3 * i);
  for (double x = 1.0; x < 13.9; x += 0.13) {
    const double expected = 0.5 * x * x - 3 * x;
    EXPECT_NEAR(cubicTableRead(x, table.data(), 15), expected, 1e-12) << x;
  }
  EXPECT_EQ(cubicTableRead(-0.5, table.data(), 15), table[0]);
  EXPECT_EQ(cubicTableRead(15.5, table.data(), 15), table[15]);
}

TEST(Interpolation, FixedTapsWrapInTheirLine) {
  DelayLine line;
  for (int i = 0; i < kHistorySize; ++i) line.write(i, std::sin(2 * kPi * i / 64));
  for (const int writeIndex : {0, 1, 2, 5, 100, 4094, 4095}) {
    for (const double delay : {0.0, 0.3, 1.0, 2.75, 77.7, 3000.2}) {
      std::array<double, 4> weight;
      const double* tap = fixedTap(line, writeIndex, delay, weight);
      for (const int j : {0, 63}) {
        double value = 0.0;
        for (int i = 0; i < 4; ++i) value += weight[static_cast<std::size_t>(i)] * tap[j + i];
        EXPECT_NEAR(value, std::sin(2 * kPi * (writeIndex + j - delay) / 64), 1e-4)
            << writeIndex << " - " << delay;
      }
    }
  }
}

TEST(Interpolation, OneShotHoldsItsEnds) {
  const std::vector<float> sound = {0.5F, 1.0F, -1.0F, 0.25F, 0.0F};
  EXPECT_EQ(cubicOneShotRead(-1, sound.data(), 4), 0.5F);
  EXPECT_EQ(cubicOneShotRead(0, sound.data(), 4), 0.5F);
  EXPECT_EQ(cubicOneShotRead(2, sound.data(), 4), -1.0F);
  EXPECT_EQ(cubicOneShotRead(4.5, sound.data(), 4), 0.0F);
}

} // namespace
} // namespace qlx::test
