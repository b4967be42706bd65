// SPDX-License-Identifier: ISC
#pragma once

#include "tests/reference/Drum.h"
#include "tests/reference/Horn.h"
#include "tests/reference/Room.h"

#include <array>
#include <span>

namespace qlx::reference {

struct Smoothed {
  void step(double k) { value += (target - value) * k; }
  void snap() { value = target; }
  void toward(double t) { target = t; }
  double target = 0, value = 0;
};

// The audio path around the models, one host sample after another, and the work behind the mute.
struct Frame {
  enum Pending : unsigned {
    kSetup = 1u << 0,
    kRoomTaps = 1u << 1,
    kHornMic1 = 1u << 2,
    kHornMic2 = 1u << 3,
    kReducedHorn = 1u << 4,
    kDrum = 1u << 5,
    kReducedDrum = 1u << 6,
    kRateSetup = 1u << 7,
    kCrossDelays = 1u << 8,
    kResume = 1u << 9,
    kFullReset = 1u << 10,
    kToneUpdate = 1u << 11,
    kFilterUpdate = 1u << 12
  };
  enum State { kRunning, kFadingOut, kReinitialising, kFadingIn };
  enum Cross { kDrumToHorn, kPortToHorn, kHornToDrum, kPortToDrum, kHornEcho, kPaths };

  explicit Frame(const Recordings& recordings);
  virtual ~Frame() = default;
  Frame(const Frame&) = delete;
  Frame& operator=(const Frame&) = delete;

  virtual void applySetup() = 0;
  virtual double clipForHornDistance() const = 0;
  virtual void forgetLever() = 0;

  void processBlock(const double* l, const double* r, double* ol, double* orr, int frames);
  void refreshHostRate();
  void resetEngine();
  void setupEngineRate();
  void computeCrossDelays();

  void readHostRate();
  void clearState();
  void updateFilterRates();
  void updateRateCoefficients();
  void applyFilterFrequencies();
  void applyTone();
  void clearRings();
  bool take(unsigned bits);
  void stateMachine();
  void fullReset();
  void rebuildTaken(unsigned bits);

  struct Stereo {
    double left, right;
  };
  Stereo processSample(double in0, double in1);
  double amplifier(double m);
  Stereo engineSample(double x);
  Stereo dryBlend(Stereo wet, double in0, double in1);
  double firSum(const std::array<float, 32>& ring) const;
  void smoothSettings();
  template <typename F>
  void eachHostFilter(F f);
  template <typename F>
  void eachEngineFilter(F f);

  // Rates.
  float storedRate = 44100;
  double hostRate = 44100, engineRate = 44100;
  int engineFactor = 1, cpuMode = 0;
  const std::array<float, 32>* fir = nullptr;
  std::array<float, 32> firInput{}, firLeft{}, firRight{};
  unsigned firPos = 31, sampleCounter = 0;
  double k30 = 0, k100 = 0, k20 = 0, k500 = 0, dcCoefficient = 0, feedPole = 0, dryPole = 0;

  // State machine.
  State state = kRunning;
  unsigned pending = 0;
  double muteLevel = 0, muteTarget = 0, bypassLevel = 0, bypassTarget = 0;

  // Settings.
  int amplifierType = 1;
  bool speakersBypassed = false;
  double presenceDb = 0, presenceQ = 1, loMidDb = 0, loMidQ = 1, topDb = 0, bottomDb = 0;
  double colorMidDb = 0, colorLowDb = 0, hornHighPassHz = 0, drumLowPassHz = 0;
  double hornLevel = 1, noiseSendGain = 0, modWheelActivity = 0;
  Smoothed inputGain, driveGain{1, 1}, postGain, hornGain, mic2Gain, drumGain;
  Smoothed mic1PanL, mic1PanR, mic2PanL, mic2PanR, drumPanL, drumPanR;
  Smoothed hornFeedGain, drumFeedGain, drumToHornGain, hornToDrumGain;
  Smoothed portToHornGain, portToDrumGain, highPassOn, lowPassOn, roomReturnGain;
  Smoothed noisePanA{0, 0}, noisePanB{1, 1};
  std::array<Smoothed, kPaths> crossDelay, crossGain;

  // Parts and states.
  Horn horn1, horn2, reducedHorn;
  Drum drum, reducedDrum;
  Room room;
  Biquad presence, loMid, top, bottom, imageL, imageR;
  Biquad drumShelf, portFilter, highPass1, highPass2, colorMidL, colorMidR, colorLowL, colorLowR;
  std::vector<Biquad> hornChain, reducedHornChain;
  Ring drumReturnRing{1024}, hornReturnRing{1024}, portRing{1024};
  double drumReturn = 0, hornReturn = 0, drumReturnPole = 0, hornReturnPole = 0;
  double dc = 0, drumLowPass = 0, drumLowPassPole = 0, feed = 0, feedPrevious = 0;
  double dryL = 0, dryR = 0;
};

} // namespace qlx::reference
