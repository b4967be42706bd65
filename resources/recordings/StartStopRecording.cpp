// SPDX-License-Identifier: ISC
#include "engine/rotor/Recordings.h"
#include "resources/recordings/ExactMath.h"
#include "resources/recordings/MachineParts.h"
#include "resources/recordings/MachineRecordings.h"
#include "resources/recordings/Random.h"

#include <algorithm>
#include <cmath>

namespace qlx::recordings {

namespace {

/// The armature, the contact springs and the relay's tin case.
constexpr std::array<Mode, 4> kRelay = {
    {{940.0, 9.0, -5.0}, {2150.0, 14.0, 0.0}, {3700.0, 16.0, -3.0}, {5900.0, 14.0, -9.0}}};

/// The board that the relay is screwed to.
constexpr std::array<Mode, 4> kBoard = {
    {{345.0, 5.0, -1.0}, {520.0, 6.0, 0.0}, {765.0, 6.0, -2.0}, {1240.0, 7.0, -4.0}}};

/// The frame that the motor's torque twists in its rubber mounts.
constexpr std::array<Mode, 3> kMount = {{{58.0, 2.5, 0.0}, {96.0, 3.5, -2.0}, {171.0, 4.0, -8.0}}};

std::size_t sampleAt(double milliseconds) {
  return static_cast<std::size_t>(milliseconds * 0.001 * kSampleRate);
}

/// Contacts that close, bounce and come to rest: each touch is a burst of noise of a fraction of a
/// millisecond.
Signal contacts() {
  struct Touch {
    double milliseconds;
    double level;
  };
  constexpr std::array<Touch, 5> kTouches = {
      {{1.5, 1.0}, {4.1, 0.55}, {5.9, 0.34}, {7.0, 0.2}, {7.7, 0.1}}};
  constexpr double kTouchSamples = 9.0; // until it has fallen to 1/e
  Random random(501);
  Signal signal(engine::kStartStopLength);
  for (const Touch& touch : kTouches) {
    const std::size_t start = sampleAt(touch.milliseconds);
    for (std::size_t i = 0; i < sampleAt(1.5); ++i) {
      signal[start + i] +=
          touch.level * exponential(-static_cast<double>(i) / kTouchSamples) * random.bell();
    }
  }
  setRms(signal, 1.0);
  return signal;
}

/// The motor's torque comes within two periods of the mains, in pulls at twice their frequency.
Signal torque() {
  constexpr double kRiseSeconds = 0.012;
  Signal signal(engine::kStartStopLength);
  const std::size_t start = sampleAt(3.0);
  for (std::size_t i = start; i < signal.size(); ++i) {
    const double seconds = static_cast<double>(i - start) / kSampleRate;
    const double surge = seconds / kRiseSeconds * exponential(1.0 - seconds / kRiseSeconds);
    signal[i] = surge * (1.0 - 0.3 * cosineOfTurns(2.0 * kMainsHz * seconds));
  }
  return signal;
}

/// Half of a smooth swell: 0 at place 0, 1 at place 1, level at both.
double eased(std::size_t place, std::size_t length) {
  const double quarter =
      sineOfTurns(0.25 * static_cast<double>(place) / static_cast<double>(length));
  return quarter * quarter;
}

/// From silence and back to it: a short rise, a long fall, and what is left of the mean taken out
/// with a bump of the same shape, so that neither end steps.
void closeEnds(Signal& signal) {
  const std::size_t rise = sampleAt(1.0);
  const std::size_t fall = sampleAt(35.0);
  Signal shape(signal.size(), 1.0);
  for (std::size_t i = 0; i < rise; ++i) shape[i] = eased(i, rise);
  for (std::size_t i = 0; i < fall; ++i) shape[signal.size() - 1 - i] = eased(i, fall);
  modulate(signal, shape);
  mix(signal, shape, -meanOf(signal) / meanOf(shape));
}

} // namespace

Signal recordStartStop() {
  const Signal touches = contacts();
  const Signal click = throughWood(touches, kRelay, Start::atRest);
  const Signal thump = throughWood(torque(), kMount, Start::atRest);
  const Signal panels =
      throughWood(mixture({{touches, 0.0}, {thump, -18.0}}), kCabinetModes, Start::atRest);
  Signal recording = mixture({{click, 0.0},
                              {touches, -9.0},
                              {throughWood(touches, kBoard, Start::atRest), 0.0},
                              {thump, 3.0},
                              {panels, 2.0}});
  closeEnds(recording);
  double peak = 0.0;
  for (const double x : recording) peak = std::max(peak, std::abs(x));
  for (double& x : recording) x *= kStartStopPeak / peak;
  return recording;
}

} // namespace qlx::recordings
