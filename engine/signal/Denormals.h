// SPDX-License-Identifier: ISC
#pragma once

namespace qlx::engine {

/// Takes a recursive state out of the range of subnormal numbers, with which arithmetic is slow:
/// what is far below the constant becomes exactly zero.
inline double flushDenormals(double state) noexcept { return (state + 1e-12) - 1e-12; }

} // namespace qlx::engine
