// SPDX-License-Identifier: ISC
#pragma once

#include "plugin/parameters/ParameterLaws.h"

#include <array>

namespace qlx::plugin {

/// One placement of the microphones around the cabinet, as normalised parameter values.
struct Placement {
  const char* word;
  const char* detail;
  float speakersBypassed;
  float mic1Angle;
  float mic2Angle;
  float mic2Distance;
  float mic2Gain;
  float hornGain;
  float mic1Pan;
  float mic2Pan;
  double hornLevel; ///< linear make-up gain of the horn
};

// clang-format off
inline constexpr std::array<Placement, 6> kPlacements = {{
    {"Amp", "Only", 1.0F, 0.0F, 0.5F, 0.5F, 0.5F, 0.5F, 0.0F, 1.0F, 1.0},
    {"Front", "Side", 0.0F, 0.19F, 0.52F, 0.2575F, 0.55F, 0.5F, 0.0F, 1.0F, 1.0},
    {"Front", "Diagonal", 0.0F, 0.35F, 0.64F, 0.3275F, 0.5F, 0.5F, 0.0F, 1.0F, 1.25892541179},
    {"Front", "Rear", 0.0F, 0.02F, 0.52F, 0.74F, 0.5F, 0.5F, 0.0F, 1.0F, 1.25892541179},
    {"Opposite", "Diagonal", 0.0F, 0.18F, 0.71F, 0.5F, 0.5F, 0.5F, 0.0F, 1.0F, 1.0},
    {"Mono", "", 0.0F, 0.5F, 0.71F, 0.5F, 0.0F, 0.5F, 0.5F, 0.5F, 1.99526231497},
}};
// clang-format on

/// Share of a horn microphone's own motor noise in its channel, in every placement.
inline constexpr double kPlacementNoisePan = 0.8;

/// The position of the Setup control: an index of kPlacements when v lies in 0..1.
inline int placementPosition(float v) noexcept { return steppedPosition(v, 5.0F); }

} // namespace qlx::plugin
