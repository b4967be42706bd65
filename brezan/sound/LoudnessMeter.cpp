// SPDX-License-Identifier: ISC
#include "brezan/sound/LoudnessMeter.h"

#include <cmath>
#include <limits>
#include <stdexcept>

namespace qlx::tools {

void LoudnessMeter::Closer::operator()(ebur128_state* state) const { ebur128_destroy(&state); }

LoudnessMeter::LoudnessMeter(int channels, double rate)
    : m_state(ebur128_init(static_cast<unsigned>(channels),
                           static_cast<unsigned long>(std::lround(rate)), EBUR128_MODE_I)) {
  if (!m_state) throw std::runtime_error("loudness cannot be measured at this rate");
  if (channels == 1) ebur128_set_channel(m_state.get(), 0, EBUR128_DUAL_MONO);
}

void LoudnessMeter::add(std::span<const double> interleaved) {
  if (ebur128_add_frames_double(m_state.get(), interleaved.data(),
                                interleaved.size() / m_state->channels) != EBUR128_SUCCESS)
    throw std::runtime_error("no memory to measure the loudness");
}

double LoudnessMeter::integrated() const {
  double lufs = -std::numeric_limits<double>::infinity();
  ebur128_loudness_global(m_state.get(), &lufs);
  return lufs;
}

} // namespace qlx::tools
