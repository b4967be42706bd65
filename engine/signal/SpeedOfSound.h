// SPDX-License-Identifier: ISC
#pragma once

namespace qlx::engine {

/// Metres a second, in air of about 15 degrees Celsius, and its reciprocal (delay in seconds of one
/// metre).
inline constexpr double kSpeedOfSound = 340.29;
inline constexpr double kInverseSpeedOfSound = 0.0029386699579770194;

} // namespace qlx::engine
