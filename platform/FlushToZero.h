// SPDX-License-Identifier: ISC
#pragma once

#include <cstdint>
#include <xmmintrin.h>

namespace qlx::platform {

/// While it lives, what the calling thread's x87 unit computes keeps its full 64 bits, whatever the
/// host left (threads of Windows begin with 53); then the host has its word back. The mathematics
/// of some C libraries and long double depend on it.
class FullPrecision {
 public:
  FullPrecision() noexcept {
    __asm__ volatile("fnstcw %0" : "=m"(m_hostWord));
    // A host that lets an exception trap gets the whole environment back, since one noted meanwhile
    // must not trap in its code. It costs a hundred nanoseconds, which others are spared.
    if ((m_hostWord & kTrapMasks) != kTrapMasks) __asm__ volatile("fnstenv %0" : "=m"(m_hostX87));
    if (m_hostWord != kFullPrecision)
      __asm__ volatile("fldcw %0" : : "m"(kFullPrecision) : "memory");
  }
  ~FullPrecision() {
    if ((m_hostWord & kTrapMasks) != kTrapMasks)
      __asm__ volatile("fldenv %0" : : "m"(m_hostX87) : "memory");
    else if (m_hostWord != kFullPrecision)
      __asm__ volatile("fldcw %0" : : "m"(m_hostWord) : "memory");
  }
  FullPrecision(const FullPrecision&) = delete;
  FullPrecision& operator=(const FullPrecision&) = delete;

 private:
  /// The x87 control word: 64 bits of precision, to nearest, no traps.
  static constexpr std::uint16_t kFullPrecision = 0x037F;
  static constexpr std::uint16_t kTrapMasks = 0x003F; ///< of its six exceptions

  struct X87Environment {
    std::uint32_t word[7]; ///< control, status, tags, last instruction and operand
  };

  std::uint16_t m_hostWord;
  X87Environment m_hostX87; ///< written only where the host lets exceptions trap
};

/// While it lives, the calling thread's arithmetic treats subnormal numbers as zero, rounds to
/// nearest and traps nothing, and has full precision, whatever modes the host left; then the host
/// has its modes back.
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
  FullPrecision m_x87;
};

} // namespace qlx::platform
