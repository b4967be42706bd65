// SPDX-License-Identifier: ISC
#include "engine/signal/Interpolation.h"
#include "tests/engine/KernelTwin.h"

#include <numbers>

namespace qlx::test {
namespace {

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

template <int N>
void tune(GlideLanes<N>& lanes, double edgeShare) {
  lanes.angularRate = 2 * std::numbers::pi / kRate;
  lanes.edgeHz = edgeShare * kRate;
  lanes.share = 1.0 / sectionGlideSteps(kRate);
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

} // namespace
} // namespace qlx::test
