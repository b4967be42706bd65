// SPDX-License-Identifier: ISC
#pragma once

#include "resources/recordings/Sources.h"

#include <array>

namespace qlx::recordings {

// Parts that the horn and the drum have in common, and the levels of the recordings.

/// American mains. A motor's iron is pulled together twice in a period, whichever way the current
/// flows, and saturates a little, so that it hums at twice the mains frequency and multiples of
/// that.
inline constexpr double kMainsHz = 60.0;

/// The motors have two pairs of poles and run a tenth slower than their field.
inline constexpr double kSlip = 0.1;
inline constexpr double kShaftHz = kMainsHz / 2.0 * (1.0 - kSlip);

/// The rotor's cage meets each pole of the field at the slip frequency; its uneven bars make the
/// hum flutter at twice that.
inline constexpr double kSlipFlutterHz = 2.0 * kSlip * kMainsHz;

/// Panels of a cabinet of 18 mm plywood: the lowest modes of back, top, sides and the two baffles.
inline constexpr std::array<Mode, 8> kCabinetModes = {{{82.0, 9.0, -2.0},
                                                       {113.0, 12.0, 0.0},
                                                       {147.0, 10.0, -1.0},
                                                       {191.0, 14.0, -3.0},
                                                       {236.0, 12.0, -5.0},
                                                       {287.0, 10.0, -7.0},
                                                       {402.0, 8.0, -13.0},
                                                       {533.0, 8.0, -17.0}}};

/// Hum of a motor that turns one of the rotors: the iron, and the shaft's slight bend.
inline constexpr std::array<Partial, 8> kHum = {{{kShaftHz, -18.0},
                                                 {2.0 * kShaftHz, -16.0},
                                                 {2.0 * kMainsHz, 0.0},
                                                 {4.0 * kMainsHz, -9.0},
                                                 {6.0 * kMainsHz, -14.0},
                                                 {8.0 * kMainsHz, -22.0},
                                                 {10.0 * kMainsHz, -27.0},
                                                 {14.0 * kMainsHz, -34.0}}};

// Levels of the recordings, root mean square. Set so that the noise has the wanted level at the
// plug-in's output, see resources/recordings/README.md.
inline constexpr double kHornSlowDb = -51.8;
inline constexpr double kHornFastDb = -45.4;
inline constexpr double kDrumSlowDb = -54.3;
inline constexpr double kDrumFastDb = -52.7;
/// The one-shot's peak.
inline constexpr double kStartStopPeak = 0.9;

} // namespace qlx::recordings
