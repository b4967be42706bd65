// SPDX-License-Identifier: ISC
#include "engine/rotor/Recordings.h"
#include "resources/recordings/ExactMath.h"
#include "resources/recordings/MachineParts.h"
#include "resources/recordings/MachineRecordings.h"

namespace qlx::recordings {

namespace {

/// The drum hangs on a long spindle in plain bearings: rumble, little hiss.
constexpr std::array<Band, 3> kDrumBearing = {
    {{46.0, 0.9, 0.0}, {105.0, 0.8, -2.0}, {310.0, 0.8, -12.0}}};

/// At walking pace it rolls over its unevenness one by one, which is deeper still.
constexpr std::array<Band, 3> kSlowBearing = {
    {{33.0, 1.2, 0.0}, {57.0, 1.2, 0.0}, {105.0, 0.9, -12.0}}};

/// The motor's bent shaft shakes the cabinet at its turns and twice that.
constexpr std::array<Partial, 2> kShaft = {{{kShaftHz, -3.0}, {2.0 * kShaftHz, 0.0}}};

/// A broad belt on large wooden pulleys.
constexpr std::array<Band, 2> kDrumSlap = {{{160.0, 2.5, 0.0}, {390.0, 3.5, -5.0}}};
constexpr std::array<Band, 1> kDrumBeltFriction = {{{430.0, 0.8, 0.0}}};

constexpr std::array<Band, 2> kDrumAir = {{{210.0, 0.5, 0.0}, {1300.0, 0.5, -10.0}}};

/// The lower compartment is nearly closed: its lining and narrow louvres swallow the treble.
constexpr double kDrumLiningHz = 1900.0;

} // namespace

Signal recordDrumSlow() {
  // The scoop barely stirs the air; the machine is heard through the wood and out of the scoop.
  // Most of it lies below 90 Hz: while the rotor speeds up, this loop rises in pitch under a
  // low-pass that closes, and only what is deep holds the level until the fast loop takes over.
  constexpr Rotation kRotation = {engine::kDrumSlowLength, 5, 0.931};
  constexpr std::array<SweptBand, 3> kScoop = {{{{75.0, 0.9, 0.0}, 1, -9.0},
                                                {{190.0, 0.7, -3.0}, 1, -14.0},
                                                {{450.0, 0.8, -9.0}, 1, -18.0}}};
  constexpr double kFacing = 0.875; // where the player's unshifted read meets the front microphone
  constexpr Unevenness kUneven = {1.5, 0.02};
  constexpr int kBeltRounds = 3;

  const Signal scoop = whoosh(kRotation, kScoop, kFacing, kUneven, 301);
  const Signal hum = tones(kRotation, kHum, {kSlipFlutterHz, 0.12}, 321);
  const Signal shaft = tones(kRotation, kShaft, {kSlipFlutterHz, 0.2}, 326);
  const Signal bearing = noiseBands(kRotation, kSlowBearing, 322);
  const Signal slaps = beltSlaps(kRotation, kBeltRounds, kDrumSlap, 323);
  const Signal wood =
      throughWood(mixture({{bearing, 0.0}, {slaps, -13.0}, {hum, -13.0}, {scoop, -5.0}}),
                  kCabinetModes, Start::periodic);
  Signal recording = mixture({{scoop, -5.0},
                              {wood, -13.0},
                              {hum, -17.0},
                              {shaft, -1.5},
                              {bearing, 0.0},
                              {slaps, -23.0},
                              {noiseBands(kRotation, kDrumBeltFriction, 324), -21.0},
                              {noiseBands(kRotation, kDrumAir, 325), -22.0}});
  recording = filtered(recording, Response::lowPass, kDrumLiningHz, 0.6);
  setRms(recording, gainOfDb(kDrumSlowDb));
  return recording;
}

Signal recordDrumFast() {
  // The scoop pumps the air of the lower compartment through its openings, and the panels ring with
  // it.
  constexpr Rotation kRotation = {engine::kDrumFastLength, 88, 6.53};
  constexpr std::array<SweptBand, 4> kScoop = {{{{110.0, 0.6, -1.0}, 1, -8.0},
                                                {{240.0, 0.6, 0.0}, 1, -10.0},
                                                {{560.0, 0.7, -6.0}, 1, -12.0},
                                                {{1500.0, 0.7, -17.0}, 2, -15.0}}};
  constexpr double kFacing =
      0.75; // where the player's read, a quarter turn late, meets the front microphone
  constexpr Unevenness kUneven = {1.6, 0.02};
  constexpr int kBeltRounds = 53; // while the drum goes round 88 times

  const Signal scoop = whoosh(kRotation, kScoop, kFacing, kUneven, 401);
  const Signal hum = tones(kRotation, kHum, {kSlipFlutterHz, 0.18}, 421);
  const Signal bearing = noiseBands(kRotation, kDrumBearing, 422);
  const Signal slaps = beltSlaps(kRotation, kBeltRounds, kDrumSlap, 423);
  const Signal wood =
      throughWood(mixture({{scoop, 0.0}, {bearing, -6.0}, {slaps, -12.0}, {hum, -12.0}}),
                  kCabinetModes, Start::periodic);
  Signal recording = mixture({{scoop, 0.0},
                              {wood, -3.0},
                              {hum, -13.0},
                              {bearing, -9.0},
                              {slaps, -20.0},
                              {noiseBands(kRotation, kDrumBeltFriction, 424), -17.0},
                              {noiseBands(kRotation, kDrumAir, 425), -15.0}});
  recording = filtered(recording, Response::lowPass, kDrumLiningHz, 0.6);
  setRms(recording, gainOfDb(kDrumFastDb));
  return recording;
}

} // namespace qlx::recordings
