// SPDX-License-Identifier: ISC
#pragma once

#include <cfenv>
#ifdef __x86_64__
#include <xmmintrin.h>
#endif

namespace qlx::validate {

/// Rounding, traps and the treatment of subnormal numbers on the calling thread, at construction.
class FloatingPointMode {
 public:
  FloatingPointMode() : m_rounding(std::fegetround()) {
#ifdef __x86_64__
    constexpr unsigned kExceptionsSeen = 0x3F;
    m_control = _mm_getcsr() & ~kExceptionsSeen;
    __asm__("fnstcw %0" : "=m"(m_control87));
#endif
  }
  bool operator==(const FloatingPointMode&) const = default;

 private:
  int m_rounding;
  unsigned m_control = 0;
  unsigned short m_control87 = 0;
};

} // namespace qlx::validate
