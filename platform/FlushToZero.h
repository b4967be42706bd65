#pragma once

#include <xmmintrin.h>

namespace qlx::platform {

/// While it lives, the calling thread's arithmetic treats subnormal numbers as zero, rounds to
/// nearest and traps nothing, whatever mode the host left; then the host has its mode back.
class FlushToZero {
 public:
  FlushToZero() noexcept : m_hostMode(_mm_getcsr()) {
    constexpr unsigned kAllTrapsMasked = 0x1F80;
    constexpr unsigned kSubnormalInputsAreZero = 0x0040;
    constexpr unsigned kSubnormalResultsAreZero = 0x8000;
    _mm_setcsr(kAllTrapsMasked | kSubnormalInputsAreZero | kSubnormalResultsAreZero);
  }
  ~FlushToZero() { _mm_setcsr(m_hostMode); }
  FlushToZero(const FlushToZero&) = delete;
  FlushToZero& operator=(const FlushToZero&) = delete;

 private:
  unsigned m_hostMode;
};

} // namespace qlx::platform
