#include "engine/HornCrossover.h"

#include "engine/FilterDesigns.h"

namespace qlx::engine {

namespace {

constexpr double kSaturationOffset = 0.03125;
constexpr double kDifferentiatorHz = 500.0;

constexpr std::array<FilterDesign, 12> kChain = {{
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
}};
constexpr std::size_t kChainSaturating = 10;

constexpr std::array<FilterDesign, 8> kReducedChain = {{
    {Response::Peaking, 2940, 11, -10},
    {Response::Peaking, 3360, 10, -9},
    {Response::HighPass, 180, 0.35, 0},
    {Response::Peaking, 1150, 11, -9},
    {Response::Peaking, 2940, 11, -11, false},
    {Response::Peaking, 3360, 10, -9, false},
    {Response::HighPass, 100, 0.35, 0, false},
    {Response::Peaking, 1150, 11, -9, false},
}};
constexpr std::array<std::size_t, 2> kReducedSaturating = {2, 7};

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

HornCrossover::HornCrossover() {
  initChain(m_chain, kChain);
  initChain(m_reducedChain, kReducedChain);
}

void HornCrossover::setSampleRate(double hz) noexcept {
  m_pole = settlingPole(kDifferentiatorHz, hz);
  setChainRate(m_chain, kChain, hz);
  setChainRate(m_reducedChain, kReducedChain, hz);
}

void HornCrossover::clear() noexcept {
  m_differentiator = 0.0;
  m_previous = 0.0;
}

void HornCrossover::clearFilters() noexcept {
  for (Biquad& section : m_chain) section.clearState();
  for (Biquad& section : m_reducedChain) section.clearState();
}

void HornCrossover::setInstantUpdate() noexcept {
  for (Biquad& section : m_chain) section.setInstantUpdate(true);
  for (Biquad& section : m_reducedChain) section.setInstantUpdate(true);
}

void HornCrossover::setSaturation(double drive) noexcept {
  m_chain[kChainSaturating].setSaturation(drive);
  for (const std::size_t i : kReducedSaturating) m_reducedChain[i].setSaturation(drive);
}

void HornCrossover::process(const RunBuffer& x, const RunBuffer& feedGain, int n, RunBuffer& horn,
                            RunBuffer& reduced) noexcept {
  const auto size = static_cast<std::size_t>(n);
  for (std::size_t k = 0; k < size; ++k) {
    m_differentiator = flushed(m_differentiator * m_pole + (x[k] - m_previous));
    m_previous = x[k];
    horn[k] = reduced[k] = m_differentiator * feedGain[k];
  }
  for (Biquad& section : m_chain) section.processGlideSaturating({horn.data(), size});
  for (Biquad& section : m_reducedChain) section.processGlideSaturating({reduced.data(), size});
}

} // namespace qlx::engine
