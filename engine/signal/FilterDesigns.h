// SPDX-License-Identifier: ISC
#pragma once

#include "engine/signal/Biquad.h"

#include <array>

namespace qlx::engine {

/// A filter's fixed settings.
struct FilterDesign {
  Response response;
  double hz, q, db;
  bool enabled = true;
};

/// Resonances and dips of the wooden cabinet and the horn's throat, all peaking.
inline constexpr auto kHornBody = std::to_array<FilterDesign>({
    {Response::Peaking, 6690, 1.3, -5}, {Response::Peaking, 1150, 12, -7},
    {Response::Peaking, 775, 20, -11},  {Response::Peaking, 5950, 30, -25},
    {Response::Peaking, 3540, 40, -15}, {Response::Peaking, 390, 40, -15},
    {Response::Peaking, 1180, 40, -12}, {Response::Peaking, 850, 40, -12},
    {Response::Peaking, 1740, 40, -8},  {Response::Peaking, 2800, 30, -15},
    {Response::Peaking, 2020, 40, -19}, {Response::Peaking, 2690, 40, -13},
    {Response::Peaking, 3880, 40, -20}, {Response::Peaking, 794, 40, -8},
    {Response::Peaking, 1590, 40, 8},   {Response::Peaking, 1020, 1.41, -6},
    {Response::Peaking, 4800, 40, -16}, {Response::Peaking, 2940, 40, -24},
    {Response::Peaking, 3320, 40, -13}, {Response::Peaking, 3430, 1.41, -7.6},
    {Response::Peaking, 4110, 40, -15}, {Response::Peaking, 4000, 40, -12},
    {Response::Peaking, 1030, 8, -6},   {Response::Peaking, 2670, 5, 7},
    {Response::Peaking, 3150, 30, -14}, {Response::Peaking, 2580, 40, -17},
    {Response::Peaking, 5140, 10, -12}, {Response::Peaking, 2330, 30, -10},
});

inline constexpr auto kReducedHornBody = std::to_array<FilterDesign>({
    {Response::Peaking, 780, 5, -12},
    {Response::Peaking, 384, 10, -12},
    {Response::Peaking, 3860, 10, -12},
    {Response::Peaking, 4500, 10, -20},
    {Response::Peaking, 5770, 5, -15},
});

} // namespace qlx::engine
