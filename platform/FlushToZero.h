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
    __asm__ volatile("fnstcw %0" : "=m"(m_hostWord));
    // A host that lets an exception trap gets the whole environment back, since one noted meanwhile
    // must not trap in its code. It costs a hundred nanoseconds, which others are spared.
    if ((m_hostWord & kTrapMasks) != kTrapMasks) __asm__ volatile("fnstenv %0" : "=m"(m_hostX87));
    if (m_hostWord != kFullPrecision)
      __asm__ volatile("fldcw %0" : : "m"(kFullPrecision) : "memory");
  }
  ~FlushToZero() {
    if ((m_hostWord & kTrapMasks) != kTrapMasks)
      __asm__ volatile("fldenv %0" : : "m"(m_hostX87) : "memory");
    else if (m_hostWord != kFullPrecision)
      __asm__ volatile("fldcw %0" : : "m"(m_hostWord) : "memory");
    _mm_setcsr(m_hostMode);
  }
  FlushToZero(const FlushToZero&) = delete;
  FlushToZero& operator=(const FlushToZero&) = delete;

 private:
  /// The x87 control word: 64 bits of precision, to nearest, no traps.
  static constexpr std::uint16_t kFullPrecision = 0x037F;
  static constexpr std::uint16_t kTrapMasks = 0x003F; ///< of its six exceptions

  struct X87Environment {
    std::uint32_t word[7]; ///< control, status, tags, last instruction and operand
  };

  unsigned m_hostMode;
  std::uint16_t m_hostWord;
  X87Environment m_hostX87; ///< written only where the host lets exceptions trap
};

} // namespace qlx::platform
