// SPDX-License-Identifier: ISC
#pragma once

#include <array>

namespace qlx::engine {

// How a rotor's mouth colours a ray over the angle between the two, one turn from end to end; read
// along straight lines.

/// Horn, resonance of the mouth: both ends face along the ray.
inline constexpr std::array<double, 37> kHornPeakHz = {
    2200, 2170, 2050, 2000, 2000, 1930, 1850, 1780, 1730, 1670, 1620, 1480, 1360,
    1320, 1300, 1500, 1630, 1680, 1700, 1680, 1630, 1500, 1300, 1320, 1360, 1480,
    1620, 1670, 1730, 1780, 1850, 1930, 2000, 2000, 2050, 2170, 2200,
};

inline constexpr std::array<double, 37> kHornPeakQ = {
    1.4,  1.32, 1.15, 1.2,  1.3, 1.6,  2,   3.6,  5.9,  3.2,  1.37, 1.22, 1,
    0.9,  0.8,  1,    1.28, 1.9, 2.35, 1.9, 1.28, 1,    0.8,  0.9,  1,    1.22,
    1.37, 3.2,  5.9,  3.6,  2,   1.6,  1.3, 1.2,  1.15, 1.32, 1.4,
};

inline constexpr std::array<double, 37> kHornPeakDb = {
    7,   5,     -3,  -8,  -12, -15, -18, -22, -28, -24,   -18, -16,   -14.5,
    -14, -14.2, -15, -16, -17, -19, -17, -16, -15, -14.2, -14, -14.5, -16,
    -18, -24,   -28, -22, -18, -15, -12, -8,  -3,  5,     7,
};

/// Horn, treble beam: gain of a high shelf at kHornShelfHz.
inline constexpr std::array<double, 19> kHornShelfDb = {
    6, 2, -7, -9, -12, -10, -9, -8, -6, -2, -6, -8, -9, -10, -12, -9, -7, 2, 6,
};
inline constexpr double kHornShelfHz = 6000.0;
inline constexpr double kHornShelfQ = 0.7;

/// Reduced horn: cut-off of the one filter of a ray.
inline constexpr std::array<double, 19> kReducedHornHz = {
    1100, 750, 700, 650, 600, 550, 600, 760, 850,  1000,
    760,  600, 600, 550, 600, 650, 700, 750, 1100,
};

/// Drum: low-pass of a ray.
inline constexpr std::array<double, 19> kDrumLowPassHz = {
    1600, 1300, 1200, 1050, 1000, 950,  900,  900,  900,  900,
    900,  900,  900,  950,  1000, 1050, 1200, 1300, 1600,
};

inline constexpr std::array<double, 19> kDrumLowPassQ = {
    1.2,  0.85, 0.7,  0.65, 0.55, 0.42, 0.37, 0.34, 0.32, 0.31,
    0.32, 0.34, 0.37, 0.42, 0.55, 0.65, 0.7,  0.85, 1.2,
};

/// Reduced drum: cut-off of the one filter of a ray.
inline constexpr std::array<double, 19> kReducedDrumHz = {
    2000, 1760, 1600, 1600, 1600, 1700, 1700, 1700, 1850, 1800,
    1850, 1700, 1700, 1600, 1600, 1600, 1760, 2000, 2000,
};

} // namespace qlx::engine
