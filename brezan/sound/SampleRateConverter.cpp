// SPDX-License-Identifier: ISC
#include "brezan/sound/SampleRateConverter.h"

#include <algorithm>
#include <cmath>
#include <samplerate.h>
#include <stdexcept>
#include <string>

namespace qlx::tools {

void ResamplerCloser::operator()(SRC_STATE_tag* state) const { src_delete(state); }

SampleRateConverter::SampleRateConverter(double fromHz, double toHz, int channels)
    : m_ratio(toHz / fromHz), m_channels(channels) {
  int error = 0;
  m_state.reset(src_new(SRC_SINC_BEST_QUALITY, channels, &error));
  if (!m_state || src_is_valid_ratio(m_ratio) == 0)
    throw std::runtime_error("cannot convert from " + std::to_string(std::lround(fromHz)) +
                             " Hz to " + std::to_string(std::lround(toHz)) + " Hz");
}

std::span<const double> SampleRateConverter::convert(std::span<const double> interleaved) {
  m_in.insert(m_in.end(), interleaved.begin(), interleaved.end());
  m_taken += static_cast<long long>(interleaved.size()) / m_channels;
  m_out.clear();
  run(false);
  return m_out;
}

std::span<const double> SampleRateConverter::finish() {
  m_out.clear();
  run(true);
  // The converter's own count can be off by one.
  const long long missing = std::llround(static_cast<double>(m_taken) * m_ratio) - m_given;
  const auto size = static_cast<long long>(m_out.size()) + missing * m_channels;
  m_out.resize(static_cast<std::size_t>(std::max(0LL, size)));
  return m_out;
}

void SampleRateConverter::run(bool last) {
  const auto channels = static_cast<std::size_t>(m_channels);
  m_part.resize(4096 * channels);
  SRC_DATA data{};
  do {
    data.data_in = m_in.data();
    data.input_frames = static_cast<long>(m_in.size() / channels);
    data.data_out = m_part.data();
    data.output_frames = static_cast<long>(m_part.size() / channels);
    data.src_ratio = m_ratio;
    data.end_of_input = last ? 1 : 0;
    if (const int error = src_process(m_state.get(), &data); error != 0)
      throw std::runtime_error(std::string("cannot convert the rate: ") + src_strerror(error));
    m_in.erase(m_in.begin(), m_in.begin() + data.input_frames_used * m_channels);
    m_out.insert(m_out.end(), m_part.begin(), m_part.begin() + data.output_frames_gen * m_channels);
    m_given += data.output_frames_gen;
  } while (data.output_frames_gen > 0 || data.input_frames_used > 0);
}

} // namespace qlx::tools
