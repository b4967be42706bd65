// SPDX-License-Identifier: ISC
#include "engine/kernels/Kernels.h"
#include "engine/signal/Biquad.h"
#include "engine/signal/Interpolation.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <numbers>
#include <random>
#include <vector>

// Every kernel of every instruction set against a plain loop. Each test runs its kernel over
// sub-blocks of several lengths one after the other, so that states are carried on.

namespace qlx::test {
using namespace engine;
using namespace engine::kernels;
namespace {

constexpr int kLengths[] = {64, 1, 3, 7, 63};
constexpr double kRate = 44100.0;
using Numbers = std::vector<double>;

struct KernelTwin : testing::TestWithParam<const Kernels*> {
  const Kernels& kernels = *GetParam();
  std::mt19937 random{7};

  void SetUp() override {
    if (!canRun(kernels)) GTEST_SKIP() << "not for this processor";
  }
  double between(double low, double high) {
    return std::uniform_real_distribution<double>(low, high)(random);
  }
  Numbers noise(std::size_t n = 160, double low = -1.0, double high = 1.0) {
    Numbers x(n);
    for (double& value : x) value = between(low, high);
    return x;
  }
  /// Stable second-order sections in lanes.
  template <int N>
  void fill(double (&field)[kSectionFields][N]) {
    for (int i = 0; i < N; ++i) {
      const double radius = between(0.3, 0.95), cosine = between(-0.9, 0.9);
      field[kA1][i] = -2 * radius * cosine;
      field[kA2][i] = radius * radius;
      for (int f = kB0; f < kSectionFields; ++f) field[f][i] = between(-1, 1);
    }
  }
};

/// The first n numbers alike, to 1e-12 of the largest.
void expectSame(const Numbers& actual, const Numbers& expected, std::size_t n,
                double tolerance = 1e-12) {
  double scale = 1e-3;
  for (std::size_t i = 0; i < n; ++i) scale = std::max(scale, std::abs(expected[i]));
  for (std::size_t i = 0; i < n; ++i)
    ASSERT_NEAR(actual[i], expected[i], tolerance * scale) << "number " << i << " of " << n;
}

double onePole(double& state, double x, double pole) {
  return state = state * pole + x * (1 - pole);
}

/// Lines, laws and angles that rays read, and rays that read them.
struct Past {
  Numbers line[2], law[2], angles;
  Past() : angles(2 * kLineSize) {
    for (int k = 0; k < 2; ++k) {
      for (int i = 0; i < 2 * kLineSize; ++i) {
        angles[std::size_t(i)] = std::fmod(i % kLineSize * 0.000317, 1.0);
        line[k].push_back(std::sin(std::numbers::pi * i * (20 + 7 * k) / kLineSize));
      }
      for (int i = 0; i < kLevelPieces; ++i)
        for (const double c : {1.0, -0.3, 0.1, 0.02})
          law[k].push_back(c * (200 + 50 * k) / (i + 100));
    }
  }
  template <int N>
  void fill(RayLanes<N>& r, KernelTwin& test) const {
    for (int i = 0; i < N; ++i) {
      const double sign = i % 3 == 1 ? -1 : 1, width = test.between(0.02, 0.1);
      r.angle[i] = test.between(-0.25, 0.25);
      r.halfWidth[i] = width;
      r.nearRate[i] = sign * std::numbers::pi / (2 * width);
      r.farRate[i] = sign * std::numbers::pi / (1 - 2 * width);
      r.delay[i] = test.between(30, 3000);
      r.delayDepth[i] = test.between(10, 25);
      r.levelPosition[i] = i == 0 ? 520 : test.between(20, 500);
      r.levelDepth[i] = 18;
      r.levelScale[i] = test.between(0.5, 1);
      r.lowestLevel[i] = i == 2 ? 1 : 0;
      r.gain[i] = test.between(0.2, 1);
      r.reflectionPole[i] = i % 2 * test.between(0, 0.5);
      r.angles[i] = angles.data();
      r.angleLag[i] = static_cast<int>(test.between(0, kLineSize));
      r.line[i] = line[i / 2 % 2].data();
      r.levels[i] = law[i % 2].data();
    }
  }
};

/// What arrives along a ray at sample j: position in tables over the mouth's angle, sound, level.
struct Arriving {
  double turns, sound, level;
};
template <int N>
Arriving arriving(const RayLanes<N>& r, int i, int writeIndex, int j, double lowestSine = -1) {
  const double angle = r.angles[i][((writeIndex + r.angleLag[i]) & (kLineSize - 1)) + j];
  const double w = r.halfWidth[i], x = angle - r.angle[i] - std::floor(angle - r.angle[i]);
  const double phase = x <= w      ? (x - w) * r.nearRate[i]
                       : x < 1 - w ? (x - w) * r.farRate[i]
                                   : (x - 1 + w) * r.nearRate[i] - std::numbers::pi;
  const double sine = std::max(std::sin(phase), lowestSine);
  const double turns = phase / (2 * std::numbers::pi) + 0.25;
  const double back = writeIndex + j + 2 * kLineSize - 1 - r.delay[i] - r.delayDepth[i] * sine;
  const int whole = static_cast<int>(back);
  const double* p = r.line[i] + (whole & (kLineSize - 1));
  const double at =
      std::clamp(r.levelPosition[i] + r.levelDepth[i] * sine, 0.0, kLevelPieces - 1e-10);
  const double* c = r.levels[i] + std::ptrdiff_t{4} * static_cast<int>(at);
  const double t = at - std::floor(at), law = c[0] + t * (c[1] + t * (c[2] + t * c[3]));
  return {turns < 0 ? turns + 1 : turns, CubicWeights<double>(back - whole)(p[0], p[1], p[2], p[3]),
          std::max(law * r.levelScale[i], r.lowestLevel[i]) * r.gain[i]};
}

double read(const DirectivityTable& table, double position, int column) {
  const int i = static_cast<int>(position * table.intervals);
  const double t = position * table.intervals - i;
  return (1 - t) * table.row[i][column] + t * table.row[i + 1][column];
}

bool isUpdate(const RayPass& pass, int j) {
  return j >= pass.firstUpdate && (j - pass.firstUpdate) % pass.updateInterval == 0;
}

Biquad filter(Response response, double hz, double q, double db) {
  Biquad f(kRate, response, hz, q, db);
  f.setEnabled(true);
  f.setInstantUpdate(false);
  return f;
}

template <int N>
void tune(GlideLanes<N>& lanes, double edgeShare) {
  lanes.angularRate = 2 * std::numbers::pi / kRate;
  lanes.edgeHz = edgeShare * kRate;
  lanes.share = 1.0 / sectionGlideSteps(kRate);
}

/// A section that stands, by its roots, against a design.
template <class RootOf>
void expectDesign(RootOf root, const Biquad& f) {
  const auto product = [&](int i) {
    return root(i) * root(i) - root(i + 1) * root(i + 1) + root(i + 2) * root(i + 2);
  };
  const double gain = root(kGain);
  const Biquad::Coefficients& k = f.target();
  expectSame({-2 * root(kPoleCentre), product(kPoleCentre), gain, -2 * gain * root(kZeroCentre),
              gain * product(kZeroCentre)},
             {k.a1, k.a2, k.b0, k.b1, k.b2}, 5);
}
template <int N>
void expectDesign(const GlideLanes<N>& g, int lane, const Biquad& f) {
  expectDesign([&](int i) { return g.root[i][lane]; }, f);
  for (const auto& increment : g.increment) EXPECT_EQ(increment[lane], 0.0);
}

struct HornTwin {
  Past past;
  HornBank bank{};
  const double row[5][4] = {{2200, 1.4, 7, 6},
                            {1300, 5.9, -28, -2},
                            {1750, 1, 3, -12},
                            {1500, 2, -9, 1},
                            {1300, 5.9, -28, -2}};
  explicit HornTwin(KernelTwin& test) {
    past.fill(bank.rays, test);
    bank.table = {row, 3};
    bank.shelfHz = 6000;
    bank.shelfQ = 0.7;
    tune(bank.peak, kWarpEdgeShare);
    tune(bank.shelf, kWarpEdgeShare);
    test.kernels.settleHorn(bank);
  }
};

TEST_P(KernelTwin, SettleHorn) {
  HornTwin twin(*this);
  for (int lane = 0; lane < kHornLanes; ++lane) {
    expectDesign(twin.bank.peak, lane, filter(Response::Peaking, 2200, 1.4, 7));
    expectDesign(twin.bank.shelf, lane, filter(Response::HighShelf, 6000, 0.7, 6));
  }
}

TEST_P(KernelTwin, HornRays) {
  HornTwin twin(*this);
  std::vector<Biquad> peaks(kHornLanes, filter(Response::Peaking, 2200, 1.4, 7));
  std::vector<Biquad> shelves(kHornLanes, filter(Response::HighShelf, 6000, 0.7, 6));
  Numbers states(kHornLanes), pairs(160);
  int writeIndex = kLineSize - 70;
  for (const int n : kLengths) {
    const int lanes = n == 7 ? 20 : kHornLanes;
    const RayPass pass{writeIndex & (kLineSize - 1), n, 5, 16};
    Numbers expected(160);
    for (int i = 0; i < lanes; ++i) {
      for (int j = 0; j < n; ++j) {
        const Arriving a = arriving(twin.bank.rays, i, pass.writeIndex, j);
        const auto at = [&](int column) { return read(twin.bank.table, 1 - a.turns, column); };
        if (isUpdate(pass, j)) peaks[size_t(i)].setFrequencyQGain(at(0), at(1), at(2));
        if (isUpdate(pass, j)) shelves[size_t(i)].setFrequencyQGain(6000, 0.7, at(3));
        const double x = shelves[size_t(i)].tickGlide(peaks[size_t(i)].tickGlide(a.sound));
        expected[size_t(2 * j + i % 2)] +=
            onePole(states[size_t(i)], x * a.level, twin.bank.rays.reflectionPole[i]);
      }
    }
    kernels.hornRays(twin.bank, lanes, pass, pairs.data());
    expectSame(pairs, expected, size_t(2 * n));
    writeIndex += n;
  }
}

struct DrumTwin {
  Past past;
  DrumBank bank{};
  const double row[4][4] = {{1600, 1.2}, {900, 0.31}, {1200, 0.7}, {900, 0.31}};
  explicit DrumTwin(KernelTwin& test) {
    past.fill(bank.rays, test);
    bank.table = {row, 2};
    bank.lowestSine = -0.7;
    bank.splitterPole = 0.97;
    std::fill_n(bank.hz, kDrumLanes, 1100);
    std::fill_n(bank.q, kDrumLanes, 0.9);
    tune(bank.lowPass, kLowPassWarpEdgeShare);
    test.kernels.settleDrum(bank);
  }
};

TEST_P(KernelTwin, SettleDrum) {
  DrumTwin twin(*this);
  for (int lane = 0; lane < kDrumLanes; ++lane)
    expectDesign(twin.bank.lowPass, lane, filter(Response::LowPass, 1100, 0.9, 0));
}

TEST_P(KernelTwin, DrumRays) {
  DrumTwin twin(*this);
  std::vector<Biquad> lowPasses(kDrumLanes, filter(Response::LowPass, 1100, 0.9, 0));
  Numbers states(kDrumLanes), lows(kDrumLanes), out(80);
  int writeIndex = 0;
  for (const int n : kLengths) {
    const int lanes = n == 7 ? 4 : kDrumLanes;
    const RayPass pass{writeIndex, n, 2, 16};
    Numbers expected(80);
    for (int i = 0; i < lanes; ++i) {
      Biquad& lowPass = lowPasses[size_t(i)];
      for (int j = 0; j < n; ++j) {
        const Arriving a = arriving(twin.bank.rays, i, writeIndex, j, -0.7);
        const auto at = [&](int column) { return read(twin.bank.table, a.turns, column); };
        if (isUpdate(pass, j)) lowPass.setFrequencyQGain(at(0), at(1), 0);
        const double high = a.sound - onePole(lows[size_t(i)], a.sound, 0.97);
        expected[size_t(j)] += onePole(states[size_t(i)], lowPass.tickGlide(high) * a.level,
                                       twin.bank.rays.reflectionPole[i]);
      }
    }
    kernels.drumRays(twin.bank, lanes, pass, out.data());
    expectSame(out, expected, size_t(n));
    writeIndex += n;
  }
}

TEST_P(KernelTwin, ReducedRays) {
  Past past;
  ReducedBank bank{};
  past.fill(bank.rays, *this);
  const Numbers cutoff[2] = {noise(6, 500, 1100), noise(6, 1600, 2000)};
  for (int i = 0; i < kReducedLanes; ++i) {
    bank.cutoff[i] = cutoff[i % 4 / 2].data();
    bank.cutoffStart[i] = i % 4 < 2 ? 4 : 0;
    bank.cutoffStep[i] = i % 4 < 2 ? -4 : 4;
  }
  bank.settling = std::log2(0.005) / kRate;
  bank.smoothing = 0.995;
  Numbers pole(kReducedLanes), wanted(kReducedLanes), low(kReducedLanes), state(kReducedLanes);
  Numbers pairs(160);
  int done = 0;
  for (const int n : kLengths) {
    const int lanes = n == 7 ? 4 : kReducedLanes;
    const RayPass passes[] = {{done + 3, n, 1, 16}, {done + 900, n, 6, 8}};
    Numbers expected(160);
    for (size_t i = 0; i < size_t(lanes); ++i) {
      const RayPass& pass = passes[i % 4 / 2];
      for (int j = 0; j < n; ++j) {
        const Arriving a = arriving(bank.rays, int(i), pass.writeIndex, j);
        const double at = bank.cutoffStart[i] + bank.cutoffStep[i] * a.turns,
                     t = at - std::floor(at);
        const double hz = (1 - t) * bank.cutoff[i][int(at)] + t * bank.cutoff[i][int(at) + 1];
        if (isUpdate(pass, j)) wanted[i] = std::pow(0.005, hz / kRate);
        onePole(pole[i], wanted[i], bank.smoothing);
        const double x = onePole(low[i], a.sound, pole[i]) * a.level;
        expected[size_t(2 * j) + i % 4 / 2] += onePole(state[i], x, bank.rays.reflectionPole[i]);
      }
    }
    kernels.reducedRays(bank, lanes, passes[0], passes[1], pairs.data());
    expectSame(pairs, expected, size_t(2 * n));
    done += n;
  }
}

TEST_P(KernelTwin, FixedPair) {
  const Numbers lines[2] = {noise(), noise()};
  FixedPair fixed{{lines[0].data(), lines[1].data()}, {}, {0.9, 0.4}, {0.5, 2.0}, {0.1, -0.2}};
  for (auto& weight : fixed.weight) weight[0] = between(-1, 1), weight[1] = between(-1, 1);
  double state[] = {0.1, -0.2};
  for (const int n : kLengths) {
    Numbers pairs = noise(), expected = pairs;
    for (int j = 0; j < n; ++j) {
      for (size_t k = 0; k < 2; ++k) {
        double x = 0;
        for (int i = 0; i < 4; ++i) x += fixed.weight[i][k] * lines[k][size_t(i + j)];
        expected[size_t(2 * j) + k] += onePole(state[k], x, fixed.pole[k]) * fixed.gain[k];
      }
    }
    kernels.fixedPair(fixed, pairs.data(), n);
    expectSame(pairs, expected, size_t(2 * n));
  }
}

TEST_P(KernelTwin, PairTaps) {
  const PairTaps taps{{9, 8, 17, 16}, {0.3, 0.2, -0.4, 0.6}};
  const Numbers past = noise(300);
  for (const int n : kLengths) {
    Numbers pairs = noise(), expected = pairs;
    for (int i = 0; i < 2 * n; ++i)
      for (int t = 0; t < PairTaps::kCount; ++t)
        expected[size_t(i)] += taps.weight[t] * past[size_t(100 + i - 2 * taps.back[t])];
    kernels.pairTaps(taps, past.data() + 100, pairs.data(), n);
    expectSame(pairs, expected, size_t(2 * n));
  }
}

template <int Sections, int Channels>
void testParallel(KernelTwin& test,
                  void (*kernel)(ParallelSections<Sections, Channels>&, double*, int)) {
  ParallelSections<Sections, Channels> s{};
  double field[kSectionFields][Sections];
  test.fill(field);
  for (int lane = 0; lane < s.kLanes; ++lane) {
    s.a1[lane] = field[kA1][lane / Channels];
    s.a2[lane] = field[kA2][lane / Channels];
    s.c0[lane] = field[kB0][lane / Channels];
    s.c1[lane] = field[kB1][lane / Channels];
  }
  s.direct = 0.7;
  Numbers v1(s.kLanes), v2(s.kLanes);
  for (const int n : kLengths) {
    Numbers samples = test.noise(), expected = samples;
    for (int i = 0; i < Channels * n; ++i) {
      expected[size_t(i)] *= s.direct;
      for (size_t lane = size_t(i % Channels); lane < v1.size(); lane += Channels) {
        const double v = samples[size_t(i)] - s.a1[lane] * v1[lane] - s.a2[lane] * v2[lane];
        expected[size_t(i)] += s.c0[lane] * v + s.c1[lane] * v1[lane];
        v2[lane] = std::exchange(v1[lane], v);
      }
    }
    kernel(s, samples.data(), n);
    expectSame(samples, expected, size_t(Channels * n));
  }
}

TEST_P(KernelTwin, Body) { testParallel(*this, kernels.body); }
TEST_P(KernelTwin, ReducedBody) { testParallel(*this, kernels.reducedBody); }

/// One sample of one section; the limiter as in ChainSections.
template <int N>
double section(double (&f)[kSectionFields][N], int i, double x, double limit = 0,
               double offset = 0) {
  const double y = f[kB0][i] * x + f[kB1][i] * f[kX1][i] + f[kB2][i] * f[kX2][i] -
                   f[kA1][i] * f[kY1][i] - f[kA2][i] * f[kY2][i];
  f[kX2][i] = std::exchange(f[kX1][i], x);
  f[kY2][i] = std::exchange(f[kY1][i], y / (std::abs(y + offset) * limit + 1));
  return f[kY1][i];
}

TEST_P(KernelTwin, PairSeries) {
  PairSections<4> sections{};
  fill(sections.field);
  PairSections<4> plain = sections;
  for (const int n : kLengths) {
    Numbers pairs = noise(), expected = pairs;
    for (int i = 0; i < 2 * n; ++i)
      for (int lane = i % 2; lane < 8; lane += 2)
        expected[size_t(i)] = section(plain.field, lane, expected[size_t(i)]);
    kernels.pairSeries({sections.field[0], 8, 4}, pairs.data(), n);
    expectSame(pairs, expected, size_t(2 * n));
  }
}

TEST_P(KernelTwin, ChainSeries) {
  ChainSections<8> sections{};
  fill(sections.field);
  ChainSections<8> plain = sections, cut = sections;
  for (const int n : kLengths) {
    Numbers samples = noise(), expected = samples, parts = samples;
    for (int j = 0; j < n; ++j)
      for (int lane = 0; lane < 8; ++lane)
        expected[size_t(j)] = section(plain.field, lane, expected[size_t(j)]);
    kernels.chainSeries({sections.field[0], 8, 8}, samples.data(), n);
    expectSame(samples, expected, size_t(n));
    // To the last bit, wherever the samples are cut: the rate converter's single precision would
    // turn a difference in the last bit into one that is not.
    const int first = n < 3 ? n : n / 3;
    kernels.chainSeries({cut.field[0], 8, 8}, parts.data(), first);
    if (first < n) kernels.chainSeries({cut.field[0], 8, 8}, parts.data() + first, n - first);
    expectSame(parts, samples, size_t(n), 0.0);
  }
}

TEST_P(KernelTwin, LimitedChains) {
  for (size_t count = 1; count <= 3; ++count) {
    ChainSections<4> chains[3]{};
    for (ChainSections<4>& chain : chains) {
      fill(chain.field);
      for (double& limit : chain.limit) limit = between(0, 1);
      for (double& offset : chain.offset) offset = between(-0.1, 0.1);
    }
    ChainSections<4> plain[] = {chains[0], chains[1], chains[2]};
    ChainSections<4>* const pointers[] = {&chains[0], &chains[1], &chains[2]};
    for (const int n : kLengths) {
      Numbers samples[] = {noise(), noise(), noise()};
      Numbers expected[] = {samples[0], samples[1], samples[2]};
      double* const all[] = {samples[0].data(), samples[1].data(), samples[2].data()};
      kernels.limitedChains(pointers, all, int(count), n);
      for (size_t k = 0; k < count; ++k) {
        for (double& x : expected[k])
          for (int i = 0; i < 4 && &x < &expected[k][size_t(n)]; ++i)
            x = section(plain[k].field, i, x, plain[k].limit[i], plain[k].offset[i]);
        expectSame(samples[k], expected[k], size_t(n));
      }
    }
  }
}

TEST_P(KernelTwin, LoopRead) {
  constexpr int kLength = 40;
  std::vector<float> loop;
  for (int i = 0; i < kLength; ++i) loop.push_back(static_cast<float>(between(-1, 1)));
  for (size_t i = 0; i < 3; ++i) loop.push_back(loop[i]);
  for (const int n : kLengths) {
    const Numbers position = noise(80, -kLength + 0.01, 2 * kLength - 0.01), gain = noise();
    Numbers sum = noise(), expected = sum;
    for (size_t j = 0; j < size_t(n); ++j) {
      const double x = position[j] + kLength;
      const auto point = [&](int i) { return loop[size_t((static_cast<int>(x) + i) % kLength)]; };
      const CubicWeights<float> weights(static_cast<float>(x - std::floor(x)));
      expected[j] +=
          gain[j] * static_cast<double>(weights(point(-1 + kLength), point(0), point(1), point(2)));
    }
    kernels.loopRead(loop.data(), kLength, position.data(), gain.data(), sum.data(), n);
    expectSame(sum, expected, size_t(n), 1e-6); // single precision
  }
}

/// Low-pass and shelf of the drum's noise, as tuned between the speeds.
struct TrebleTwin {
  NoiseTreble treble{};
  Biquad lowPass = filter(Response::LowPass, 18000, 0.7, 0);
  Biquad shelf = filter(Response::HighShelf, 2000, 0.707, 0);

  TrebleTwin() {
    treble.angularRate = 2 * std::numbers::pi / kRate;
    treble.highestHz = kHighestShare * kRate;
    treble.lowPassEdge = kLowPassWarpEdgeShare * kRate;
    treble.shelfEdge = kWarpEdgeShare * kRate;
    treble.steps = sectionGlideSteps(kRate);
    treble.share = 1.0 / treble.steps;
  }
  void tune(double x) {
    lowPass.setFrequencyQGain(18000 - 18000 * std::pow(x, 0.06), 0.7, 0);
    shelf.setFrequencyQGain(3500 + 9500 * x * x, 0.707, 12 * x * x - 12);
  }
  void expectRun(KernelTwin& test, const Numbers& between, int n) {
    const Numbers slow = test.noise(), fast = test.noise();
    Numbers out(80), expected(80);
    for (size_t j = 0; j < size_t(n); ++j) {
      if (between[j] > 0) tune(between[j]);
      expected[j] = lowPass.tickGlide(slow[j]) + shelf.tickGlide(fast[j]);
    }
    test.kernels.noiseTreble(treble, between.data(), slow.data(), fast.data(), out.data(), n);
    expectSame(out, expected, size_t(n), 1e-11); // the low-pass's numerator nearly cancels
  }
};

TEST_P(KernelTwin, SettleTreble) {
  for (const double between : {0.0, 0.3}) {
    TrebleTwin twin;
    twin.treble.between = between;
    kernels.settleTreble(twin.treble);
    for (Biquad* section : {&twin.lowPass, &twin.shelf}) section->setInstantUpdate(true);
    if (between > 0) twin.tune(between);
    expectDesign([&](int i) { return twin.treble.root[2 * i]; }, twin.lowPass);
    expectDesign([&](int i) { return twin.treble.root[2 * i + 1]; }, twin.shelf);
    twin.expectRun(*this, Numbers(80, -1.0), 64);
  }
}

TEST_P(KernelTwin, NoiseTreble) {
  TrebleTwin twin;
  kernels.settleTreble(twin.treble);
  for (const int n : kLengths) {
    Numbers moving(80);
    for (size_t j = 0; j < 80; ++j) moving[j] = 0.2 + 0.005 * double(j);
    twin.expectRun(*this, moving, n);
    twin.expectRun(*this, Numbers(80, n == 7 ? 0.45 : -1.0), n);
  }
}

TEST_P(KernelTwin, RoomSide) {
  const Numbers line = noise(400);
  RoomSide side{};
  double state[RoomSide::kTaps];
  for (int t = 0; t < RoomSide::kTaps; ++t) {
    side.first[t] = line.data() + 13 * t;
    side.older[t] = between(0, 1);
    side.newer[t] = between(0, 1);
    side.pole[t] = between(0, 0.9);
    side.state[t] = state[t] = between(-1, 1);
  }
  for (const int n : kLengths) {
    Numbers out(80), expected(80);
    for (int j = 0; j < n; ++j) {
      for (int t = 0; t < RoomSide::kTaps; ++t) {
        const double* at = side.first[t] + j;
        expected[size_t(j)] +=
            onePole(state[t], side.older[t] * at[0] + side.newer[t] * at[1], side.pole[t]);
      }
    }
    kernels.roomSide(side, out.data(), n);
    expectSame(out, expected, size_t(n));
  }
}

/// Signals and gains of the mix, each from a row of noise of its own.
struct MixTwin {
  Numbers rows[25];
  MixSignals m;
  MixGains g;
  MixFilters f;
  explicit MixTwin(KernelTwin& test) {
    for (Numbers& row : rows) row = test.noise(80);
    double* r[25];
    for (size_t i = 0; i < 25; ++i) r[i] = rows[i].data();
    m = {r[0], r[1], r[2], r[3], r[4], r[5], r[6], r[7], r[8]};
    g = {r[9], r[10], r[11], r[12], r[13], r[14], r[15], r[16], r[17], r[18], r[19], 0.7, 0.3};
    f = {r[20], r[21], r[22], r[23], r[24]};
  }
  void expectSignals(const MixTwin& plain, int n) const {
    for (size_t i = 0; i < 6; ++i) expectSame(rows[i], plain.rows[i], size_t(n));
  }
};

TEST_P(KernelTwin, MixSends) {
  for (const int n : kLengths) {
    MixTwin twin(*this), plain(*this);
    for (size_t i = 0; i < 25; ++i) std::copy_n(twin.rows[i].begin(), 80, plain.rows[i].begin());
    Numbers left(80), right(80), expectedLeft(80), expectedRight(80);
    const MixSignals& m = plain.m;
    const MixGains& g = plain.g;
    for (size_t j = 0; j < size_t(n); ++j) {
      const double shared = m.toHorns[j] + m.hornEcho[j], gain = g.horn[j] * 0.7;
      const double noise1 = 0.5 * m.noise1[j], noise2 = m.noise2[j];
      m.horn1[j] = (0.5 * m.horn1[j] + shared) * gain;
      m.horn2[j] = (0.5 * m.horn2[j] + shared) * gain * g.microphone2[j];
      m.drum[j] = (m.drum[j] + m.toDrum[j]) * g.drum[j];
      m.noise1[j] = g.noiseB[j] * noise1 + g.noiseA[j] * noise2;
      m.noise2[j] = g.noiseB[j] * noise2 + g.noiseA[j] * noise1;
      expectedLeft[j] = m.horn1[j] * g.pan1Left[j] + m.horn2[j] * g.pan2Left[j] +
                        m.drum[j] * g.drumLeft[j] + 0.3 * (m.noise1[j] + m.drumNoise[j]);
      expectedRight[j] = m.horn1[j] * g.pan1Right[j] + m.horn2[j] * g.pan2Right[j] +
                         m.drum[j] * g.drumRight[j] + 0.3 * (m.noise2[j] + m.drumNoise[j]);
    }
    kernels.mixSends(twin.m, twin.g, left.data(), right.data(), n);
    twin.expectSignals(plain, n);
    expectSame(left, expectedLeft, size_t(n));
    expectSame(right, expectedRight, size_t(n));
  }
}

TEST_P(KernelTwin, MixRoom) {
  const double levels[] = {0.9, 0.6, 0.4};
  for (const int n : kLengths) {
    MixTwin twin(*this), plain(*this);
    for (size_t i = 0; i < 25; ++i) std::copy_n(twin.rows[i].begin(), 80, plain.rows[i].begin());
    const Numbers left = noise(), right = noise();
    const MixSignals& m = plain.m;
    const MixGains& g = plain.g;
    for (size_t j = 0; j < size_t(n); ++j) {
      const double gain = g.horn[j] * 0.7;
      m.horn1[j] += (left[j] * levels[0] + m.noise1[j]) * gain;
      m.horn2[j] += (right[j] * levels[1] + m.noise2[j]) * gain * g.microphone2[j];
      m.drum[j] += (left[j] * levels[2] + m.drumNoise[j]) * g.drum[j];
    }
    kernels.mixRoom(twin.m, twin.g, left.data(), right.data(), levels, n);
    twin.expectSignals(plain, n);
  }
}

TEST_P(KernelTwin, MixOutput) {
  for (const int n : kLengths) {
    MixTwin twin(*this);
    Numbers left(80), right(80), expectedLeft(80), expectedRight(80);
    const auto& [m, g, f] = std::tie(twin.m, twin.g, twin.f);
    for (size_t j = 0; j < size_t(n); ++j) {
      const double high = f.hornShare[j], low = f.drumShare[j], gain = std::pow(10, -6 / 20.0);
      const double horn1 = (1 - high) * m.horn1[j] + high * f.horn1[j];
      const double horn2 = (1 - high) * m.horn2[j] + high * f.horn2[j];
      const double drum = (1 - low) * m.drum[j] + low * f.drum[j];
      expectedLeft[j] =
          gain * (horn1 * g.pan1Left[j] + horn2 * g.pan2Left[j] + drum * g.drumLeft[j]);
      expectedRight[j] =
          gain * (horn1 * g.pan1Right[j] + horn2 * g.pan2Right[j] + drum * g.drumRight[j]);
    }
    kernels.mixOutput(twin.m, twin.g, twin.f, left.data(), right.data(), n);
    expectSame(left, expectedLeft, size_t(n), 1e-10); // the gain has eleven digits
    expectSame(right, expectedRight, size_t(n), 1e-10);
  }
}

TEST_P(KernelTwin, Fir) {
  const Numbers table = noise(kFirTaps), past = noise(80 * 8);
  for (const int n : kLengths) {
    for (const int step : {1, 2, 4, 8}) {
      Numbers out(80), expected(80);
      for (int j = 0; j < n; ++j)
        for (int k = 0; k < kFirTaps; ++k)
          expected[size_t(j)] += table[size_t(k)] * past[size_t(step * j + k)];
      kernels.fir(table.data(), past.data(), step, out.data(), n);
      expectSame(out, expected, size_t(n));
    }
  }
}

TEST_P(KernelTwin, Tube) {
  const auto half = [](double x) {
    const double u = 0.55 * x / (1 + x * (x >= 0 ? 0.5 : -0.125));
    return 1.4 * (1.5 * u - 0.5 * u * u * u - 0.3);
  };
  double tracker = 0.01, dc = 0.01;
  for (const int n : kLengths) {
    const Numbers drive = noise(80, 0.5, 3);
    Numbers samples = noise(80), expected = samples;
    samples[0] = expected[0] = 1e-9;
    for (size_t j = 0; j < size_t(n); ++j) {
      const double driven = -half(-half(drive[j] * samples[j] * 1.18));
      dc += 0.01 * (driven - dc);
      if (std::abs(samples[j]) >= 1e-8) expected[j] = (driven - dc) / drive[j];
    }
    kernels.tube(drive.data(), 0.01, tracker, samples.data(), n);
    expectSame(samples, expected, size_t(n));
    EXPECT_NEAR(tracker, dc, 1e-12);
  }
}

TEST_P(KernelTwin, Transistor) {
  for (const int n : kLengths) {
    const Numbers drive = noise(80, 0.5, 3);
    Numbers samples = noise(80), expected = samples;
    samples[0] = expected[0] = 1e-9;
    for (size_t j = 0; j < size_t(n); ++j) {
      const double w = std::clamp(drive[j] * samples[j] * 1.34349, -1.0, 1.0);
      if (std::abs(samples[j]) >= 1e-8) expected[j] = (1.5 * w - 0.5 * w * w * w) * 0.5 / drive[j];
    }
    kernels.transistor(drive.data(), samples.data(), n);
    expectSame(samples, expected, size_t(n));
  }
}

INSTANTIATE_TEST_SUITE_P(Every, KernelTwin,
                         testing::Values(&kBaselineKernels, &kAvx2Kernels, &kAvx512Kernels),
                         [](const auto& set) { return std::string(set.param->name); });

} // namespace
} // namespace qlx::test
