// SPDX-License-Identifier: ISC
#include "engine/rotor/RotorHistory.h"

namespace qlx::engine {

void RotorHistory::setSampleRate(double hz, int factor) noexcept {
  m_sampleRate = hz;
  m_updateInterval = kUpdateInterval / factor;
  m_counter = 0;
  motion.setSampleRate(hz);
}

void RotorHistory::clear() noexcept {
  motion.clear();
  m_angles.clear();
  m_writeIndex = 0;
  m_counter = 0;
}

void RotorHistory::advance(int n) noexcept {
  SubBlock angles;
  const auto size = static_cast<std::size_t>(n);
  motion.advance({angles.data(), size}, {m_speeds.data(), size});
  m_angles.write(m_writeIndex, {angles.data(), size});
}

void RotorHistory::finish(int n) noexcept {
  m_writeIndex = (m_writeIndex + n) & (kHistorySize - 1);
  m_counter = (m_counter + n) & (kUpdateInterval - 1);
}

} // namespace qlx::engine
