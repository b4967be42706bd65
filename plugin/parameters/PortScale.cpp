// SPDX-License-Identifier: ISC
#include "plugin/parameters/PortScale.h"

#include "plugin/parameters/ParameterDisplays.h"
#include "plugin/parameters/ParameterIndex.h"
#include "plugin/parameters/ParameterLaws.h"
#include "plugin/parameters/Placements.h"

#include <algorithm>
#include <array>
#include <bit>
#include <cmath>

namespace qlx::plugin {

namespace {

float decibels(double gain) noexcept {
  if (gain <= 0.0) return kSilenceDb;
  return std::max(kSilenceDb, static_cast<float>(20.0 * std::log10(gain)));
}

template <int last, int first = 0>
float position(float v) noexcept {
  return static_cast<float>(std::clamp(steppedPosition(v, static_cast<float>(last)), 0, last) +
                            first);
}

float enabled(float v) noexcept { return 1.0F - position<1>(v); }
float percent(float v) noexcept { return static_cast<float>(100.0 * v); }
float gain(float v) noexcept { return decibels(gainLaw(v)); }
float tone(float v) noexcept { return static_cast<float>(24.0 * v - 12.0); }
float inputGain(float v) noexcept { return decibels(inputGainLaw(v) * kInputDisplayGain); }
float driveGain(float v) noexcept { return static_cast<float>(40.0 * v - 20.0); }
float roomGain(float v) noexcept { return decibels(roomReturnLaw(v) * kRoomDisplayGain); }
/// From the front of the cabinet, as the display counts.
float distance(float v) noexcept { return static_cast<float>(1.3 * v); }

/// Off, the lowest hundredth of the control, lies below the 20 Hz at which the filter begins.
float highPass(float v) noexcept {
  constexpr double kOffHz = 10.0;
  constexpr double kOffHzPerValue = 900.0;
  const double hz = hornHighPassLaw(v);
  return static_cast<float>(hz == 0.0 ? kOffHz + kOffHzPerValue * v : hz);
}

/// Off is the end of the control, where the law reaches its highest frequency.
float lowPass(float v) noexcept { return v == 1.0F ? 20000.0F : drumLowPassLaw(v); }

constexpr int kLastPlacement = static_cast<int>(kPlacements.size()) - 1;

constexpr PortScale kNoScale{nullptr, PortKind::kLinear};
constexpr PortScale kSwitch{position<1>, PortKind::kToggled};
constexpr PortScale kPercentScale{percent, PortKind::kLinear, PortUnit::kPercent};
constexpr PortScale kGainScale{gain, PortKind::kLinear, PortUnit::kDecibels};
constexpr PortScale kToneScale{tone, PortKind::kLinear, PortUnit::kDecibels};
constexpr PortScale kSpeedScale{rotorSpeedLaw, PortKind::kLinear, PortUnit::kHertz};
constexpr PortScale kTimeScale{timeLaw, PortKind::kLogarithmic, PortUnit::kSeconds};
constexpr PortScale kDistanceScale{distance, PortKind::kLinear, PortUnit::kMetres};

constexpr std::array<PortScale, kNumHostParameters> kScales = {{
    {enabled, PortKind::kToggled},                        // Bypass
    {position<1>, PortKind::kChoice},                     // CPUmode
    kPercentScale,                                        // Lever
    kSwitch,                                              // Speed
    kSwitch,                                              // Stop
    kGainScale,                                           // Mech
    kToneScale,                                           // Bottom
    kToneScale,                                           // LoMid
    kToneScale,                                           // Presence
    kToneScale,                                           // Top
    {position<kLastPlacement>, PortKind::kChoice},        // Setup
    {inputGain, PortKind::kLinear, PortUnit::kDecibels},  // Input
    {position<2>, PortKind::kChoice},                     // Type
    {driveGain, PortKind::kLinear, PortUnit::kDecibels},  // Drive
    {position<4, 1>, PortKind::kChoice},                  // Size
    kPercentScale,                                        // Color
    {roomGain, PortKind::kLinear, PortUnit::kDecibels},   // Amount
    kSpeedScale,                                          // HSlowSpd
    kSpeedScale,                                          // HFastSpd
    kTimeScale,                                           // HAccel
    kTimeScale,                                           // HDecel
    kDistanceScale,                                       // HDistance
    {highPass, PortKind::kLogarithmic, PortUnit::kHertz}, // HHPF
    kGainScale,                                           // HGain
    kSpeedScale,                                          // DSlowSpd
    kSpeedScale,                                          // DFastSpd
    kTimeScale,                                           // DAccel
    kTimeScale,                                           // DDecel
    kDistanceScale,                                       // DDistance
    {lowPass, PortKind::kLogarithmic, PortUnit::kHertz},  // DLPF
    kGainScale,                                           // DGain
    kNoScale,
    kNoScale,
    kNoScale,
    kNoScale,                          // reserved
    {position<17>, PortKind::kChoice}, // MIDIchl
}};

/// The last float in 0..1 that a predicate holds for, which holds up to some place, best near
/// `near`; floats that are not negative stand in the order of their bits. 0 when it holds nowhere.
template <typename Holds>
float lastWhere(Holds holds, float near) noexcept {
  constexpr auto kTop = std::bit_cast<std::uint32_t>(1.0F);
  const auto holdsAt = [&](std::uint32_t bits) { return holds(std::bit_cast<float>(bits)); };
  auto low = std::bit_cast<std::uint32_t>(near); // holds, in the end
  std::uint32_t high = low;                      // above it nothing does
  std::uint32_t step = 1;
  if (holdsAt(low)) {
    for (; high < kTop; step *= 4) {
      const std::uint32_t probe = std::min(kTop, low + step);
      if (!holdsAt(probe)) {
        high = probe - 1;
        break;
      }
      low = high = probe;
    }
  } else {
    do {
      if (low == 0) return 0.0F;
      high = low - 1;
      low -= std::min(low, step);
      step *= 4;
    } while (!holdsAt(low));
  }
  while (low < high) {
    const std::uint32_t middle = low + (high - low + 1) / 2;
    if (holdsAt(middle))
      low = middle;
    else
      high = middle - 1;
  }
  return std::bit_cast<float>(low);
}

/// Some place near the one where `toPort` reaches `port`, by the rule of false position: the end
/// that stays twice counts half. `port` is above that of 0.
float nearPlaceOf(float port, float (*toPort)(float) noexcept) noexcept {
  constexpr int kMostSteps = 12; // for curves that the rule is no good for
  double low = 0.0;
  double high = 1.0;
  double under = static_cast<double>(toPort(0.0F)) - port;
  double over = static_cast<double>(toPort(1.0F)) - port;
  if (over <= 0.0) return 1.0F;
  int side = 0;
  auto v = 0.0F;
  for (int i = 0; i < kMostSteps; ++i) {
    v = static_cast<float>(low - under * (high - low) / (over - under));
    const double miss = static_cast<double>(toPort(v)) - port;
    if (miss == 0.0) break;
    if (miss < 0.0) {
      low = v;
      under = miss;
      if (side < 0) over /= 2.0;
      side = -1;
    } else {
      high = v;
      over = miss;
      if (side > 0) under /= 2.0;
      side = 1;
    }
  }
  return v;
}

float next(float v) noexcept {
  return v >= 1.0F ? 1.0F : std::bit_cast<float>(std::bit_cast<std::uint32_t>(v) + 1U);
}

/// The number in low..high that a person or a preset would have written.
float plainest(float low, float high) noexcept {
  if (low == high) return low;
  const double middle = (static_cast<double>(low) + high) / 2.0;
  const auto rounded = [middle](double steps) {
    return static_cast<float>(std::round(middle * steps) / steps);
  };
  constexpr double kSmallSteps = 70.0;
  float candidate = rounded(kSmallSteps);
  for (double steps = 10.0; candidate < low || candidate > high; steps *= 10.0) {
    if (steps > 1e8) return static_cast<float>(middle);
    candidate = rounded(steps);
  }
  return candidate;
}

} // namespace

float PortScale::minimum() const noexcept { return std::min(toPort(0.0F), toPort(1.0F)); }
float PortScale::maximum() const noexcept { return std::max(toPort(0.0F), toPort(1.0F)); }

float PortScale::toValue(float port) const noexcept {
  const float from = toPort(0.0F);
  const float to = toPort(1.0F);
  if (kind == PortKind::kToggled || kind == PortKind::kChoice) {
    const float share = (std::round(port) - from) / (to - from);
    return std::clamp(share, 0.0F, 1.0F);
  }
  if (!(port > from)) return 0.0F;
  const float near = nearPlaceOf(port, toPort);
  const float high = lastWhere([&](float v) { return toPort(v) <= port; }, near);
  if (toPort(high) == port) {
    if (high == 0.0F) return high;
    const float below = lastWhere([&](float v) { return toPort(v) < port; }, high);
    return plainest(next(below), high);
  }
  const float above = next(high);
  return port - toPort(high) <= toPort(above) - port ? high : above;
}

const PortScale* portScale(std::int32_t index) noexcept {
  if (index < 0 || index >= kNumHostParameters) return nullptr;
  const PortScale& scale = kScales[static_cast<std::size_t>(index)];
  return scale.toPort == nullptr ? nullptr : &scale;
}

} // namespace qlx::plugin
