// SPDX-License-Identifier: ISC
#include "tests/reference/Frame.h"

#include <algorithm>
#include <cmath>

namespace qlx::reference {
namespace {

constexpr double kFadedOut = 0.96837722339, kFadedIn = 0.0316227766;
constexpr double kVerticalOffset = 0.77, kVerticalSquare = 0.5929; // metres, horn above drum

double sane(double x) { return std::isfinite(x) ? std::clamp(x, -1000.0, 1000.0) : 0.0; }

double tube(double x) {
  const double u = x >= 0.0 ? 0.55 * x / (1.0 + 0.5 * x) : 0.55 * 2.0 * x / (2.0 - 0.25 * x);
  return 1.4 * (1.5 * u - 0.5 * u * u * u - 0.3);
}

} // namespace

Frame::Frame(const Recordings& recordings)
    : horn1(true, 0, recordings), horn2(true, 1, recordings), reducedHorn(false, 0, recordings),
      drum(true, recordings), reducedDrum(false, recordings),
      presence(44100, {kPeaking, 2000, 1, 0, true}), loMid(44100, {kPeaking, 500, 1, 0, true}),
      top(44100, {kPeaking, 4500, 0.35, 0, true}), bottom(44100, {kPeaking, 80, 1, 0, true}),
      imageL(44100, {kLowPass, 20000, double(0.707f), 0, true}), imageR(imageL),
      drumShelf(44100, {kLowShelf, 250, 0.5, 6, true}),
      portFilter(44100, {kBandPass, 70, 9, 0, true}),
      highPass1(44100, {kHighPass, 20, 0.5, 0, true}), highPass2(highPass1),
      colorMidL(44100, {kPeaking, 1500, 0.5, 0, true}), colorMidR(colorMidL),
      colorLowL(44100, {kLowShelf, 350, 0.6, 0, true}), colorLowR(colorLowL) {
  auto build = [](std::vector<Biquad>& chain, const auto& sections) {
    for (const Section& s : sections) {
      chain.emplace_back(44100, s);
      chain.back().setSaturationOffset(0.03125);
    }
  };
  build(hornChain, kHornChain);
  build(reducedHornChain, kReducedHornChain);
}

template <typename F>
void Frame::eachHostFilter(F f) {
  for (Biquad* b : {&presence, &loMid, &top, &bottom, &imageL, &imageR}) f(*b);
}

template <typename F>
void Frame::eachEngineFilter(F f) {
  for (Biquad* b : {&drumShelf, &portFilter, &highPass1, &highPass2, &colorMidL, &colorMidR,
                    &colorLowL, &colorLowR})
    f(*b);
  for (Biquad& b : hornChain) f(b);
  for (Biquad& b : reducedHornChain) f(b);
}

void Frame::readHostRate() {
  if (std::isfinite(storedRate) && storedRate > 0.0f)
    hostRate = std::max(double(storedRate), 22050.0);
}

void Frame::setupEngineRate() {
  if (hostRate < 200000.0) {
    int octave = hostRate < 50000.0 ? 1 : (hostRate < 100000.0 ? 2 : 3);
    if (cpuMode == 1) --octave;
    constexpr std::array<const std::array<float, 32>*, 4> tables = {nullptr, &kFirA, &kFirB,
                                                                    &kFirC};
    fir = tables[std::size_t(octave)];
    engineFactor = 1 << octave;
    engineRate = hostRate / engineFactor;
  }
  for (Horn* h : {&horn1, &horn2, &reducedHorn}) {
    h->setSampleRate(engineRate, engineFactor);
    h->setReflectionLpf(h->reflectionLpf);
  }
  for (Drum* d : {&drum, &reducedDrum}) {
    d->setSampleRate(engineRate, engineFactor);
    d->setReflectionLpf(d->reflectionLpf);
  }
  clearState();
  updateFilterRates();
}

void Frame::clearState() {
  dc = drumLowPass = feed = feedPrevious = dryL = dryR = drumReturn = hornReturn = 0.0;
  if (engineRate < hostRate)
    for (Biquad* b : {&imageL, &imageR}) b->setFrequency(engineRate + hostRate * 20.0 / 44100.0);
  eachHostFilter([](Biquad& b) { b.setInstantUpdate(true); });
  eachEngineFilter([](Biquad& b) { b.setInstantUpdate(true); });
  for (Horn* h : {&horn1, &horn2, &reducedHorn}) h->clear();
  for (Drum* d : {&drum, &reducedDrum}) d->clear();
}

void Frame::updateFilterRates() {
  eachHostFilter([this](Biquad& b) { b.setSampleRate(hostRate); });
  eachEngineFilter([this](Biquad& b) { b.setSampleRate(engineRate); });
  applyFilterFrequencies();
  eachHostFilter([](Biquad& b) { b.setInstantUpdate(false); });
  eachEngineFilter([](Biquad& b) { b.setInstantUpdate(false); });
  feedPole = std::pow(0.005, 500.0 / engineRate);
  dryPole = std::exp(-kTwoPi * 3000.0 / engineRate);
  drumReturnPole = std::exp(-kTwoPi * 3200.0 / engineRate);
  hornReturnPole = std::exp(-kTwoPi * 4500.0 / engineRate);
  for (Horn* h : {&horn1, &horn2, &reducedHorn}) h->resetFilters();
  for (Drum* d : {&drum, &reducedDrum}) d->resetFilters();
}

void Frame::applyFilterFrequencies() {
  const double half = engineRate * 0.5;
  const double high = std::clamp(hornHighPassHz, 20.0, half);
  highPass1.setFrequency(high);
  highPass2.setFrequency(high);
  const double low = drumLowPassHz <= 0.0 ? half : std::clamp(drumLowPassHz, 20.0, half);
  drumLowPassPole = std::pow(0.005, low / engineRate);
}

void Frame::updateRateCoefficients() {
  auto k = [this](double seconds) { return 1.0 - std::exp(-1.0 / (seconds * hostRate)); };
  k30 = k(0.03000000142492354);
  k100 = k(0.10000000474974513);
  k20 = k(0.020000000949949026);
  k500 = k(0.5000000237487257);
  dcCoefficient = 1.0 - std::pow(0.109, 2.0 / (0.1 * hostRate));
}

void Frame::applyTone() {
  auto set = [](Biquad& b, double db, double q) {
    b.setGainDb(db);
    b.setQ(q);
  };
  set(presence, presenceDb, presenceQ);
  set(loMid, loMidDb, loMidQ);
  top.setGainDb(topDb * 0.75);
  bottom.setGainDb(bottomDb * 0.75);
  for (Biquad* b : {&colorMidL, &colorMidR}) b->setGainDb(colorMidDb);
  for (Biquad* b : {&colorLowL, &colorLowR}) b->setGainDb(colorLowDb);
}

void Frame::clearRings() {
  for (Ring* r : {&drumReturnRing, &hornReturnRing, &portRing}) r->clear();
  for (auto* r : {&firInput, &firLeft, &firRight}) r->fill(0.0f);
  firPos = 31;
}

void Frame::refreshHostRate() {
  readHostRate();
  setupEngineRate();
  eachHostFilter([](Biquad& b) { b.setInstantUpdate(true); });
  eachEngineFilter([](Biquad& b) { b.setInstantUpdate(true); });
  clearRings();
}

void Frame::resetEngine() {
  readHostRate();
  forgetLever();
  sampleCounter = 0;
  setupEngineRate();
  for (Smoothed* s :
       {&inputGain,      &driveGain,      &postGain,       &hornGain,     &mic2Gain,
        &drumGain,       &mic1PanL,       &mic1PanR,       &mic2PanL,     &mic2PanR,
        &drumPanL,       &drumPanR,       &hornFeedGain,   &drumFeedGain, &drumToHornGain,
        &hornToDrumGain, &portToHornGain, &portToDrumGain, &highPassOn,   &lowPassOn,
        &roomReturnGain, &noisePanA,      &noisePanB})
    s->snap();
  for (auto& s : crossDelay) s.snap();
  for (auto& s : crossGain) s.snap();
  updateRateCoefficients();
  room.computeTaps(engineRate);
  room.left.clear();
  room.right.clear();
  clearRings();
  for (Horn* h : {&horn1, &horn2, &reducedHorn}) h->ampClip = clipForHornDistance();
}

void Frame::computeCrossDelays() {
  auto normalised = [](const Cabinet& c) {
    const Cabinet::Point p = c.micPosition();
    return Cabinet::Point{p.x / c.amRadius, p.y / c.amRadius};
  };
  const auto pd = normalised(drum.cabinet), ph = normalised(horn1.cabinet);
  const double r = reducedHorn.cabinet.amRadius, k = engineRate * kInverseSpeedOfSound;
  auto set = [this](Cross path, double delay, double gain) {
    crossDelay[path].target = delay;
    crossGain[path].target = gain;
  };
  auto above = [](double x, double y) { return std::sqrt(y * y + x * x + kVerticalSquare); };
  const Cabinet &hornLaw = reducedHorn.cabinet, &drumLaw = reducedDrum.cabinet;
  const double dP = std::sqrt(pd.x * pd.x + pd.y * pd.y);
  set(kPortToDrum, dP * k, drumLaw.attenuationAt(dP));
  const double dH = above(pd.x, pd.y - r);
  set(kHornToDrum, (dH - kVerticalOffset) * k, hornLaw.attenuationAt(dH));
  const double dE = above(ph.x, ph.y - r);
  set(kHornEcho, (dE - kVerticalOffset) * k, hornLaw.attenuationAt(dE));
  const double dD = above(ph.x, ph.y);
  set(kDrumToHorn, (dD - kVerticalOffset) * k, drumLaw.attenuationAt(dD));
  set(kPortToHorn, dD * k, drumLaw.attenuationAt(dD));
}

bool Frame::take(unsigned bits) {
  const bool any = (pending & bits) != 0;
  pending &= ~bits;
  return any;
}

void Frame::rebuildTaken(unsigned bits) {
  const unsigned taken = pending & bits;
  pending &= ~bits;
  if (taken & kHornMic1) horn1.rebuildGeometry();
  if (taken & kHornMic2) horn2.rebuildGeometry();
  if (taken & kReducedHorn) reducedHorn.rebuildGeometry();
  if (taken & kDrum) drum.rebuildGeometry();
  if (taken & kReducedDrum) reducedDrum.rebuildGeometry();
}

void Frame::fullReset() {
  pending = 0;
  resetEngine();
  applySetup();
  room.computeTaps(engineRate);
  pending = kHornMic1 | kHornMic2 | kReducedHorn | kDrum | kReducedDrum;
  rebuildTaken(pending);
  computeCrossDelays();
  state = kFadingIn;
  muteTarget = 0.0;
}

void Frame::stateMachine() {
  constexpr unsigned kMics = kHornMic1 | kHornMic2;
  constexpr unsigned kOthers = kReducedHorn | kDrum | kReducedDrum;
  switch (state) {
  case kRunning:
  case kFadingIn:
    if ((pending & ~unsigned(kToneUpdate | kFilterUpdate)) != 0) {
      state = kFadingOut;
      muteTarget = 1.0;
    } else if (state == kFadingIn && muteLevel < kFadedIn) {
      state = kRunning;
      muteLevel = 0.0;
    }
    return;
  case kFadingOut:
    if (muteLevel > kFadedOut) {
      state = kReinitialising;
      muteLevel = 1.0;
    }
    return;
  case kReinitialising: break;
  }
  if (take(kResume)) {
    refreshHostRate();
  } else if ((pending & kFullReset) != 0) {
    fullReset();
  } else if (take(kSetup | kRoomTaps)) {
    applySetup();
    room.computeTaps(engineRate);
  } else if ((pending & kMics) != 0) {
    rebuildTaken(kMics);
  } else if ((pending & kOthers) != 0) {
    rebuildTaken(kOthers);
  } else if (take(kRateSetup)) {
    setupEngineRate();
  } else if (take(kCrossDelays)) {
    computeCrossDelays();
  } else {
    state = kFadingIn;
    muteTarget = 0.0;
  }
}

void Frame::processBlock(const double* l, const double* r, double* ol, double* orr, int frames) {
  if (take(kFilterUpdate)) applyFilterFrequencies();
  if (take(kToneUpdate)) applyTone();
  stateMachine();
  for (int i = 0; i < frames; ++i) {
    const double in0 = sane(l[i]), in1 = sane(r[i]);
    bypassLevel = flush(bypassLevel + (bypassTarget - bypassLevel) * k20);
    if (state != kRunning) muteLevel = flush(muteLevel + (muteTarget - muteLevel) * k20);
    const Stereo out = processSample(in0, in1);
    ol[i] = (1.0 - bypassLevel) * out.left + bypassLevel * in0;
    orr[i] = (1.0 - bypassLevel) * out.right + bypassLevel * in1;
  }
}

void Frame::smoothSettings() {
  for (Smoothed* s :
       {&inputGain,      &postGain,       &hornGain,     &mic2Gain,       &drumGain,
        &mic1PanL,       &mic1PanR,       &mic2PanL,     &mic2PanR,       &drumPanL,
        &drumPanR,       &hornFeedGain,   &drumFeedGain, &drumToHornGain, &hornToDrumGain,
        &portToHornGain, &portToDrumGain, &highPassOn,   &lowPassOn,      &roomReturnGain,
        &noisePanA,      &noisePanB})
    s->step(k30);
  for (auto& s : crossDelay) s.step(k30);
  for (auto& s : crossGain) s.step(k30);
  driveGain.step(k100);
  modWheelActivity = flush(modWheelActivity + (0.0 - modWheelActivity) * k500);
}

double Frame::amplifier(double m) {
  const double g = driveGain.value;
  double y = m;
  if (amplifierType == 1) {
    const double v = tube(-tube(g * m * 1.18));
    dc = flush(dc + (-v - dc) * dcCoefficient);
    y = (-v - dc) / g;
  } else if (amplifierType == 2) {
    const double x = g * m * 1.34349;
    const double w = (std::abs(x + 1.0) - std::abs(x - 1.0)) * 0.5;
    y = (1.5 * w - 0.5 * w * w * w) * 0.5 / g;
  }
  return std::abs(m) < 1e-8 ? m : y;
}

double Frame::firSum(const std::array<float, 32>& ring) const {
  double sum = 0.0;
  for (unsigned k = 0; k < 32; ++k) sum += double((*fir)[k]) * double(ring[(firPos + k) & 31]);
  return sum;
}

Frame::Stereo Frame::dryBlend(Stereo wet, double in0, double in1) {
  onePole(dryL, inputGain.value * in0 * 0.5, dryPole);
  onePole(dryR, inputGain.value * in1 * 0.5, dryPole);
  return {(1.0 - muteLevel) * wet.left + muteLevel * dryL,
          (1.0 - muteLevel) * wet.right + muteLevel * dryR};
}

Frame::Stereo Frame::processSample(double in0, double in1) {
  smoothSettings();
  double a = amplifier((in0 + in1) * 0.5 * inputGain.value) * postGain.value;
  for (Biquad* b : {&presence, &loMid, &top, &bottom}) a = b->tickGlide(a);
  if (speakersBypassed) return dryBlend({a, a}, in0, in1);

  firPos = (firPos - 1) & 31;
  firInput[firPos] = float(a);
  const double x = fir ? firSum(firInput) : a;
  Stereo wet{0.0, 0.0};
  if ((sampleCounter & unsigned(engineFactor - 1)) == 0) wet = engineSample(x);
  if (fir) {
    firLeft[firPos] = float(imageL.tickFixed(wet.left) * engineFactor);
    firRight[firPos] = float(imageR.tickFixed(wet.right) * engineFactor);
    wet = {firSum(firLeft), firSum(firRight)};
  }
  ++sampleCounter;
  return dryBlend(wet, in0, in1);
}

Frame::Stereo Frame::engineSample(double x) {
  const double drumFeed = drumShelf.tickFixed(x) * drumFeedGain.value;
  feed = flush(feed * feedPole + (x - feedPrevious));
  feedPrevious = x;
  const double hornFeed = feed * hornFeedGain.value;
  double hornIn = hornFeed, reducedHornIn = hornFeed;
  for (Biquad& b : hornChain) hornIn = b.tickGlideSaturating(hornIn);
  for (Biquad& b : reducedHornChain) reducedHornIn = b.tickGlideSaturating(reducedHornIn);

  auto tap = [this](const Ring& ring, Cross path) {
    return ring.linearRead(crossDelay[path].value) * crossGain[path].value;
  };
  const double drumToHorn = tap(drumReturnRing, kDrumToHorn) * drumToHornGain.value;
  const double portToHorn = tap(portRing, kPortToHorn) * portToHornGain.value * 4.0;
  const double hornToDrum = tap(hornReturnRing, kHornToDrum) * hornToDrumGain.value * 0.25;
  const double portToDrum = tap(portRing, kPortToDrum) * portToDrumGain.value * 4.0;
  const double hornEcho = tap(hornReturnRing, kHornEcho) * 0.1575;
  const double toHorns = drumToHorn + portToHorn + hornEcho;

  const double drumOut = drum.process(drumFeed);
  const double drumSum = hornToDrum + portToDrum + drumOut + drum.lowStaticPart;
  const double drumNoise = drum.noise->tick();
  const double mic1 = horn1.process(hornIn) * 0.5 + toHorns;
  const double mic2 = horn2.process(hornIn) * 0.5 + toHorns;
  const double noise1 = horn1.noise->tick() * 0.5, noise2 = horn2.noise->tick();

  onePole(drumReturn, reducedDrum.processReduced(drumFeed) * 4.0, drumReturnPole);
  onePole(hornReturn, reducedHorn.processReduced(reducedHornIn) * 4.0, hornReturnPole);
  drumReturnRing.write(drumReturn);
  hornReturnRing.write(hornReturn);
  portRing.write(portFilter.tickGlide(x * 8.0) * drumFeedGain.value * 8.0);

  const double level1 = hornGain.value * hornLevel, level2 = level1 * mic2Gain.value;
  const double d = drumSum * drumGain.value;
  double h1 = mic1 * level1, h2 = mic2 * level2;
  const double near1 = noisePanB.value * noise1 + noisePanA.value * noise2;
  const double near2 = noisePanB.value * noise2 + noisePanA.value * noise1;
  const double sendL = h2 * mic2PanL.value + h1 * mic1PanL.value + d * drumPanL.value +
                       (near1 + drumNoise) * noiseSendGain;
  const double sendR = h2 * mic2PanR.value + h1 * mic1PanR.value + d * drumPanR.value +
                       (near2 + drumNoise) * noiseSendGain;
  double roomL = room.left.process(sendL) * roomReturnGain.value;
  double roomR = room.right.process(sendR) * roomReturnGain.value;
  roomL = colorLowL.tickGlide(colorMidL.tickGlide(roomL));
  roomR = colorLowR.tickGlide(colorMidR.tickGlide(roomR));

  const double dReturn = (roomL * drum.staticAmplitude + drumNoise) * drumGain.value;
  h1 += (roomL * horn1.staticAmplitude + near1) * level1;
  h2 += (roomR * horn2.staticAmplitude + near2) * level2;

  const double s = highPassOn.value, t = lowPassOn.value;
  h1 = (1.0 - s) * h1 + s * highPass1.tickGlide(h1);
  h2 = (1.0 - s) * h2 + s * highPass2.tickGlide(h2);
  const double u = d + dReturn;
  onePole(drumLowPass, u, drumLowPassPole);
  const double dOut = (1.0 - t) * u + t * drumLowPass;

  for (Ring* ring : {&drumReturnRing, &hornReturnRing, &portRing}) ring->advance();
  constexpr double kOutput = 0.50118723362;
  return {(h2 * mic2PanL.value + h1 * mic1PanL.value + dOut * drumPanL.value) * kOutput,
          (h2 * mic2PanR.value + h1 * mic1PanR.value + dOut * drumPanR.value) * kOutput};
}

} // namespace qlx::reference
