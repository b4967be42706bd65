// SPDX-License-Identifier: ISC
#pragma once

#include <cstdint>
#include <xmmintrin.h>

namespace qlx::platform {

/// While it lives, the calling thread's arithmetic treats subnormal numbers as zero, rounds to
/// nearest and traps nothing, and what the x87 unit computes keeps its full 64 bits, whatever modes
/// the host left; then the host has its modes back.
class FlushToZero {
 public:
  FlushToZero() noexcept : m_hostMode(_mm_getcsr()) {
    constexpr unsigned kAllTrapsMasked = 0x1F80;
    constexpr unsigned kSubnormalInputsAreZero = 0x0040;
    constexpr unsigned kSubnormalResultsAreZero = 0x8000;
    _mm_setcsr(kAllTrapsMasked | kSubnormalInputsAreZero | kSubnormalResultsAreZero);
    // The whole environment, not the control word alone: exceptions noted meanwhile must not trap
    // in a host that has unmasked them.
    constexpr std::uint16_t kFullPrecisionTrapsMasked = 0x037F;
    __asm__ volatile("fnstenv %0\n\tfldcw %1"
                     : "=m"(m_hostX87)
                     : "m"(kFullPrecisionTrapsMasked)
                     : "memory");
  }
  ~FlushToZero() {
    __asm__ volatile("fldenv %0" : : "m"(m_hostX87) : "memory");
    _mm_setcsr(m_hostMode);
  }
  FlushToZero(const FlushToZero&) = delete;
  FlushToZero& operator=(const FlushToZero&) = delete;

 private:
  struct X87Environment {
    std::uint32_t word[7]; ///< control, status, tags, last instruction and operand
  };

  unsigned m_hostMode;
  X87Environment m_hostX87;
};

} // namespace qlx::platform
