// SPDX-License-Identifier: ISC
#pragma once

#include <cstdint>

namespace qlx::plugin {

enum class PortUnit : unsigned char { kNone, kHertz, kSeconds, kDecibels, kMetres, kPercent };

enum class PortKind : unsigned char {
  kLinear,
  kLogarithmic, ///< equal ways of the control are equal ratios; minimum above 0
  kToggled,     ///< 0 or 1
  kChoice       ///< whole numbers from minimum to maximum
};

/// What a silent level shows as "-oo" reads at a port, dB.
inline constexpr float kSilenceDb = -80.0F;

/// A host parameter in the unit of its display, for hosts whose controls carry units. Any thread.
struct PortScale {
  float (*toPort)(float v) noexcept; ///< v in 0..1; never turns back
  PortKind kind;
  PortUnit unit = PortUnit::kNone;

  float minimum() const noexcept;
  float maximum() const noexcept;

  /// The normalised value that toPort gives `port` for, or the nearest. Of several the plainest:
  /// a 1/70 step, else the shortest decimal. Limited to 0..1; `port` is a number.
  float toValue(float port) const noexcept;

  /// The same, but `held` where it already reads `port`: what a port can't tell apart stays.
  float toValue(float port, float held) const noexcept {
    return toPort(held) == port ? held : toValue(port);
  }
};

/// The scale of a host parameter; null for reserved ones and outside 0..35. Bypass reads 1 while
/// the effect is heard.
const PortScale* portScale(std::int32_t index) noexcept;

} // namespace qlx::plugin
