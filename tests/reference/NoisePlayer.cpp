// SPDX-License-Identifier: ISC
#include "tests/reference/NoisePlayer.h"

#include "tests/reference/Primitives.h"

#include <algorithm>
#include <cmath>

namespace qlx::reference {
namespace {

constexpr std::size_t kHornSlowLength = 63884, kHornFastLength = 219418;
constexpr std::size_t kDrumSlowLength = 270144, kDrumFastLength = 627298, kShotLength = 3955;
constexpr double kHornTurns = 34, kDrumFastTurns = 88;

double loop(std::span<const float> data, double position, std::size_t length) {
  return data.empty() ? 0.0 : double(cubicLoop<float>(position, data, length));
}

void wrap(double& phase, double step, double end = 1.0) {
  phase += step;
  if (phase >= end) phase -= end;
}

} // namespace

NoisePlayer::NoisePlayer(Variant v, int index, const Recordings& r)
    : variant(v), slow(v == kDrum ? r.drumSlow : (index == 0 ? r.hornSlow1 : r.hornSlow2)),
      fast(v == kDrum ? r.drumFast : r.hornFast), shot(r.startStop),
      offset(v == kDrum ? -0.0014204545454545455
                        : (index == 0 ? -0.003676470588235294 : 0.23161764705882354)),
      bandPass(44100, {kBandPass, v == kHorn ? 1100.0 : 1000.0, 1, 0, true}),
      slowLowPass(44100, {kLowPass, 18000, 0.7, 0, true}),
      fastShelf(44100, {kHighShelf, 2000, 0.707, 0, true}) {
  setSampleRate(44100);
}

void NoisePlayer::setSampleRate(double rate) {
  engineRate = std::max(rate, 11025.0);
  sampleStep = 44100.0 / engineRate;
  slowThreshold = 0.78 / engineRate;
  fastThreshold = 7.5 / engineRate;
  slowPhase = fastPhase = 0;
  event = kNone;
  oneShotPos = 0;
  setMicDistance(micDistance);
  for (Biquad* f : {&bandPass, &slowLowPass, &fastShelf}) {
    f->setInstantUpdate(true);
    f->setSampleRate(engineRate);
    if (f == &slowLowPass) f->setFrequency(slowLowPassHz); // within the new rate's limits
    if (f == &fastShelf) f->setFrequency(fastShelfHz);
    f->setInstantUpdate(false);
  }
  if (variant == kDrum) distanceGain = 1.0;
}

void NoisePlayer::setMicDistance(double metres) {
  micDistance = metres;
  distanceGain = std::pow(0.3 / metres, variant == kHorn ? 0.25 : 0.1);
  bandPass.setQ(variant == kHorn ? metres * 0.25 + 0.05 : metres * 0.12 + 0.005);
}

void NoisePlayer::setInputs(double newLevel, double newMicAngle, double newSpeed) {
  level = newLevel;
  micAngle = newMicAngle;
  speed = newSpeed;
}

void NoisePlayer::trigger(Event e) {
  event = e;
  oneShotPos = 0;
  oneShotGain = decelVolume * 0.25118864315;
}

void NoisePlayer::reset() {
  slowPhase = fastPhase = 0;
  event = kNone;
  oneShotPos = 0;
  for (Biquad* f : {&bandPass, &slowLowPass, &fastShelf}) f->clearStates();
}

double NoisePlayer::oneShot() {
  if (event == kNone) return 0.0;
  const double y = shot.empty() ? 0.0 : double(cubicTable<float>(oneShotPos, shot, kShotLength));
  if (oneShotPos > double(kShotLength)) event = kNone;
  oneShotPos += sampleStep;
  return y * oneShotGain;
}

double NoisePlayer::hornLoops() {
  double slowGain = 0, fastGain = 0;
  if (speed <= slowThreshold) {
    slowGain = (speed / slowThreshold) * (speed / slowThreshold);
  } else if (speed >= fastThreshold) {
    fastGain = 1;
  } else {
    const double x = (speed - slowThreshold) / (fastThreshold - slowThreshold);
    if (x < 0.4) slowGain = (1 - 2.5 * x) * (1 - 2.5 * x);
    fastGain = x * x * x * x;
  }
  const double position = (fastPhase + micAngle / kHornTurns + offset) * double(kHornFastLength);
  const double sum = loop(slow, slowPhase, kHornSlowLength) * slowVolume * slowGain +
                     loop(fast, position, kHornFastLength) * fastVolume * fastGain;
  wrap(slowPhase, sampleStep, double(kHornSlowLength));
  wrap(fastPhase, speed / kHornTurns);
  return sum;
}

double NoisePlayer::drumLoops() {
  double slowGain = 0, fastGain = 0;
  if (speed <= slowThreshold) {
    slowGain = (speed / slowThreshold) * (speed / slowThreshold);
  } else if (speed >= fastThreshold) {
    fastGain = 1;
  } else {
    const double x = (speed - slowThreshold) / (fastThreshold - slowThreshold);
    slowGain = std::pow(1 - x, 0.25);
    fastGain = x * x;
    slowLowPassHz = 18000 - 18000 * std::pow(x, 0.06);
    fastShelfHz = 3500 + 9500 * x * x;
    slowLowPass.setFrequency(slowLowPassHz);
    fastShelf.setFrequency(fastShelfHz);
    fastShelf.setGainDb(12 * x * x - 12);
  }
  const double position =
      (micAngle / kDrumFastTurns + fastPhase + offset) * double(kDrumFastLength);
  const double slowPart =
      loop(slow, slowPhase * double(kDrumSlowLength), kDrumSlowLength) * slowVolume * slowGain;
  const double fastPart = loop(fast, position, kDrumFastLength) * fastVolume * fastGain;
  wrap(fastPhase, speed / kDrumFastTurns);
  wrap(slowPhase, 0.2 * speed);
  return slowLowPass.tickGlide(slowPart) + fastShelf.tickGlide(fastPart);
}

double NoisePlayer::tick() {
  const double loops = variant == kHorn ? hornLoops() : drumLoops();
  return bandPass.tickGlide(loops + oneShot()) * distanceGain * level;
}

} // namespace qlx::reference
