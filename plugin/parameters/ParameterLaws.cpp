// SPDX-License-Identifier: ISC
#include "plugin/parameters/ParameterLaws.h"

#include "midi/MidiLever.h"

#include <algorithm>
#include <cmath>
#include <limits>

namespace qlx::plugin {

namespace {

constexpr double kLargest = std::numeric_limits<float>::max();

/// What overflows stays at the largest single-precision number.
double finite(double x) noexcept { return std::clamp(x, -kLargest, kLargest); }

float single(double x) noexcept { return static_cast<float>(finite(x)); }

} // namespace

int steppedPosition(float v, float scale) noexcept {
  constexpr float kLimit = 1e6F;
  return static_cast<int>(std::clamp(scale * v + 0.5F, -kLimit, kLimit));
}

float gainLaw(float v) noexcept { return single(std::exp(2.185 * v) * 0.5048 - 0.5048); }

float coefLaw(float v) noexcept { return single(std::exp(2.18457 * v) * 0.126794 - 0.126794); }

float radiusLaw(float v) noexcept { return single(std::exp(0.482324 * v) * 0.201667 - 0.0766667); }

float freqLaw(float v) noexcept { return single(std::pow(100.0, v) * 200.0); }

float timeLaw(float v) noexcept { return single(std::pow(100.0, v) * static_cast<double>(0.1F)); }

float toneDb(float v) noexcept { return single(24.0F * v - 12.0F); }

double hornHighPassLaw(float v) noexcept {
  if (v < 0.01) return 0.0;
  return finite(std::exp(2.966 * v) * 53.33 - 34.94);
}

float drumLowPassLaw(float v) noexcept {
  if (v == 1.0F) return 0.0F;
  return single(std::pow(100.0F, v) * 200.0F);
}

double driveLaw(float v) noexcept { return finite(std::pow(10.0, (40.0 * v - 20.0) * 0.05)); }

float rotorSpeedLaw(float v) noexcept { return single(10.0 * v); }

float micDistanceLaw(float v) noexcept { return single(1.3 * v + 0.35); }

double micAngleLaw(float v) noexcept { return finite(v - 0.5); }

double mic2OffsetLaw(float v) noexcept { return finite(0.4 * v - 0.2); }

double decayExponentLaw(float v) noexcept { return finite(std::exp(1.38629 * v) * 0.5); }

double hornAttenuationDistanceLaw(float v) noexcept {
  return finite(static_cast<double>(std::pow(100.0F, v)) * 0.1);
}

float drumAttenuationDistanceLaw(float v) noexcept { return single(3.0 * v); }

float saturationLaw(float v) noexcept { return single(std::pow(400.0F, v) * 0.0008F); }

double roomSizeLaw(float v) noexcept { return finite(std::exp(3.58352 * v) * 0.1 + 0.4); }

double virtualRoomSizeLaw(float v) noexcept { return finite(std::exp(2.77259 * v) * 0.25); }

double leftRightDelayLaw(float v) noexcept { return finite(std::exp(2.30259 * v) * 0.15); }

float drumSplitterLaw(float v) noexcept { return single(std::pow(10.0, v) * 50.0); }

double inputGainLaw(float v) noexcept { return gainLaw(v) * 0.70794578438; }

double hornFeedLaw(float v) noexcept { return gainLaw(v) * 64.0; }

double roomReturnLaw(float v) noexcept { return gainLaw(v) * 0.0316227766; }

float noiseSendLaw(float v) noexcept { return single(gainLaw(v / 2.0F) * 0.25); }

int openBackModeLaw(float v) noexcept { return static_cast<int>(std::clamp(2.0F * v, 0.0F, 2.0F)); }

double flipLaw(float v) noexcept { return v <= 0.5F ? 1.0 : -1.0; }

int midiChannelLaw(float v) noexcept {
  return std::clamp(steppedPosition(v, 17.0F), midi::MidiLever::kNoChannel,
                    midi::MidiLever::kEveryChannel);
}

float ampClipOfDistance(float hornDistance) noexcept {
  return (std::sqrt(std::max(hornDistance, 0.0F)) - 0.5F) * 0.2F + 0.795879F;
}

} // namespace qlx::plugin
