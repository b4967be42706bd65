// SPDX-License-Identifier: ISC
#include "engine/rotor/Recordings.h"
#include "resources/recordings/ExactMath.h"
#include "resources/recordings/MachineParts.h"
#include "resources/recordings/MachineRecordings.h"

namespace qlx::recordings {

namespace {

/// A little ball bearing under a light horn: more hiss of the balls than rumble.
constexpr std::array<Band, 3> kHornBearing = {
    {{70.0, 0.8, 0.0}, {240.0, 0.9, -4.0}, {880.0, 0.7, -9.0}}};

/// A thin belt on small pulleys.
constexpr std::array<Band, 2> kHornSlap = {{{420.0, 3.0, 0.0}, {1150.0, 4.0, -4.0}}};
constexpr std::array<Band, 2> kHornBeltFriction = {{{760.0, 1.0, 0.0}, {1900.0, 1.2, -5.0}}};

/// Still air of a room and the draught of the rotor in the upper compartment.
constexpr std::array<Band, 2> kHornAir = {{{520.0, 0.5, 0.0}, {3000.0, 0.5, -6.0}}};

/// Cloth and louvres of the upper compartment dull the highest treble.
constexpr double kHornClothHz = 7500.0;

} // namespace

std::array<Signal, 2> recordHornSlow() {
  // At two thirds of a turn a second the mouth moves no faster than a walker, and the air makes
  // next to no noise of its own. What swells once a turn is the bearing's and the belt's noise that
  // comes up the horn's throat and out at the mouth.
  constexpr Rotation kRotation = {engine::kHornSlowLength, 1, 0.67};
  constexpr std::array<SweptBand, 3> kMouth = {{{{330.0, 0.7, -2.0}, 1, -7.0},
                                                {{820.0, 0.7, 0.0}, 1, -10.0},
                                                {{1900.0, 0.7, -4.0}, 2, -14.0}}};
  constexpr Unevenness kSingle = {0.0, 0.0};

  // Heard alike at both microphones: what goes through the wood. The belt goes round about once
  // while the horn does.
  const Signal hum = tones(kRotation, kHum, {kSlipFlutterHz, 0.12}, 101);
  const Signal bearing = noiseBands(kRotation, kHornBearing, 102);
  const Signal slaps = beltSlaps(kRotation, 1, kHornSlap, 103);
  const Signal wood = throughWood(mixture({{bearing, 0.0}, {slaps, -13.0}, {hum, -9.0}}),
                                  kCabinetModes, Start::periodic);

  // Each microphone has its own share of these, its own air, and meets the mouth at its own time.
  struct Place {
    double facing;
    double humDb;
    double bearingDb;
    double woodDb;
    std::uint64_t seed;
  };
  constexpr std::array<Place, 2> kPlaces = {
      {{0.28, -8.0, -5.0, -6.0, 110}, {0.61, -10.5, -6.5, -4.5, 130}}};
  std::array<Signal, 2> recordings;
  for (std::size_t i = 0; i < kPlaces.size(); ++i) {
    const Place& place = kPlaces[i];
    recordings[i] = mixture({{whoosh(kRotation, kMouth, place.facing, kSingle, place.seed), 0.0},
                             {hum, place.humDb},
                             {bearing, place.bearingDb},
                             {wood, place.woodDb},
                             {slaps, -21.0},
                             {noiseBands(kRotation, kHornBeltFriction, place.seed + 10), -10.0},
                             {noiseBands(kRotation, kHornAir, place.seed + 11), -12.0}});
    recordings[i] = filtered(recordings[i], Response::lowPass, kHornClothHz, 0.6);
    setRms(recordings[i], gainOfDb(kHornSlowDb));
  }
  return recordings;
}

Signal recordHornFast() {
  // The mouth goes round at 8 m/s. Its swell is broad, and brighter the nearer it comes; the rim
  // sheds small eddies that add a breathy edge. The dummy horn on the other side answers faintly
  // half a turn later.
  constexpr Rotation kRotation = {engine::kHornFastLength, 34, 6.77};
  constexpr std::array<SweptBand, 5> kMouth = {{{{230.0, 0.6, -7.0}, 1, -6.0},
                                                {{520.0, 0.6, -1.0}, 1, -9.0},
                                                {{1150.0, 0.6, 0.0}, 2, -13.0},
                                                {{2500.0, 0.7, -4.0}, 3, -17.0},
                                                {{5200.0, 0.7, -11.0}, 4, -22.0}}};
  constexpr std::array<SweptBand, 2> kDummy = {
      {{{300.0, 0.7, 0.0}, 1, -8.0}, {{760.0, 0.8, -3.0}, 2, -12.0}}};
  constexpr Unevenness kUneven = {1.8, 0.02};
  constexpr int kBeltRounds = 21; // while the horn goes round 34 times

  const Signal mouth = whoosh(kRotation, kMouth, 0.0, kUneven, 201);
  const Signal hum = tones(kRotation, kHum, {kSlipFlutterHz, 0.18}, 221);
  const Signal bearing = noiseBands(kRotation, kHornBearing, 222);
  const Signal slaps = beltSlaps(kRotation, kBeltRounds, kHornSlap, 223);
  const Signal wood =
      throughWood(mixture({{bearing, 0.0}, {slaps, -9.0}, {hum, -6.0}, {mouth, -4.0}}),
                  kCabinetModes, Start::periodic);
  Signal recording = mixture({{mouth, 0.0},
                              {whoosh(kRotation, kDummy, 0.5, kUneven, 211), -15.0},
                              {hum, -14.0},
                              {bearing, -9.0},
                              {wood, -10.0},
                              {slaps, -20.0},
                              {noiseBands(kRotation, kHornBeltFriction, 224), -14.0},
                              {noiseBands(kRotation, kHornAir, 225), -13.0}});
  recording = filtered(recording, Response::lowPass, kHornClothHz, 0.6);
  setRms(recording, gainOfDb(kHornFastDb));
  return recording;
}

} // namespace qlx::recordings
