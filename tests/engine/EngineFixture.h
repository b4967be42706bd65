// SPDX-License-Identifier: ISC
#pragma once

#include "engine/RotaryEngine.h"

#include <algorithm>
#include <cmath>
#include <numbers>
#include <vector>

namespace qlx::test {
using namespace engine;

/// Recordings that hold the same value everywhere; silent by default.
class PlainRecordings {
 public:
  explicit PlainRecordings(float value = 0.0F) {
    const std::size_t lengths[] = {kHornSlowLength, kHornSlowLength, kHornFastLength,
                                   kDrumSlowLength, kDrumFastLength};
    for (std::size_t i = 0; i < 5; ++i) m_data[i].assign(lengths[i] + kRecordingGuard, value);
    m_data[5].assign(kStartStopLength + 1, value);
  }

  std::vector<float>& startStop() { return m_data[5]; }

  Recordings spans() const {
    return {{m_data[0], m_data[1]}, m_data[2], m_data[3], m_data[4], m_data[5]};
  }

 private:
  std::vector<float> m_data[6];
};

/// A placement that sets both horn microphones' angles, like a player's choice does.
class FixedPlacement : public MicrophonePlacement {
 public:
  RotaryEngine* engine = nullptr;
  double angle1 = -0.31, angle2 = 0.02;
  int calls = 0, leversForgotten = 0;

  void applyPlacement() noexcept override {
    ++calls;
    engine->set(Setting::HornMic1Angle, angle1);
    engine->set(Setting::HornMic2Angle, angle2);
  }
  void forgetLever() noexcept override { ++leversForgotten; }
};

struct StereoSignal {
  std::vector<double> left, right;
};

/// An engine with the settings of a plausible cabinet, its motor noise silent unless recordings are
/// given.
class EngineFixture {
 public:
  explicit EngineFixture(const Recordings& recordings) : engine(recordings, placement) { init(); }
  EngineFixture() : EngineFixture(silence().spans()) {}

  /// Lets the opening mute pass, with silence.
  void settle(double seconds = 0.3) { render(static_cast<int>(seconds * rate), 256, 0.0); }

  void setRate(double hz, CpuMode mode) {
    rate = hz;
    engine.setHostRate(hz);
    engine.setCpuMode(mode);
    engine.request(kPendingFullReset);
  }

  /// Renders `frames` of a sine of amplitude 0.3 at `hz` (0: silence) in blocks.
  StereoSignal render(int frames, int block, double hz) {
    StereoSignal in{std::vector<double>(static_cast<std::size_t>(frames)), {}};
    for (double& x : in.left) {
      x = hz > 0 ? 0.3 * std::sin(m_phase) : 0.0;
      m_phase += 2 * std::numbers::pi * hz / rate;
    }
    in.right = in.left;
    return render(in, block);
  }

  StereoSignal render(const StereoSignal& in, int block) {
    StereoSignal out{std::vector<double>(in.left.size()), std::vector<double>(in.left.size())};
    for (std::size_t done = 0; done < in.left.size();) {
      const auto n = std::min<std::size_t>(static_cast<std::size_t>(block), in.left.size() - done);
      engine.process(in.left.data() + done, in.right.data() + done, out.left.data() + done,
                     out.right.data() + done, static_cast<int>(n));
      done += n;
    }
    return out;
  }

  FixedPlacement placement;
  RotaryEngine engine;
  double rate = 44100.0;

 private:
  static const PlainRecordings& silence() {
    static const PlainRecordings recordings;
    return recordings;
  }

  void init() {
    placement.engine = &engine;
    const std::pair<Setting, double> settings[] = {{Setting::InputGain, 0.708},
                                                   {Setting::DriveGain, 1},
                                                   {Setting::PostDriveGain, 1},
                                                   {Setting::Lever, 1},
                                                   {Setting::HornSlowSpeedHz, 0.67},
                                                   {Setting::HornFastSpeedHz, 6.77},
                                                   {Setting::HornAccelSeconds, 0.62},
                                                   {Setting::HornDecelSeconds, 0.78},
                                                   {Setting::DrumSlowSpeedHz, 0.93},
                                                   {Setting::DrumFastSpeedHz, 6.53},
                                                   {Setting::DrumAccelSeconds, 3.3},
                                                   {Setting::DrumDecelSeconds, 4.6},
                                                   {Setting::HornMic1Distance, 1.0},
                                                   {Setting::HornMic2Distance, 0.9},
                                                   {Setting::HornMic1Pan, 0},
                                                   {Setting::HornMic2Pan, 1},
                                                   {Setting::HornMic2Gain, 1.17},
                                                   {Setting::HornGain, 1},
                                                   {Setting::HornFeedGain, 64},
                                                   {Setting::HornFmRadius, 0.15},
                                                   {Setting::HornAmRadius, 0.2},
                                                   {Setting::HornReflectionCoeff, 0.8},
                                                   {Setting::HornReflectionLpfOctaves, 0.7},
                                                   {Setting::HornRayGain1, 0.5},
                                                   {Setting::HornRayGain2, 0.5},
                                                   {Setting::HornRayGain3, 0.5},
                                                   {Setting::HornRayGain4, 0.5},
                                                   {Setting::HornRayGain5, 0.5},
                                                   {Setting::HornRayGain6, 0.5},
                                                   {Setting::HornRayGain7, 0.56},
                                                   {Setting::HornZAxisGain, 0.7},
                                                   {Setting::HornStaticGain, 0.35},
                                                   {Setting::HornFilterSaturation, 0.005},
                                                   {Setting::DrumMicDistance, 0.35},
                                                   {Setting::DrumMicPan, 0.48},
                                                   {Setting::DrumGain, 1},
                                                   {Setting::DrumFeedGain, 1.4},
                                                   {Setting::DrumFmRadius, 0.2},
                                                   {Setting::DrumAmRadius, 0.2},
                                                   {Setting::DrumReflectionCoeff, 0.8},
                                                   {Setting::DrumRayGain1, 0.5},
                                                   {Setting::DrumRayGain2, 0.5},
                                                   {Setting::DrumRayGain3, 0.5},
                                                   {Setting::DrumRayGain4, 0.5},
                                                   {Setting::DrumLowStaticGain, 0.5},
                                                   {Setting::DrumFilterSaturation, 0.016},
                                                   {Setting::PortToHornGain, 0.07},
                                                   {Setting::PortToDrumGain, 0.25},
                                                   {Setting::DrumToHornGain, 0.7},
                                                   {Setting::HornToDrumGain, 0.47},
                                                   {Setting::RoomSize, 0.6},
                                                   {Setting::NoisePan, 0.8}};
    for (const auto& [setting, value] : settings) engine.set(setting, value);
    engine.performAllPendingWork();
  }

  double m_phase = 0.0;
};

} // namespace qlx::test
