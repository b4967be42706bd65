// SPDX-License-Identifier: ISC
#include "tests/reference/ReferenceEffect.h"

#include <algorithm>
#include <cmath>

namespace qlx::reference {
namespace {

constexpr double kHalfPi = 1.5707963267948966;
constexpr int kMaxBlock = 512;

float gainLaw(float v) { return float(std::exp(2.185 * double(v)) * 0.5048 - 0.5048); }
float coefLaw(float v) { return float(std::exp(2.18457 * double(v)) * 0.126794 - 0.126794); }
float radiusLaw(float v) { return float(std::exp(0.482324 * double(v)) * 0.201667 - 0.0766667); }
float freqLaw(float v) { return float(std::pow(100.0, double(v)) * 200.0); }
float timeLaw(float v) { return float(std::pow(100.0, double(v)) * double(0.1f)); }
float toneDb(float v) { return 24.0f * v - 12.0f; }
float distanceLaw(float v) { return float(1.3 * double(v) + 0.35); }
float saturationLaw(float v) { return std::pow(400.0f, v) * 0.0008f; }
float clipLaw(float v) { return (std::sqrt(v) - 0.5f) * 0.2f + 0.795879f; }
double hornHighPassLaw(float v) {
  return double(v) < 0.01 ? 0.0 : std::exp(2.966 * double(v)) * 53.33 - 34.94;
}
double drumLowPassLaw(float v) { return v == 1.0f ? 0.0 : double(std::pow(100.0f, v) * 200.0f); }
double panLeft(double v) { return std::sin((1.0 - v) * kHalfPi); }
double panRight(double v) { return std::sin(v * kHalfPi); }
int rounded(float v, float k = 1.0f) { return int(k * v + 0.5f); }

bool isReserved(int index) {
  return index == 36 || index == 57 || index == 59 || (index >= 64 && index <= 67) || index == 71 ||
         index == 73 || (index >= 81 && index <= 84) || index == 108;
}
bool isGlobal(int index) { return (index >= 0 && index <= 4) || index == 35; }

} // namespace

ReferenceEffect::ReferenceEffect(const Recordings& recordings) : Frame(recordings) {
  m_values[31] = m_values[32] = m_values[34] = 0.5f;
  m_values[33] = 1.0f;
  pending = (1u << 13) - 1;
  for (const IndexedValue& d : kDefaults) setParameter(d.index, d.value);
  for (std::size_t i = 0; i < m_slots.size(); ++i)
    m_slots[i] = kFactoryPresets[i < kFactoryPresets.size() ? i : 0];
  selectPreset(0);

  applySetup();
  rebuildTaken(kHornMic1 | kHornMic2 | kReducedHorn | kDrum | kReducedDrum);
  setupEngineRate();
  computeCrossDelays();
  refreshHostRate();
  resetEngine();
  pending &= kToneUpdate | kFilterUpdate;
  suspend();
  resume();
  suspend();
}

void ReferenceEffect::setSampleRate(float hz) { storedRate = hz; }

void ReferenceEffect::suspend() { request(kResume); }

void ReferenceEffect::resume() {
  request(kFullReset | kHornMic1 | kHornMic2 | kReducedHorn | kDrum | kReducedDrum | kCrossDelays);
  bypassLevel = bypassTarget;
}

float ReferenceEffect::getParameter(int index) const {
  return index < 0 || index >= kNumParameters ? 0.0f : m_values[std::size_t(index)];
}

void ReferenceEffect::setParameter(int index, float value) {
  if (std::isnan(value)) return;
  if (index >= 0 && index < kNumParameters && !isReserved(index)) {
    if (index == 4) m_lastLever = m_values[2];
    m_values[std::size_t(index)] = value;
    applySwitches(index, value);
    applyTonePanel(index, value);
    applyRotorPanel(index, value);
    applyHornCalibration(index, value);
    applyDrumCalibration(index, value);
    applyLevelCalibration(index, value);
    if (isGlobal(index))
      for (auto& slot : m_slots) slot[std::size_t(index)] = value;
  }
  if (!m_presetLoading && index >= 0 && index < kNumPresetValues)
    m_slots[std::size_t(m_currentSlot)][std::size_t(index)] = value;
}

void ReferenceEffect::selectPreset(int slot) {
  m_presetLoading = true;
  m_currentSlot = slot;
  const auto values = m_slots[std::size_t(slot)];
  for (int p = 0; p < kNumPresetValues; ++p) {
    const float v = values[std::size_t(p)];
    if (v >= 0.0f && v <= 1.0f) setParameter(p, v);
  }
  m_presetLoading = false;
}

void ReferenceEffect::restoreSlots(int current) {
  for (auto& slot : m_slots)
    for (float& v : slot) v = v > 0.0f ? std::min(v, 1.0f) : 0.0f;
  selectPreset(current >= 0 && current < kNumSlots ? current : 0);
}

void ReferenceEffect::processMidi(int status, int data1, int data2) {
  if (m_midiChannel == 0) return;
  if (m_midiChannel <= 16 && (status & 0x0F) != m_midiChannel - 1) return;
  if ((status & 0xF0) != 0xB0) return;
  const float v = std::clamp(float(data2 & 0x7F) * 0.007874016f, 0.0f, 1.0f);
  const int controller = data1 & 0x7F;
  if (controller == 1) {
    modWheelActivity = 1.0;
    setParameter(2, v);
  } else if (controller == 64) {
    setParameter(2, getParameter(2));
    setParameter(2, v >= 0.5f ? 1.0f : 0.0f);
  }
}

void ReferenceEffect::process(const double* l, const double* r, double* ol, double* orr,
                              int frames) {
  for (int done = 0; done < frames; done += kMaxBlock)
    processBlock(l + done, r + done, ol + done, orr + done, std::min(kMaxBlock, frames - done));
}

void ReferenceEffect::applySetup() {
  const SetupRow& row = kSetups[std::size_t(std::clamp(m_setup, 0, 5))];
  constexpr std::array<int, 8> order = {118, 38, 40, 41, 43, 37, 39, 42};
  for (std::size_t i = 0; i < order.size(); ++i) setParameter(order[i], row.values[i]);
  hornLevel = row.hornLevel;
  noisePanA.toward(panLeft(0.8));
  noisePanB.toward(panRight(0.8));
}

double ReferenceEffect::clipForHornDistance() const {
  return double(coefLaw(clipLaw(m_values[21])));
}

void ReferenceEffect::setMech(double horns, double drumLevel) {
  horn1.mechGain = horn2.mechGain = horns;
  drum.mechGain = drumLevel;
}

void ReferenceEffect::applySwitches(int index, float v) {
  switch (index) {
  case 0: bypassTarget = rounded(v); break;
  case 1:
    cpuMode = rounded(v);
    if (cpuMode != m_lastCpuMode) request(kFullReset);
    m_lastCpuMode = cpuMode;
    break;
  case 2: applyLever(v); break;
  case 4: {
    const double stop = rounded(v);
    horn1.motion.setStop(stop);
    horn2.motion.setStop(stop);
    drum.motion.setStop(stop);
    reducedHorn.motion.setStop(stop);
    reducedDrum.motion.setStop(stop);
    break;
  }
  case 10:
    m_setup = rounded(v, 5.0f);
    if (m_setup != m_lastSetup) request(kSetup | kCrossDelays);
    m_lastSetup = m_setup;
    break;
  case 12: amplifierType = rounded(v, 2.0f); break;
  case 14: applySize(v); break;
  case 35: m_midiChannel = rounded(v, 17.0f); break;
  case 118: speakersBypassed = rounded(v) != 0; break;
  default: break;
  }
}

void ReferenceEffect::applyLever(float v) {
  if (v != m_lastLever) {
    const double lever = 1.0 - double(v);
    horn1.motion.setLever(lever);
    horn2.motion.setLever(lever);
    drum.motion.setLever(lever);
    reducedHorn.motion.setLever(lever);
    reducedDrum.motion.setLever(lever);
  }
  m_lastLever = v;
  if (!m_presetLoading && rounded(m_values[4]) != 0) setParameter(4, 0.0f);
}

void ReferenceEffect::applySize(float v) {
  const int size = rounded(v, 4.0f) + 1;
  if (size == m_lastSize) return;
  m_lastSize = size;
  const auto row = std::size_t(std::clamp(size, 1, 5) - 1);
  setParameter(99, kRoomSize[row]);
  setParameter(100, kVirtualRoomSize[row]);
}

void ReferenceEffect::applyTonePanel(int index, float v) {
  switch (index) {
  case 5:
    m_mechLevel = double(gainLaw(v)) * 0.25;
    setMech(2.0 * m_mechLevel, 2.0 * m_drumNoiseScale * m_mechLevel);
    break;
  case 6:
    bottomDb = double(toneDb(v));
    request(kToneUpdate);
    break;
  case 7:
    loMidDb = double(toneDb(v));
    loMidQ = loMidDb <= 0.0 ? 1.0 : 0.7;
    request(kToneUpdate);
    break;
  case 8:
    presenceDb = double(toneDb(v));
    presenceQ = presenceDb <= 0.0 ? 1.0 : 0.7;
    request(kToneUpdate);
    break;
  case 9:
    topDb = double(toneDb(v));
    request(kToneUpdate);
    break;
  case 11: inputGain.toward(double(gainLaw(v)) * 0.70794578438); break;
  case 13: driveGain.toward(std::pow(10.0, (40.0 * double(v) - 20.0) * 0.05)); break;
  case 15:
    colorMidDb = 12.0 * double(v) - 3.0;
    colorLowDb = -12.0 * double(v);
    request(kToneUpdate);
    break;
  case 16:
    roomReturnGain.toward(double(gainLaw(v)) * 0.0316227766);
    noiseSendGain = double(float(double(gainLaw(v / 2.0f)) * 0.25));
    break;
  default: break;
  }
}

void ReferenceEffect::applyRotorPanel(int index, float v) {
  auto horns = [this](auto f) {
    for (Horn* h : {&horn1, &horn2, &reducedHorn}) f(h->motion);
  };
  auto drums = [this](auto f) {
    for (Drum* d : {&drum, &reducedDrum}) f(d->motion);
  };
  const double hz = double(10.0f * v), seconds = double(timeLaw(v));
  switch (index) {
  case 17: horns([hz](Motion& m) { m.setSlowSpeed(hz); }); break;
  case 18: horns([hz](Motion& m) { m.setFastSpeed(hz); }); break;
  case 19: horns([seconds](Motion& m) { m.setAccelTime(seconds); }); break;
  case 20: horns([seconds](Motion& m) { m.setDecelTime(seconds); }); break;
  case 21: applyHornDistance(v); break;
  case 22:
    hornHighPassHz = hornHighPassLaw(v);
    highPassOn.toward(hornHighPassHz > 0.0 ? 1.0 : 0.0);
    request(kFilterUpdate);
    break;
  case 23: hornGain.toward(double(gainLaw(v))); break;
  case 24: drums([hz](Motion& m) { m.setSlowSpeed(hz); }); break;
  case 25: drums([hz](Motion& m) { m.setFastSpeed(hz); }); break;
  case 26: drums([seconds](Motion& m) { m.setAccelTime(seconds); }); break;
  case 27: drums([seconds](Motion& m) { m.setDecelTime(seconds); }); break;
  case 28: {
    const double d = double(distanceLaw(v));
    if (d == m_drumDistance) break;
    m_drumDistance = d;
    drum.setMicDistance(d);
    request(kDrum | kReducedDrum | kReducedHorn | kCrossDelays);
    break;
  }
  case 29:
    drumLowPassHz = drumLowPassLaw(v);
    lowPassOn.toward(drumLowPassHz > 0.0 ? 1.0 : 0.0);
    request(kFilterUpdate);
    break;
  case 30: drumGain.toward(double(gainLaw(v))); break;
  default: break;
  }
}

void ReferenceEffect::applyHornDistance(float v) {
  const double d = double(distanceLaw(v));
  if (d == m_hornDistance) return;
  setParameter(119, clipLaw(v));
  m_hornDistance = d;
  horn1.setMicDistance(d);
  horn2.setMicDistance(std::max(0.3, (1.0 + m_mic2Offset) * d));
  request(kHornMic1 | kHornMic2 | kReducedDrum | kReducedHorn | kCrossDelays);
}

void ReferenceEffect::applyHornSaturation(float v) {
  const double s = double(saturationLaw(v));
  for (std::size_t i = 0; i < hornChain.size(); ++i) hornChain[i].setSaturation(i == 10 ? s : 0.0);
  for (std::size_t i = 0; i < reducedHornChain.size(); ++i)
    reducedHornChain[i].setSaturation(i == 2 || i == 7 ? s : 0.0);
}

void ReferenceEffect::applyHornCalibration(int index, float v) {
  constexpr unsigned kGeometry = kHornMic1 | kHornMic2 | kReducedHorn | kCrossDelays;
  constexpr unsigned kPlacement = kReducedDrum | kReducedHorn | kCrossDelays;
  auto horns = [this](auto f) {
    for (Horn* h : {&horn1, &horn2, &reducedHorn}) f(*h);
  };
  const double x = double(v);
  switch (index) {
  case 38:
    horn1.cabinet.micAngle = x - 0.5;
    request(kHornMic1 | kPlacement);
    break;
  case 40:
    horn2.cabinet.micAngle = x - 0.5;
    request(kHornMic2 | kPlacement);
    break;
  case 41:
    m_mic2Offset = 0.4 * x - 0.2;
    horn2.setMicDistance(std::max(0.3, (1.0 + m_mic2Offset) * m_hornDistance));
    request(kHornMic1 | kHornMic2 | kPlacement);
    break;
  case 44:
    horns([v](Horn& h) { h.cabinet.fmRadius = double(radiusLaw(v)); });
    request(kCrossDelays);
    break;
  case 45:
    horns([x](Horn& h) { h.cabinet.attenuationExponent = 2.0 * x; });
    request(kGeometry);
    break;
  case 46:
  case 47:
  case 48:
  case 49:
  case 50:
  case 51:
  case 52: horns([&](Horn& h) { h.g[std::size_t(index - 45)] = x; }); break;
  case 55: horns([v](Horn& h) { h.reflectionCoeff = double(coefLaw(v)); }); break;
  case 56: horns([x](Horn& h) { h.gZ = x; }); break;
  case 58:
    horns([v](Horn& h) { h.setFlip(v <= 0.5f ? 1.0 : -1.0); });
    request(kGeometry);
    break;
  case 60: horns([x](Horn& h) { h.setReflectionLpf(2.0 * x); }); break;
  case 72:
    horns([v](Horn& h) { h.openBackMode = int(2.0f * v); });
    request(kHornMic1 | kHornMic2 | kReducedHorn);
    break;
  case 90:
    horns([v](Horn& h) {
      h.cabinet.attenuationDistance = std::max(0.01, double(std::pow(100.0f, v)) * 0.1);
    });
    request(kGeometry);
    break;
  case 92: horns([x](Horn& h) { h.staticGain = x; }); break;
  case 93:
    horns([x](Horn& h) { h.cabinet.attenuationFadeExponent = std::exp(1.38629 * x) * 0.5; });
    request(kGeometry);
    break;
  case 96:
    horns([v](Horn& h) { h.cabinet.amRadius = double(radiusLaw(v)); });
    request(kGeometry);
    break;
  case 98: applyHornSaturation(v); break;
  case 112: horns([v](Horn& h) { h.setStaticCutoff(double(freqLaw(v))); }); break;
  case 119: horns([v](Horn& h) { h.ampClip = double(coefLaw(v)); }); break;
  default: break;
  }
}

void ReferenceEffect::applyDrumCalibration(int index, float v) {
  constexpr unsigned kGeometry = kDrum | kReducedDrum | kCrossDelays;
  auto drums = [this](auto f) {
    for (Drum* d : {&drum, &reducedDrum}) f(*d);
  };
  const double x = double(v);
  switch (index) {
  case 62:
    drum.cabinet.micAngle = x - 0.5;
    request(kGeometry | kReducedHorn);
    break;
  case 68:
    drums([v](Drum& d) { d.cabinet.fmRadius = double(radiusLaw(v)); });
    request(kCrossDelays);
    break;
  case 69:
    drums([x](Drum& d) { d.cabinet.attenuationExponent = 2.0 * x; });
    request(kGeometry);
    break;
  case 70: drums([v](Drum& d) { d.reflectionCoeff = double(coefLaw(v)); }); break;
  case 80:
    drums([v](Drum& d) { d.setFlip(v <= 0.5f ? 1.0 : -1.0); });
    request(kGeometry);
    break;
  case 85: drums([x](Drum& d) { d.d[1] = x; }); break;
  case 86: drums([x](Drum& d) { d.d[2] = x; }); break;
  case 113: drums([x](Drum& d) { d.d[3] = x; }); break;
  case 114: drums([x](Drum& d) { d.d[4] = x; }); break;
  case 89: drums([x](Drum& d) { d.setReflectionLpf(2.0 * x); }); break;
  case 91:
    drums([v](Drum& d) { d.cabinet.attenuationDistance = std::max(0.01, double(3.0f * v)); });
    request(kGeometry | kReducedHorn);
    break;
  case 94:
    drums([x](Drum& d) { d.cabinet.attenuationFadeExponent = std::exp(1.38629 * x) * 0.5; });
    request(kGeometry);
    break;
  case 95: drums([x](Drum& d) { d.staticGain = x; }); break;
  case 97:
    drums([v](Drum& d) { d.cabinet.amRadius = double(radiusLaw(v)); });
    request(kGeometry);
    break;
  case 110: drums([v](Drum& d) { d.setFilterSaturation(double(saturationLaw(v))); }); break;
  case 111: drums([v](Drum& d) { d.staticCutoffHz = double(freqLaw(v)); }); break;
  case 116: drum.setSplitter(double(float(std::pow(10.0, x) * 50.0))); break;
  case 117: drum.lpStaticGain = double(gainLaw(v)); break;
  default: break;
  }
}

void ReferenceEffect::applyLevelCalibration(int index, float v) {
  const double x = double(v), n = double(gainLaw(v));
  auto players = [this](double NoisePlayer::*member, double horns, double drumValue) {
    horn1.noise.get()->*member = horn2.noise.get()->*member = horns;
    drum.noise.get()->*member = drumValue;
  };
  switch (index) {
  case 37: hornFeedGain.toward(64.0 * n); break;
  case 39:
    mic1PanL.toward(panLeft(x));
    mic1PanR.toward(panRight(x));
    break;
  case 42:
    mic2PanL.toward(panLeft(x));
    mic2PanR.toward(panRight(x));
    break;
  case 43: mic2Gain.toward(n); break;
  case 61: drumFeedGain.toward(n); break;
  case 63:
    drumPanL.toward(panLeft(x));
    drumPanR.toward(panRight(x));
    break;
  case 74: postGain.toward(n); break;
  case 75: portToHornGain.toward(n); break;
  case 76: portToDrumGain.toward(n); break;
  case 77:
    drumToHornGain.toward(n);
    request(kCrossDelays);
    break;
  case 78:
    hornToDrumGain.toward(n);
    request(kCrossDelays);
    break;
  case 79: request(kCrossDelays); break;
  case 99: room.size = std::exp(3.58352 * x) * 0.1 + 0.4; break;
  case 100: room.virtualSize = std::exp(2.77259 * x) * 0.25; break;
  case 101: room.lrDelay = std::exp(2.30259 * x) * 0.15; break;
  case 102: players(&NoisePlayer::slowVolume, n * 5.01187233627, n * 0.70794578438); break;
  case 103: players(&NoisePlayer::fastVolume, n * 6.3095734448, n); break;
  case 105: players(&NoisePlayer::decelVolume, n * 0.99763115748, n * 0.06294627058); break;
  case 106: room.mainCutoffHz = double(freqLaw(v)); break;
  case 115:
    m_drumNoiseScale = n * 7.96214341106;
    setMech(m_mechLevel, m_drumNoiseScale * m_mechLevel);
    break;
  default: break;
  }
  if (index == 99 || index == 100 || index == 101 || index == 106 || index == 107)
    request(kRoomTaps);
}

} // namespace qlx::reference
