// SPDX-License-Identifier: ISC
#include "engine/signal/RateConverter.h"

#include "engine/signal/BiquadLanes.h"
#include "engine/signal/FirTables.h"

#include <algorithm>

namespace qlx::engine {

namespace {

constexpr double kFirstImageHz = 22070.0; // until the first rate is set up
constexpr double kImageQ = 0.707F;

const FirTable* tableOf(int factor) {
  switch (factor) {
  case 2: return &kFirFactor2;
  case 4: return &kFirFactor4;
  case 8: return &kFirFactor8;
  default: return nullptr;
  }
}

} // namespace

RateConverter::RateConverter(const kernels::Kernels& kernels) : m_kernels(kernels) {
  for (Biquad* filter : {&m_imageLeft, &m_imageRight}) {
    filter->init(44100.0, Response::LowPass, kFirstImageHz, kImageQ, 0);
    filter->setEnabled(true);
  }
}

void RateConverter::setFactor(int factor) noexcept {
  m_factor = factor;
  if (const FirTable* table = tableOf(factor))
    std::copy(table->rbegin(), table->rend(), m_table.begin());
}

void RateConverter::setImageFrequency(double hz) noexcept {
  m_imageLeft.setFrequency(hz);
  m_imageRight.setFrequency(hz);
}

void RateConverter::setHostRate(double hz) noexcept {
  for (Biquad* filter : {&m_imageLeft, &m_imageRight}) {
    filter->setSampleRate(hz);
    filter->setInstantUpdate(false);
  }
}

void RateConverter::setInstantUpdate() noexcept {
  m_imageLeft.setInstantUpdate(true);
  m_imageRight.setInstantUpdate(true);
}

void RateConverter::clear() noexcept {
  m_input.clear();
  m_left.clear();
  m_right.clear();
}

void RateConverter::clearFilters() noexcept {
  m_imageLeft.clearState();
  m_imageRight.clearState();
}

void RateConverter::Line::finish(int n) noexcept {
  std::copy_n(m_samples.begin() + n, kPast, m_samples.begin());
}

int RateConverter::decimate(const SubBlock& in, int n, SubBlock& out,
                            std::array<int, kSubBlock>& at) noexcept {
  int count = 0;
  for (int j = firstEngineSample(); j < n; j += m_factor) at[static_cast<std::size_t>(count++)] = j;
  if (m_factor == 1) {
    out = in;
    return count;
  }
  for (int j = 0; j < n; ++j) m_input.write(j, in[static_cast<std::size_t>(j)]);
  if (count > 0) m_kernels.fir(m_table.data(), m_input.before(at[0]), m_factor, out.data(), count);
  m_input.finish(n);
  return count;
}

void RateConverter::interpolateSide(Line& line, int n, SubBlock& side) const noexcept {
  for (int j = 0; j < n; ++j) line.write(j, side[static_cast<std::size_t>(j)] * m_factor);
  m_kernels.fir(m_table.data(), line.before(0), 1, side.data(), n);
  line.finish(n);
}

void RateConverter::interpolate(int n, SubBlock& left, SubBlock& right) noexcept {
  if (m_factor > 1) {
    // Zeros between the engine samples, then the image filters, then the low-passes.
    kernels::PairSections<2> image{};
    image.field[kernels::kB0][2] = image.field[kernels::kB0][3] = 1.0;
    copyToLane(m_imageLeft, m_imageLeft.fixedMemory(), image.field, 0);
    copyToLane(m_imageRight, m_imageRight.fixedMemory(), image.field, 1);
    std::array<double, 2 * (kSubBlock + 2)> pairs{};
    std::size_t next = 0;
    for (int j = firstEngineSample(); j < n; j += m_factor, ++next) {
      pairs[2 * static_cast<std::size_t>(j)] = left[next];
      pairs[2 * static_cast<std::size_t>(j) + 1] = right[next];
    }
    m_kernels.pairSeries(seriesOf(image), pairs.data(), n);
    for (std::size_t k = 0; k < static_cast<std::size_t>(n); ++k) {
      left[k] = pairs[2 * k];
      right[k] = pairs[2 * k + 1];
    }
    copyFromLane(image.field, 0, m_imageLeft.fixedMemory());
    copyFromLane(image.field, 1, m_imageRight.fixedMemory());
    interpolateSide(m_left, n, left);
    interpolateSide(m_right, n, right);
  }
  m_sampleCounter += static_cast<std::uint32_t>(n);
}

} // namespace qlx::engine
