// SPDX-License-Identifier: ISC
#include "tests/engine/KernelTwin.h"

#include <utility>

namespace qlx::test {
namespace {

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
