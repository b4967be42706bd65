// SPDX-License-Identifier: ISC
#pragma once

#include "engine/kernels/GlideKernels.h"
#include "engine/kernels/Kernels.h"

namespace qlx::engine::kernels {
namespace {

constexpr double kLeastSection = 1e-17;

/// Steps by which a section is later than the one before it: with two, the move of an output to its
/// neighbour's lane takes place during the next step instead of before it.
constexpr int kSkew = 2;

/// Sections side by side in a vector, each working on a sample that the one before it has finished:
/// with `Group` lanes a section, section k is k x kSkew samples late. This latency stays inside a
/// sub-block, because lanes rest before their first and after their last sample.
struct SkewedSections {
  Lanes a1, a2, b0, b1, b2;
  Lanes x1, x2, y1, y2;

  SkewedSections(const double* fields, int stride)
      : a1(load(fields + kA1 * stride)), a2(load(fields + kA2 * stride)),
        b0(load(fields + kB0 * stride)), b1(load(fields + kB1 * stride)),
        b2(load(fields + kB2 * stride)), x1(load(fields + kX1 * stride)),
        x2(load(fields + kX2 * stride)), y1(load(fields + kY1 * stride)),
        y2(load(fields + kY2 * stride)) {}

  void storeMemory(double* fields, int stride) const {
    store(fields + kX1 * stride, flushDenormals(x1, kLeastSection));
    store(fields + kX2 * stride, flushDenormals(x2, kLeastSection));
    store(fields + kY1 * stride, flushDenormals(y1, kLeastSection));
    store(fields + kY2 * stride, flushDenormals(y2, kLeastSection));
  }

  void step(Lanes x) {
    // Rounded alike at the edges of a sub-block and inside, so that the sound does not depend on
    // where the host cuts it.
    const Lanes past = subtractProduct(multiplyAdd(b1, x1, b2 * x2), a2, y2);
    const Lanes y = subtractProduct(multiplyAdd(b0, x, past), a1, y1);
    x2 = x1;
    x1 = x;
    y2 = y1;
    y1 = y;
  }

  /// Takes back what the last step did to the lanes outside `active`.
  void keepResting(LaneBits active, const SkewedSections& before) {
    x1 = select(active, x1, before.x1);
    x2 = select(active, x2, before.x2);
    y1 = select(active, y1, before.y1);
    y2 = select(active, y2, before.y2);
  }
};

/// Lanes whose first sample has come by step s, `Group` lanes a section.
template <int Group>
struct Prologue {
  static constexpr int kLatency = kSkew * (kWidth / Group - 1);
  long long lanes[kLatency + 1][kWidth];
  constexpr Prologue() : lanes() {
    for (int s = 0; s <= kLatency; ++s)
      for (int k = 0; k < kWidth; ++k) lanes[s][k] = s >= kSkew * (k / Group) ? -1 : 0;
  }
  LaneBits at(int s) const {
    using BitsInMemory __attribute__((vector_size(kWidth * sizeof(long long)),
                                      aligned(sizeof(long long)), may_alias)) = long long;
    static_assert(alignof(BitsInMemory) == alignof(long long));
    return *reinterpret_cast<const BitsInMemory*>(lanes[s < kLatency ? s : kLatency]);
  }
};
template <int Group>
constexpr Prologue<Group> kPrologue;

/// Lanes that have a sample at step s of a sub-block of n.
template <int Group>
inline LaneBits activeLanes(int s, int n) {
  const LaneBits begun = kPrologue<Group>.at(s);
  return s < n ? begun : begun & ~kPrologue<Group>.at(s - n);
}

/// Outputs of the last steps that have not been taken on, also of lanes that rest by now.
struct InFlight {
  Lanes last{}, beforeLast{};
  void add(Lanes y) {
    beforeLast = last;
    last = y;
  }
};
static_assert(kSkew == 2);

/// A step in which some lanes rest: feed(s, y) makes the input from sample s of the sub-block and
/// the outputs of kSkew steps before, drain(s, y) takes the last section's output for sample s.
template <int Group, class Sections, class Feed, class Drain>
inline void stepAtEdge(Sections& sections, InFlight& outputs, int s, int n, Feed feed,
                       Drain drain) {
  constexpr int kLatency = Prologue<Group>::kLatency;
  const SkewedSections before = sections;
  sections.step(feed(s < n ? s : n - 1, outputs.beforeLast));
  outputs.add(sections.y1);
  sections.keepResting(activeLanes<Group>(s, n), before);
  if (s >= kLatency) drain(s - kLatency, outputs.last);
}

/// Runs one vector over a sub-block.
template <int Group, class Sections, class Feed, class Drain>
inline void runSkewed(Sections& sections, int n, Feed feed, Drain drain) {
  constexpr int kLatency = Prologue<Group>::kLatency;
  const int first = kLatency < n ? kLatency : n;
  InFlight outputs;
  for (int s = 0; s < first; ++s) stepAtEdge<Group>(sections, outputs, s, n, feed, drain);
  for (int s = first; s < n; ++s) {
    sections.step(feed(s, sections.y2));
    drain(s - kLatency, sections.y1);
  }
  if (first < n) outputs = {sections.y1, sections.y2};
  for (int s = n; s < n + kLatency; ++s) stepAtEdge<Group>(sections, outputs, s, n, feed, drain);
}

/// Runs lanes `lane` to `lane` + Vectors x kWidth - 1 of parallel sections; `input` gives the
/// lanes' input at a sample, `sum` collects what they add.
template <int Vectors, int Sections, int Channels, class Input>
inline void addParallel(ParallelSections<Sections, Channels>& s, int lane, int n, Input input,
                        Lanes* sum) {
  Lanes v1[Vectors], v2[Vectors];
  for (int i = 0; i < Vectors; ++i) {
    v1[i] = load(s.v1 + lane + i * kWidth);
    v2[i] = load(s.v2 + lane + i * kWidth);
  }
  for (int j = 0; j < n; ++j) {
    const Lanes x = input(j);
    Lanes total = sum[j];
    for (int i = 0; i < Vectors; ++i) {
      const int at = lane + i * kWidth;
      const Lanes v = (x - load(s.a2 + at) * v2[i]) - load(s.a1 + at) * v1[i];
      total += load(s.c0 + at) * v;
      total += load(s.c1 + at) * v1[i];
      v2[i] = v1[i];
      v1[i] = v;
    }
    sum[j] = total;
  }
  for (int i = 0; i < Vectors; ++i) {
    store(s.v1 + lane + i * kWidth, flushDenormals(v1[i], kLeastSection));
    store(s.v2 + lane + i * kWidth, flushDenormals(v2[i], kLeastSection));
  }
}

void body(BodySections& s, double* pairs, int n) {
  // Eight lanes have 32 registers: all sections go side by side.
  constexpr int kVectors = kWidth == 8 ? 7 : 2;
  static_assert(BodySections::kLanes % (kVectors * kWidth) == 0);
  Lanes sum[kLongestSubBlock] = {};
  for (int lane = 0; lane < s.kLanes; lane += kVectors * kWidth)
    addParallel<kVectors>(
        s, lane, n, [&](int j) { return allPairs(pairs + 2 * j); }, sum);
  for (int j = 0; j < n; ++j) {
    double added[2];
    storePair(added, sum[j]);
    pairs[2 * j] = s.direct * pairs[2 * j] + added[0];
    pairs[2 * j + 1] = s.direct * pairs[2 * j + 1] + added[1];
  }
}

void reducedBody(ReducedBodySections& s, double* samples, int n) {
  static_assert(ReducedBodySections::kLanes % kWidth == 0);
  Lanes sum[kLongestSubBlock] = {};
  addParallel<ReducedBodySections::kLanes / kWidth>(
      s, 0, n, [&](int j) { return all(samples[j]); }, sum);
  for (int j = 0; j < n; ++j) samples[j] = s.direct * samples[j] + sumOfLanes(sum[j]);
}

void pairSeries(const PairSeries& series, double* pairs, int n) {
  for (int lane = 0; lane < 2 * series.count; lane += kWidth) {
    SkewedSections sections(series.fields + lane, series.stride);
    runSkewed<2>(
        sections, n, [&](int s, Lanes y) { return shiftInPair(pairs + 2 * s, y); },
        [&](int s, Lanes y) { storeLastPair(pairs + 2 * s, y); });
    sections.storeMemory(series.fields + lane, series.stride);
  }
}

void chainSeries(const ChainSeries& series, double* samples, int n) {
  for (int lane = 0; lane < series.count; lane += kWidth) {
    SkewedSections sections(series.fields + lane, series.stride);
    runSkewed<1>(
        sections, n, [&](int s, Lanes y) { return shiftIn(samples[s], y); },
        [&](int s, Lanes y) { samples[s] = y[kWidth - 1]; });
    sections.storeMemory(series.fields + lane, series.stride);
  }
}

/// Sections whose outputs pass a soft limiter before they go back.
struct LimitedSections : SkewedSections {
  Lanes limit, offset;

  LimitedSections(const ChainSections<4>& s, int lane)
      : SkewedSections(s.field[0] + lane, 4), limit(load(s.limit + lane)),
        offset(load(s.offset + lane)) {}

  void step(Lanes x) {
    SkewedSections::step(x);
    y1 = y1 / multiplyAdd(absolute(y1 + offset), limit, all(1.0));
  }
};

/// Runs up to three chains in step, so that they wait for each other's divisions no longer than one
/// would for its own.
template <int Count>
inline void runLimited(ChainSections<4>* const* chains, double* const* signals, int lane, int n) {
  using Sections = LimitedSections;
  Sections s[3] = {
      {*chains[0], lane}, {*chains[Count > 1 ? 1 : 0], lane}, {*chains[Count > 2 ? 2 : 0], lane}};
  constexpr int kLatency = kSkew * (kWidth - 1);
  InFlight outputs[Count];
  const auto edge = [&](int k, int step) {
    stepAtEdge<1>(
        s[k], outputs[k], step, n, [&](int j, Lanes y) { return shiftIn(signals[k][j], y); },
        [&](int j, Lanes y) { signals[k][j] = y[kWidth - 1]; });
  };
  const int first = kLatency < n ? kLatency : n;
  for (int k = 0; k < Count; ++k)
    for (int step = 0; step < first; ++step) edge(k, step);
  for (int step = first; step < n; ++step) {
    for (int k = 0; k < Count; ++k) s[k].step(shiftIn(signals[k][step], s[k].y2));
    for (int k = 0; k < Count; ++k) signals[k][step - kLatency] = s[k].y1[kWidth - 1];
  }
  for (int k = 0; k < Count; ++k) {
    if (first < n) outputs[k] = {s[k].y1, s[k].y2};
    for (int step = n; step < n + kLatency; ++step) edge(k, step);
    s[k].storeMemory(chains[k]->field[0] + lane, 4);
  }
}

void limitedChains(ChainSections<4>* const* chains, double* const* signals, int count, int n) {
  for (int lane = 0; lane < 4; lane += kWidth) {
    if (count == 3) runLimited<3>(chains, signals, lane, n);
    if (count == 2) runLimited<2>(chains, signals, lane, n);
    if (count == 1) runLimited<1>(chains, signals, lane, n);
  }
}

} // namespace
} // namespace qlx::engine::kernels
