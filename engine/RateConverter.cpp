#include "engine/RateConverter.h"

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

RateConverter::RateConverter() {
  for (Biquad* filter : {&m_imageLeft, &m_imageRight}) {
    filter->init(44100.0, Response::LowPass, kFirstImageHz, kImageQ, 0);
    filter->setEnabled(true);
  }
}

void RateConverter::setFactor(int factor) noexcept {
  m_factor = factor;
  m_table = tableOf(factor);
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
  m_position = kFirTaps - 1;
}

void RateConverter::clearFilters() noexcept {
  m_imageLeft.clearState();
  m_imageRight.clearState();
}

void RateConverter::Line::write(int position, double x) noexcept {
  const auto i = static_cast<std::size_t>(position & (kFirTaps - 1));
  m_samples[i] = m_samples[i + kFirTaps] = static_cast<float>(x);
}

double RateConverter::Line::filter(int position, const FirTable& table) const noexcept {
  const float* newest = m_samples.data() + (position & (kFirTaps - 1));
  double sum = 0.0;
  for (std::size_t k = 0; k < kFirTaps; ++k)
    sum += static_cast<double>(table[k]) * static_cast<double>(newest[k]);
  return sum;
}

int RateConverter::decimate(const RunBuffer& in, int n, RunBuffer& out,
                            std::array<int, kRun>& at) noexcept {
  std::size_t count = 0;
  for (int j = 0; j < n; ++j) {
    const double x = in[static_cast<std::size_t>(j)];
    if (m_table != nullptr) m_input.write(m_position - 1 - j, x);
    if (!isEngineSample(j)) continue;
    out[count] = m_table != nullptr ? m_input.filter(m_position - 1 - j, *m_table) : x;
    at[count] = j;
    ++count;
  }
  return static_cast<int>(count);
}

void RateConverter::interpolateSide(Biquad& imageFilter, Line& line, int n,
                                    RunBuffer& side) const noexcept {
  // Zeros between the engine samples, then the image filter, then the low-pass.
  RunBuffer spread{};
  std::size_t next = 0;
  for (int j = 0; j < n; ++j) {
    if (isEngineSample(j)) spread[static_cast<std::size_t>(j)] = side[next++];
  }
  imageFilter.processFixed({spread.data(), static_cast<std::size_t>(n)});
  for (int j = 0; j < n; ++j) {
    const int position = m_position - 1 - j;
    line.write(position, spread[static_cast<std::size_t>(j)] * m_factor);
    side[static_cast<std::size_t>(j)] = line.filter(position, *m_table);
  }
}

void RateConverter::interpolate(int n, RunBuffer& left, RunBuffer& right) noexcept {
  if (m_table != nullptr) {
    interpolateSide(m_imageLeft, m_left, n, left);
    interpolateSide(m_imageRight, m_right, n, right);
  }
  m_position = (m_position - n) & (kFirTaps - 1);
  m_sampleCounter += static_cast<std::uint32_t>(n);
}

} // namespace qlx::engine
