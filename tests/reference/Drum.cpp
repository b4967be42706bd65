// SPDX-License-Identifier: ISC
#include "tests/reference/Drum.h"

#include <algorithm>
#include <cmath>

namespace qlx::reference {

Drum::Drum(bool fullForm, const Recordings& recordings)
    : full(fullForm),
      noise(fullForm ? std::make_unique<NoisePlayer>(NoisePlayer::kDrum, 0, recordings) : nullptr),
      motion(1, noise.get()) {
  for (const Section& s : kDrumPreFilter) {
    preFilters.emplace_back(engineRate, s);
    preFilters.back().setSaturationOffset(0.03125);
  }
  for (RayState& r : rays)
    r.lowPass = Biquad(engineRate, {kLowPass, kDrumHz[0], kDrumQ[0], 0, true});
  setSampleRate(44100, 1);
  resetFilters();
}

void Drum::setSampleRate(double rate, int factor) {
  engineRate = std::max(rate, 11025.0);
  samplesPerMetre = engineRate * kInverseSpeedOfSound;
  updateMask = unsigned(16 / factor - 1);
  counter = 0;
  motion.setSampleRate(engineRate);
  setReflectionLpf(reflectionLpf);
  poleSmoother = std::exp(-1.0 / (engineRate * 0.005));
  if (noise) noise->setSampleRate(engineRate);
}

void Drum::clear() {
  audioRing.clear();
  angleRing.clear();
  for (RayState& r : rays) {
    r.splitter = r.reducedPole = r.reducedTarget = r.reducedState = r.output = 0;
    r.lowPass.clearStates();
    r.lowPass.setInstantUpdate(true);
  }
  for (Biquad& f : preFilters) {
    f.clearStates();
    f.setInstantUpdate(true);
  }
  staticState = staticLow = lowStaticPart = 0;
  motion.phase = 0;
  counter = 0;
  if (noise) noise->reset();
}

void Drum::resetFilters() {
  for (Biquad& f : preFilters) {
    f.setSampleRate(engineRate);
    f.setInstantUpdate(false);
  }
  for (RayState& r : rays) {
    r.lowPass.setSampleRate(engineRate);
    r.lowPass.setInstantUpdate(false);
  }
  setSplitter(splitterHz);
}

void Drum::setFlip(double sign) {
  motion.phaseOffset = sign >= 0.0 ? 0.0 : 0.5;
  const double before = flipSign;
  flipSign = sign;
  if (before == sign) return;
  if ((before > 0.0) != (sign > 0.0)) cabinet.exchangeWalls();
  clear();
  resetFilters();
}

void Drum::setMicDistance(double metres) {
  cabinet.micDistance = metres;
  if (noise) noise->setMicDistance(metres);
}

void Drum::setReflectionLpf(double octaves) {
  reflectionLpf = octaves;
  p1 = std::exp(-kTwoPi * 20000.0 / engineRate);
  p2 = std::exp(-kTwoPi * 20000.0 * std::pow(2.0, -octaves) / engineRate);
}

void Drum::setSplitter(double hz) {
  splitterHz = hz;
  splitterPole = std::exp(-kTwoPi * hz / engineRate);
}

void Drum::setFilterSaturation(double drive) {
  for (Biquad& f : preFilters) f.setSaturation(drive);
}

void Drum::rebuildGeometry() {
  const double s = cabinet.side();
  const double a = s * cabinet.sideWallA, b = s * cabinet.sideWallB, h = s * cabinet.backWall;
  region = cabinet.region();
  const std::array<Ray, 7> images = {{{},
                                      {0, 0, 1, 1},
                                      {2 * b, 0, -1, 1},
                                      {-2 * a, 0, -1, 1},
                                      {0, 2 * h, 1, -1},
                                      {2 * b, 2 * h, -1, -1},
                                      {-2 * a, 2 * h, -1, -1}}};
  for (std::size_t r = 1; r <= 6; ++r) {
    rays[r].ray = images[r];
    cabinet.place(rays[r].ray);
  }
  cabinet.buildAttenuation(rays[1].ray);
}

double Drum::fullRay(RayState& r) {
  const double distance = r.ray.distance;
  const Mouth m = Cabinet::mouth(angleRing.wholeRead(distance * samplesPerMetre), r.ray);
  const double sine = std::max(m.sine, -0.7);
  const double a = audioRing.cubicRead((sine * cabinet.fmRadius + distance) * samplesPerMetre);
  const double amplitude = cabinet.amplitude(cabinet.amRadius * sine + distance);
  onePole(r.splitter, a, splitterPole);
  if (updating())
    r.lowPass.setFrequencyAndQ(onCircle(kDrumHz, 18 * m.turn), onCircle(kDrumQ, 18 * m.turn));
  return r.lowPass.tickGlide(a - r.splitter) * amplitude;
}

double Drum::reducedRay(RayState& r) {
  const double distance = r.ray.distance;
  const Mouth m = Cabinet::mouth(angleRing.wholeRead(distance * samplesPerMetre), r.ray);
  const double fm = cabinet.fmRadius;
  const double a = audioRing.cubicRead((m.sine * fm + distance - cabinet.micDistance + 2 * fm) *
                                       samplesPerMetre);
  if (updating())
    r.reducedTarget = std::pow(0.005, onCircle(kReducedDrumHz, 18 * m.turn) / engineRate);
  onePole(r.reducedPole, r.reducedTarget, poleSmoother);
  onePole(r.reducedState, a, r.reducedPole);
  return r.reducedState * cabinet.amplitude(cabinet.amRadius * m.sine + distance);
}

void Drum::takeStep(double x) {
  angleRing.write(motion.advance());
  for (Biquad& f : preFilters) x = f.tickFixedSaturating(x);
  audioRing.write(x);
  if (updating()) staticPole = std::pow(0.005, staticCutoffHz / engineRate);
}

void Drum::finishStep() {
  audioRing.advance();
  angleRing.advance();
  ++counter;
}

double Drum::process(double x) {
  takeStep(x);
  const double c = reflectionCoeff;
  double sum = fullRay(rays[1]) * d[1], gains = d[1];
  auto hear = [&](std::size_t r, double gain, double rayGain, double pole) {
    onePole(rays[r].output, fullRay(rays[r]) * gain * rayGain, pole);
    sum += rays[r].output;
    gains += rayGain;
  };
  if (region != 1) hear(region == 0 ? 2 : 3, c, d[2], p1);
  hear(4, c, d[2], p1);
  hear(5, c * c, d[3], p2);
  hear(6, c * c, d[4], p2);

  const double direct = rays[1].ray.distance;
  staticAmplitude = cabinet.amplitude(direct);
  onePole(staticState, audioRing.cubicRead(direct * samplesPerMetre), staticPole);
  const double v = staticState * staticAmplitude;
  if (noise) noise->setInputs(staticAmplitude * mechGain, cabinet.micAngle, motion.currentSpeed);
  onePole(staticLow, v, splitterPole);
  lowStaticPart = staticLow * lpStaticGain * gains;
  finishStep();
  return (v - staticLow) * staticGain + sum;
}

double Drum::processReduced(double x) {
  takeStep(x);
  double sum = reducedRay(rays[1]) * d[1];
  auto hear = [&](std::size_t r) {
    onePole(rays[r].output, reducedRay(rays[r]) * reflectionCoeff * d[2], p1);
    sum += rays[r].output;
  };
  if (region != 1) hear(region == 0 ? 2 : 3);
  hear(4);
  const double direct = rays[1].ray.distance;
  onePole(staticState, audioRing.cubicRead((direct - cabinet.micDistance) * samplesPerMetre),
          staticPole);
  sum += staticState * cabinet.amplitude(direct) * staticGain;
  finishStep();
  return sum;
}

} // namespace qlx::reference
