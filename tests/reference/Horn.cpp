// SPDX-License-Identifier: ISC
#include "tests/reference/Horn.h"

#include <algorithm>
#include <cmath>

namespace qlx::reference {

Horn::Horn(bool fullForm, int index, const Recordings& recordings)
    : full(fullForm),
      noise(fullForm ? std::make_unique<NoisePlayer>(NoisePlayer::kHorn, index, recordings)
                     : nullptr),
      motion(-1, noise.get()), outputRings(13, Ring(512)) {
  for (RayState& r : rays) {
    r.peak = Biquad(engineRate, {kPeaking, 2200, 1.4, 7, true});
    r.shelf = Biquad(engineRate, {kHighShelf, 6000, 0.7, 6, true});
  }
  auto add = [this](const auto& sections) {
    for (const Section& s : sections) {
      body.emplace_back(engineRate, s);
      body.back().setSaturationOffset(0.03125);
    }
  };
  if (full)
    add(kHornBody);
  else
    add(kReducedHornBody);
  setSampleRate(44100, 1);
}

void Horn::setSampleRate(double rate, int factor) {
  engineRate = std::max(rate, 11025.0);
  samplesPerMetre = engineRate / kSpeedOfSound;
  updateMask = unsigned(16 / factor - 1);
  counter = 0;
  motion.setSampleRate(engineRate);
  setReflectionLpf(reflectionLpf);
  setStaticCutoff(staticCutoffHz);
  poleSmoother = std::exp(-1.0 / (engineRate * 0.005));
  zDelay1 = 0.07 * samplesPerMetre;
  zDelay2 = 0.135 * samplesPerMetre;
  if (noise) noise->setSampleRate(engineRate);
}

void Horn::clear() {
  audioRing.clear();
  angleRing.clear();
  for (Ring& r : outputRings) r.clear();
  for (RayState& r : rays) {
    r.reducedPole = r.reducedTarget = r.reducedState = r.bounceState = 0;
    for (Biquad* f : {&r.peak, &r.shelf}) {
      f->clearStates();
      f->setInstantUpdate(true);
    }
  }
  for (Biquad& f : body) {
    f.clearStates();
    f.setInstantUpdate(true);
  }
  staticState = 0;
  motion.phase = 0;
  counter = 0;
  if (noise) noise->reset();
}

void Horn::resetFilters() {
  for (Biquad& f : body) {
    f.setSampleRate(engineRate);
    f.setInstantUpdate(false);
  }
  for (RayState& r : rays) {
    r.peak.setSampleRate(engineRate);
    r.peak.setFrequencyQGain(2200, 1.4, 7);
    r.peak.setInstantUpdate(false);
    r.shelf.setSampleRate(engineRate);
    r.shelf.setFrequencyQGain(6000, 0.7, 6);
    r.shelf.setEnabled(true);
    r.shelf.setInstantUpdate(false);
    r.reducedState = r.bounceState = 0;
  }
  staticState = 0;
  if (noise) {
    noise->setSampleRate(engineRate);
    noise->setMicDistance(cabinet.micDistance);
  }
}

void Horn::setFlip(double sign) {
  motion.phaseOffset = sign >= 0.0 ? 0.0 : 0.5;
  const double before = flipSign;
  flipSign = sign;
  if (before == sign) return;
  if ((before >= 0.0) != (sign >= 0.0)) cabinet.exchangeWalls();
  clear();
  resetFilters();
}

void Horn::setMicDistance(double metres) {
  cabinet.micDistance = metres;
  if (noise) noise->setMicDistance(metres);
}

void Horn::setReflectionLpf(double octaves) {
  reflectionLpf = octaves;
  for (std::size_t k = 0; k < bouncePole.size(); ++k)
    bouncePole[k] =
        std::exp(-kTwoPi * 20000.0 * std::pow(2.0, -double(k) * reflectionLpf) / engineRate);
}

void Horn::setStaticCutoff(double hz) {
  staticCutoffHz = hz;
  staticPole = std::pow(0.005, hz / engineRate);
}

void Horn::rebuildGeometry() {
  const double s = cabinet.side();
  const double a = s * cabinet.sideWallA, b = s * cabinet.sideWallB, h = s * cabinet.backWall;
  region = cabinet.region();
  auto put = [this](std::size_t r, double x, double y, double signX, double signY) {
    Ray& ray = rays[r].ray;
    ray.x = x;
    ray.y = y;
    ray.signX = signX;
    ray.signY = signY;
  };
  put(1, 0, 0, 1, 1);
  put(2, 0, 2 * h, 1, -1);
  put(3, 2 * b, 2 * h, -1, -1);
  put(4, -2 * a, 2 * h, -1, -1);
  put(5, 2 * a + 2 * b, 2 * h, 1, -1);
  put(6, -2 * a - 2 * b, 2 * h, 1, -1);
  put(7, 2 * b, 0, -1, 1);
  put(8, -2 * a, 0, -1, 1);
  if (region == 0) {
    put(9, 6 * b, 0, -1, -1);
    put(10, 4 * b + 2 * a, 6 * h, -1, -1);
    put(11, 4 * a + 6 * b, 0, -1, -1);
    put(12, 4 * a + 6 * b, 10 * h, -1, -1);
  } else if (region == 1) {
    put(9, 0, 6 * h, 1, -1);
    put(10, 4 * b + 2 * a, 6 * h, -1, -1);
    put(11, -4 * a - 2 * b, 6 * h, 1, -1);
    put(12, 0, 10 * h, 1, -1);
  } else {
    put(9, -6 * a, 0, -1, 1);
    put(10, -4 * a - 2 * b, 6 * h, -1, -1);
    put(11, -4 * a - 2 * b, 0, -1, 1);
    put(12, -6 * a - 4 * b, 10 * h, -1, -1);
  }
  for (std::size_t r = 1; r <= 12; ++r) cabinet.place(rays[r].ray);
  reflectionScale = region == 1 && openBackMode != 0 && flipSign * s < 0.0 ? 0.50118723362 : 1.0;
  cabinet.buildAttenuation(rays[1].ray);
  const double far = (cabinet.micDistance - 0.35) * 0.6060606060606061 + 0.1;
  outputGain = (1.3 - 0.5 * std::pow(far, 0.75)) * 0.97723722095;
}

double Horn::fullRay(RayState& r) {
  const double d = r.ray.distance;
  const Mouth m = Cabinet::mouth(angleRing.wholeRead(d * samplesPerMetre), r.ray);
  const double y = audioRing.cubicRead((d + cabinet.fmRadius * m.sine) * samplesPerMetre);
  const double amplitude = std::max(cabinet.amplitude(cabinet.amRadius * m.sine + d), ampClip);
  if (updating()) {
    const double v = 1.0 - m.turn;
    r.peak.setFrequencyQGain(onCircle(kHornPeakHz, 36 * v), onCircle(kHornPeakQ, 36 * v),
                             onCircle(kHornPeakDb, 36 * v));
    r.shelf.setFrequencyQGain(6000, 0.7, onCircle(kHornShelfDb, 18 * v));
  }
  return r.shelf.tickGlide(r.peak.tickGlide(y)) * amplitude;
}

double Horn::reducedRay(RayState& r) {
  const double d = r.ray.distance;
  const Mouth m = Cabinet::mouth(angleRing.wholeRead(d * samplesPerMetre), r.ray);
  const double fm = cabinet.fmRadius;
  const double y =
      audioRing.cubicRead((fm * m.sine + d - cabinet.micDistance + 2 * fm) * samplesPerMetre);
  if (updating())
    r.reducedTarget = std::pow(0.005, onCircle(kReducedHornHz, 18 * (1.0 - m.turn)) / engineRate);
  onePole(r.reducedPole, r.reducedTarget, poleSmoother);
  onePole(r.reducedState, y, r.reducedPole);
  return r.reducedState * cabinet.amplitude(cabinet.amRadius * m.sine + d);
}

double Horn::bounce(RayState& r, double x, int bounces) {
  onePole(r.bounceState, x, bouncePole[std::size_t(bounces - 1)]);
  return r.bounceState;
}

void Horn::takeStep(double x) {
  angleRing.write(motion.advance());
  audioRing.write(x);
  if (updating()) setStaticCutoff(staticCutoffHz);
}

double Horn::throughBody(double x) {
  for (Biquad& f : body) x = f.tickFixed(x);
  audioRing.advance();
  angleRing.advance();
  ++counter;
  return x;
}

double Horn::process(double x) {
  takeStep(x);
  const double c = reflectionCoeff, open = reflectionScale * c;
  auto hear = [this](std::size_t r, double gain, double rayGain, int bounces) {
    outputRings[r].write(bounce(rays[r], fullRay(rays[r]) * gain * rayGain, bounces));
  };
  outputRings[1].write(fullRay(rays[1]) * g[1]);
  outputRings[7].write(0.0);
  outputRings[8].write(0.0);
  if (region != 1) hear(std::size_t(sideRay()), c, g[2], 1);
  hear(2, open, g[2], 1);
  hear(3, open * c, g[3], 2);
  hear(4, open * c, g[4], 2);
  hear(5, open * c * c, g[5], 3);
  hear(6, open * c * c, g[6], 3);
  hear(9, c * c * c * c, g[7], 4);
  hear(10, c * c * c * c, g[7], 4);
  hear(11, c * c * c * c * c, g[7], 5);
  hear(12, c * c * c * c * c, g[7], 5);

  const double d = rays[1].ray.distance;
  staticAmplitude = std::max(cabinet.amplitude(d), ampClip);
  onePole(staticState, audioRing.cubicRead(d * samplesPerMetre), staticPole);
  outputRings[0].write(staticState * staticGain * staticAmplitude);
  if (noise) noise->setInputs(staticAmplitude * mechGain, cabinet.micAngle, motion.currentSpeed);

  double s0 = 0, s1 = 0, s2 = 0;
  for (Ring& ring : outputRings) {
    s0 += ring.data[ring.position];
    s1 += ring.linearRead(zDelay1);
    s2 += ring.linearRead(zDelay2);
    ring.advance();
  }
  return throughBody((s1 + s2) * gZ * c * c + s0) * outputGain;
}

double Horn::processReduced(double x) {
  takeStep(x);
  double sum = reducedRay(rays[1]) * g[1];
  auto hear = [this](std::size_t r) {
    return bounce(rays[r], reducedRay(rays[r]) * reflectionCoeff * g[2], 1);
  };
  sum += hear(2);
  if (region != 1) sum += hear(std::size_t(sideRay()));
  const double d = rays[1].ray.distance;
  const double delay = (d - (cabinet.micDistance - cabinet.fmRadius)) * samplesPerMetre;
  onePole(staticState, audioRing.cubicRead(delay), staticPole);
  return throughBody(sum + staticState * staticGain * cabinet.amplitude(d));
}

} // namespace qlx::reference
