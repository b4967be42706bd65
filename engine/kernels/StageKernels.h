// SPDX-License-Identifier: ISC
#pragma once

#include "engine/kernels/GlideKernels.h"

namespace qlx::engine::kernels {
namespace {

void roomSide(RoomSide& side, double* out, int n) {
  Lanes sum[kLongestSubBlock + 4] = {};
  for (int tap = 0; tap < RoomSide::kTaps; tap += kWidth) {
    // A tap's line and low-pass y = (y' - x) p + x in one.
    const Lanes pole = load(side.pole + tap), rest = 1.0 - pole;
    const Lanes older = load(side.older + tap) * rest, newer = load(side.newer + tap) * rest;
    Lanes state = load(side.state + tap);
    const auto four = [&](int j) {
      const double* at[kWidth];
      for (int k = 0; k < kWidth; ++k) at[k] = side.first[tap + k] + j;
      return loadQuad(at);
    };
    const auto add = [&](int j, Lanes here, Lanes next) {
      if (j >= n) return;
      state = state * pole + (older * here + newer * next);
      sum[j] += state;
    };
    Quad here = four(0);
    for (int j = 0; j < n; j += 4) {
      const Quad next = four(j + 4);
      add(j, here.p0, here.p1);
      add(j + 1, here.p1, here.p2);
      add(j + 2, here.p2, here.p3);
      add(j + 3, here.p3, next.p0);
      here = next;
    }
    store(side.state + tap, flushDenormals(state, kLeastState));
  }
  for (int j = 0; j < n; ++j) out[j] = sumOfLanes(sum[j]);
}

void fir(const double* table, const double* past, int step, double* out, int n) {
  if (step == 1) {
    // Neighbouring outputs side by side.
    for (int j = 0; j < n; j += 2 * kWidth) {
      Lanes a{}, b{};
      for (int k = 0; k < kFirTaps; ++k) {
        const double tap = table[k];
        a += tap * load(past + j + k);
        b += tap * load(past + j + k + kWidth);
      }
      store(out + j, a);
      store(out + j + kWidth, b);
    }
    return;
  }
  for (int j = 0; j < n; ++j) {
    Lanes a{}, b{};
    for (int k = 0; k < kFirTaps; k += 2 * kWidth) {
      a += load(table + k) * load(past + step * j + k);
      b += load(table + k + kWidth) * load(past + step * j + k + kWidth);
    }
    out[j] = sumOfLanes(a + b);
  }
}

/// Magnitude below which a driven stage passes its input.
constexpr double kSilence = 1e-8;

// A tube stage: x / (1 + c x) bends the positive half wave (c = 0.5) more than the negative one
// (c = -0.125), which makes even harmonics; the cubic knee 1.5 u - 0.5 u^3 limits both. The bias
// moves the next stage's working point off the middle. Two stages in series with this input gain
// have a gain of +0.3 dB for small signals.
constexpr double kTubeInputGain = 1.18;
constexpr double kTubeSlope = 0.55;
constexpr double kTubePositiveBend = 0.5;
constexpr double kTubeNegativeBend = -0.125;
constexpr double kTubeBias = 0.3;
constexpr double kTubeStageGain = 1.4;

inline Lanes tubeStage(Lanes x) {
  const Lanes bend = select(x >= 0.0, all(kTubePositiveBend), all(kTubeNegativeBend));
  const Lanes u = kTubeSlope * x / (1.0 + x * bend);
  return kTubeStageGain * (1.5 * u - 0.5 * u * u * u - kTubeBias);
}

void tube(const double* drive, double trackerShare, double& tracker, double* samples, int n) {
  alignas(32) double driven[kLongestSubBlock + 4], dc[kLongestSubBlock + 4];
  for (int j = 0; j < n; j += kWidth)
    store(driven + j, -tubeStage(-tubeStage(load(drive + j) * load(samples + j) * kTubeInputGain)));
  // The asymmetry's DC is tracked through silence too, so that no thump follows it.
  double level = tracker;
  for (int j = 0; j < n; ++j) {
    level = level * (1.0 - trackerShare) + driven[j] * trackerShare;
    dc[j] = level;
  }
  tracker = flushDenormals(level, kLeastState);
  for (int j = 0; j < n; j += kWidth) {
    const Lanes x = load(samples + j);
    const Lanes y = (load(driven + j) - load(dc + j)) / load(drive + j);
    store(samples + j, select(absolute(x) < kSilence, x, y));
  }
}

/// Input gain of the transistor stage: with the knee's slope of 1.5 and the output's 0.5 small
/// signals pass at +0.07 dB.
constexpr double kTransistorInputGain = 1.34349;

/// Transistor stage: a cubic knee up to a hard limit.
void transistor(const double* drive, double* samples, int n) {
  for (int j = 0; j < n; j += kWidth) {
    const Lanes x = load(samples + j), gain = load(drive + j);
    const Lanes w = larger(smaller(gain * x * kTransistorInputGain, all(1.0)), all(-1.0));
    const Lanes y = (1.5 * w - 0.5 * w * w * w) * 0.5 / gain;
    store(samples + j, select(absolute(x) < kSilence, x, y));
  }
}

} // namespace
} // namespace qlx::engine::kernels
