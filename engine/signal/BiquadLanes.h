// SPDX-License-Identifier: ISC
#pragma once

#include "engine/kernels/Kernels.h"
#include "engine/signal/Biquad.h"
#include "engine/signal/SubBlock.h"

#include <algorithm>
#include <span>

namespace qlx::engine {

// Sections that keep their settings in Biquad and run in the kernels while none of them glides.

/// Copies a section's wanted coefficients and one kind of memory to lane `lane` of kernel fields.
template <int Lanes>
void copyToLane(const Biquad& section, const Biquad::Memory& memory,
                double (&field)[kernels::kSectionFields][Lanes], std::size_t lane) noexcept {
  const Biquad::Coefficients& k = section.target();
  field[kernels::kA1][lane] = k.a1;
  field[kernels::kA2][lane] = k.a2;
  field[kernels::kB0][lane] = k.b0;
  field[kernels::kB1][lane] = k.b1;
  field[kernels::kB2][lane] = k.b2;
  field[kernels::kX1][lane] = memory.x1;
  field[kernels::kX2][lane] = memory.x2;
  field[kernels::kY1][lane] = memory.y1;
  field[kernels::kY2][lane] = memory.y2;
}

template <int Lanes>
void copyFromLane(const double (&field)[kernels::kSectionFields][Lanes], std::size_t lane,
                  Biquad::Memory& memory) noexcept {
  memory = {field[kernels::kX1][lane], field[kernels::kX2][lane], field[kernels::kY1][lane],
            field[kernels::kY2][lane]};
}

/// Sections as the kernels take them, where they are.
template <int N>
kernels::PairSeries seriesOf(kernels::PairSections<N>& sections) noexcept {
  static_assert(N % 2 == 0);
  return {sections.field[0], 2 * N, N};
}
template <int N>
kernels::ChainSeries seriesOf(kernels::ChainSections<N>& sections) noexcept {
  static_assert(N % 4 == 0);
  return {sections.field[0], N, N};
}

inline bool allSettled(std::span<const Biquad> sections) noexcept {
  return std::all_of(sections.begin(), sections.end(),
                     [](const Biquad& section) { return section.isSettled(); });
}

/// Copies up to N settled sections of one channel to kernel lanes for a run and, when it ends, what
/// they remember back. Lanes without a section pass.
template <int N>
class ChainCopy {
 public:
  using MemoryOf = Biquad::Memory& (Biquad::*)() noexcept;

  explicit ChainCopy(std::span<Biquad> sections, MemoryOf memory = &Biquad::glideMemory) noexcept
      : m_sections(sections), m_memory(memory) {
    for (std::size_t i = 0; i < N; ++i) {
      if (i < sections.size()) {
        copyToLane(sections[i], (sections[i].*memory)(), m_lanes.field, i);
        m_lanes.limit[i] = sections[i].limiterCurvature();
        m_lanes.offset[i] = sections[i].limiterOffset();
      } else {
        m_lanes.field[kernels::kB0][i] = 1.0;
      }
    }
  }
  ~ChainCopy() {
    for (std::size_t i = 0; i < m_sections.size(); ++i)
      copyFromLane(m_lanes.field, i, (m_sections[i].*m_memory)());
  }
  ChainCopy(const ChainCopy&) = delete;
  ChainCopy& operator=(const ChainCopy&) = delete;

  kernels::ChainSections<N>& lanes() noexcept { return m_lanes; }

 private:
  std::span<Biquad> m_sections;
  MemoryOf m_memory;
  kernels::ChainSections<N> m_lanes{};
};

/// Runs the same two sections of a left and a right channel over n samples of each, in place.
class PairRunner {
 public:
  explicit PairRunner(const kernels::Kernels& kernels) noexcept : m_kernels(kernels) {}

  using Channel = std::span<Biquad>; ///< one or two sections

  void process(Channel left, Channel right, int n, SubBlock& leftSamples,
               SubBlock& rightSamples) const noexcept {
    if (!allSettled(left) || !allSettled(right)) {
      const auto size = static_cast<std::size_t>(n);
      for (Biquad& section : left) section.processGlide({leftSamples.data(), size});
      for (Biquad& section : right) section.processGlide({rightSamples.data(), size});
      return;
    }
    kernels::PairSections<2> sections{};
    std::fill(std::begin(sections.field[kernels::kB0]), std::end(sections.field[kernels::kB0]),
              1.0);
    std::array<double, 2 * (kSubBlock + 2)> pairs;
    for (std::size_t i = 0; i < left.size(); ++i) {
      copyToLane(left[i], left[i].glideMemory(), sections.field, 2 * i);
      copyToLane(right[i], right[i].glideMemory(), sections.field, 2 * i + 1);
    }
    for (std::size_t k = 0; k < static_cast<std::size_t>(n); ++k) {
      pairs[2 * k] = leftSamples[k];
      pairs[2 * k + 1] = rightSamples[k];
    }
    m_kernels.pairSeries(seriesOf(sections), pairs.data(), n);
    for (std::size_t k = 0; k < static_cast<std::size_t>(n); ++k) {
      leftSamples[k] = pairs[2 * k];
      rightSamples[k] = pairs[2 * k + 1];
    }
    for (std::size_t i = 0; i < left.size(); ++i) {
      copyFromLane(sections.field, 2 * i, left[i].glideMemory());
      copyFromLane(sections.field, 2 * i + 1, right[i].glideMemory());
    }
  }

 private:
  const kernels::Kernels& m_kernels;
};

} // namespace qlx::engine
