// SPDX-License-Identifier: ISC
#include "engine/cabinet/DriverFilters.h"

#include "engine/signal/BiquadLanes.h"
#include "engine/signal/Denormals.h"
#include "engine/signal/FilterDesigns.h"
#include "engine/signal/OnePole.h"

namespace qlx::engine {

namespace {

constexpr double kSaturationOffset = 0.03125;
constexpr double kDifferentiatorHz = 500.0;

constexpr auto kHorn = std::to_array<FilterDesign>({
    {Response::Peaking, 5500, 5, -18},
    {Response::Peaking, 4550, 5, -17},
    {Response::Peaking, 5000, 0.88, 12},
    {Response::Peaking, 6500, 1.6, 10},
    {Response::Peaking, 782, 5, -4.5},
    {Response::Peaking, 1050, 5, -3.8},
    {Response::Peaking, 7330, 20, -12},
    {Response::Peaking, 6670, 20, -10},
    {Response::Peaking, 8580, 20, -15},
    {Response::Peaking, 2400, 1.3, -3},
    {Response::LowPass, 2000, 1, 0},
    {Response::HighPass, 2000, 0.7, 0},
});
/// The first of the horn's run in a chain without limiters, the last four in one with them.
constexpr std::size_t kHornStraight = 8;
constexpr std::size_t kHornSaturating = 10;
static_assert(kHornSaturating >= kHornStraight && kHorn.size() == kHornStraight + 4);

constexpr auto kReducedHorn = std::to_array<FilterDesign>({
    {Response::Peaking, 2940, 11, -10},
    {Response::Peaking, 3360, 10, -9},
    {Response::HighPass, 180, 0.35, 0},
    {Response::Peaking, 1150, 11, -9},
    {Response::Peaking, 2940, 11, -11, false},
    {Response::Peaking, 3360, 10, -9, false},
    {Response::HighPass, 100, 0.35, 0, false},
    {Response::Peaking, 1150, 11, -9, false},
});
constexpr std::array<std::size_t, 2> kReducedSaturating = {2, 7};
constexpr std::size_t kReducedEnabled = 4;

constexpr auto kDrum = std::to_array<FilterDesign>({
    {Response::LowPass, 1170, 0.93, 0},
    {Response::Peaking, 252, 0.71, 7},
    {Response::HighPass, 90, 1.0, 0},
    {Response::LowShelf, 200, 0.35, 3},
});

template <std::size_t N>
void initChain(std::array<Biquad, N>& chain, const std::array<FilterDesign, N>& designs) {
  for (std::size_t i = 0; i < N; ++i) {
    const FilterDesign& d = designs[i];
    chain[i].init(44100.0, d.response, d.hz, d.q, d.db);
    chain[i].setSaturationOffset(kSaturationOffset);
    chain[i].setEnabled(d.enabled);
  }
}

template <std::size_t N>
void setChainRate(std::array<Biquad, N>& chain, const std::array<FilterDesign, N>& designs,
                  double hz) {
  for (std::size_t i = 0; i < N; ++i) {
    chain[i].setSampleRate(hz);
    chain[i].setFrequencyAndQ(designs[i].hz, designs[i].q);
    chain[i].setInstantUpdate(false);
  }
}

} // namespace

DriverFilters::DriverFilters(const kernels::Kernels& kernels) : m_kernels(kernels) {
  initChain(m_horn, kHorn);
  initChain(m_reducedHorn, kReducedHorn);
  initChain(m_drum, kDrum);
}

void DriverFilters::setHornRate(double hz) noexcept {
  m_pole = settlingPole(kDifferentiatorHz, hz);
  setChainRate(m_horn, kHorn, hz);
  setChainRate(m_reducedHorn, kReducedHorn, hz);
}

void DriverFilters::setDrumRate(double hz) noexcept { setChainRate(m_drum, kDrum, hz); }

void DriverFilters::clearHorn() noexcept {
  m_differentiator = 0.0;
  m_previous = 0.0;
}

void DriverFilters::clearDrum() noexcept {
  for (Biquad& section : m_drum) {
    section.clearState();
    section.setInstantUpdate(true);
  }
}

void DriverFilters::clearFilters() noexcept {
  for (Biquad& section : m_horn) section.clearState();
  for (Biquad& section : m_reducedHorn) section.clearState();
}

void DriverFilters::setHornInstantUpdate() noexcept {
  for (Biquad& section : m_horn) section.setInstantUpdate(true);
  for (Biquad& section : m_reducedHorn) section.setInstantUpdate(true);
}

void DriverFilters::setHornSaturation(double drive) noexcept {
  m_horn[kHornSaturating].setSaturation(drive);
  for (const std::size_t i : kReducedSaturating) m_reducedHorn[i].setSaturation(drive);
}

void DriverFilters::setDrumSaturation(double drive) noexcept {
  for (Biquad& section : m_drum) section.setSaturation(drive);
}

void DriverFilters::differentiate(const SubBlock& x, const SubBlock& hornGain, int n,
                                  Output& out) noexcept {
  double state = m_differentiator, previous = m_previous;
  for (std::size_t k = 0; k < static_cast<std::size_t>(n); ++k) {
    state = state * m_pole + (x[k] - previous);
    previous = x[k];
    out.horn[k] = out.reducedHorn[k] = state * hornGain[k];
  }
  m_differentiator = flushDenormals(state);
  m_previous = previous;
}

void DriverFilters::process(const SubBlock& x, const SubBlock& hornGain, int n,
                            Output& out) noexcept {
  differentiate(x, hornGain, n, out);
  const std::span<Biquad> reduced = std::span<Biquad>(m_reducedHorn).first(kReducedEnabled);
  if (!allSettled(m_horn) || !allSettled(reduced)) {
    const auto size = static_cast<std::size_t>(n);
    for (Biquad& section : m_horn) section.processGlideSaturating({out.horn.data(), size});
    for (Biquad& section : reduced) section.processGlideSaturating({out.reducedHorn.data(), size});
    for (Biquad& section : m_drum) section.processFixedSaturating({out.drum.data(), size});
    return;
  }
  ChainCopy<kHornStraight> straight(std::span<Biquad>(m_horn).first(kHornStraight));
  m_kernels.chainSeries(seriesOf(straight.lanes()), out.horn.data(), n);
  ChainCopy<4> horn(std::span<Biquad>(m_horn).last(4)), reducedHorn(reduced);
  ChainCopy<4> drum(m_drum, &Biquad::fixedMemory);
  kernels::ChainSections<4>* const chains[] = {&horn.lanes(), &reducedHorn.lanes(), &drum.lanes()};
  double* const signals[] = {out.horn.data(), out.reducedHorn.data(), out.drum.data()};
  m_kernels.limitedChains(chains, signals, 3, n);
}

} // namespace qlx::engine
