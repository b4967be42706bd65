// SPDX-License-Identifier: ISC
#include "engine/signal/Interpolation.h"
#include "tests/engine/KernelTwin.h"

#include <numbers>

namespace qlx::test {
namespace {

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
  /// The low-pass's numerator nearly cancels.
  void expectRun(KernelTwin& test, const Numbers& between, int n, double tolerance = 1e-11) {
    const Numbers slow = test.noise(), fast = test.noise();
    Numbers out(80), expected(80);
    for (size_t j = 0; j < size_t(n); ++j) {
      if (between[j] > 0) tune(between[j]);
      expected[j] = lowPass.tickGlide(slow[j]) + shelf.tickGlide(fast[j]);
    }
    test.kernels.noiseTreble(treble, between.data(), slow.data(), fast.data(), out.data(), n);
    expectSame(out, expected, size_t(n), tolerance);
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

TEST_P(KernelTwin, NoiseTrebleOfASlowlyMovingSpeed) {
  TrebleTwin twin;
  kernels.settleTreble(twin.treble);
  double speed = 0.15;
  for (const double step : {2e-5, 2e-5, -2e-5, 6e-5, 0.0}) {
    for (const int n : {64, 63, 32}) {
      Numbers moving(80);
      for (size_t j = 0; j < 80; ++j) moving[j] = speed + step * double(j);
      twin.expectRun(*this, moving, n, 1e-10);
      speed = moving[size_t(n)];
    }
    twin.expectRun(*this, Numbers(80, -1.0), 64, 1e-10); // beyond the speeds the tuning stays
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

} // namespace
} // namespace qlx::test
