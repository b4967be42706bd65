// SPDX-License-Identifier: ISC
#include "plugin/parameters/ParameterFormatter.h"

#include "plugin/parameters/ParameterLaws.h"
#include "plugin/parameters/Placements.h"

#include <array>
#include <cmath>

namespace qlx::plugin {

namespace {

/// From the rotor's axis to the front of the cabinet.
constexpr float kFrontMetres = 0.35F;

float milliseconds(float seconds) noexcept { return seconds * 1000.0F; }

constexpr std::array kAmpTypes = {"Thru", "Tube", "Solid"};

template <typename Words>
auto wordAt(const Words& words, int position) noexcept {
  const bool known = position >= 0 && position < static_cast<int>(words.size());
  return known ? &words[static_cast<std::size_t>(position)] : nullptr;
}

} // namespace

ShortText ParameterFormatter::decibels(double gain) const noexcept {
  if (gain <= 0.0) return ShortText("-oo");
  return ShortText::fixed(20.0F * std::log10(static_cast<float>(gain)), 1);
}

ShortText ParameterFormatter::frequency(double hz) const noexcept {
  return hz < 1000.0 ? ShortText::fixed(hz, 0) : ShortText::fixed(hz * 0.001, 2);
}

const char* ParameterFormatter::frequencyUnit(double hz) const noexcept {
  return hz < 1000.0 ? "Hz" : "kHz";
}

ShortText ParameterFormatter::filterFrequency(double hz) const noexcept {
  return hz == 0.0 ? ShortText("Off") : frequency(hz);
}

const char* ParameterFormatter::filterFrequencyUnit(double hz) const noexcept {
  return hz == 0.0 ? " " : frequencyUnit(hz);
}

ShortText ParameterFormatter::time(float seconds) const noexcept {
  const float ms = milliseconds(seconds);
  return ms < 1000.0F ? ShortText::fixed(ms, 0) : ShortText::fixed(ms * 0.001, 1);
}

const char* ParameterFormatter::timeUnit(float seconds) const noexcept {
  return milliseconds(seconds) < 1000.0F ? "ms" : "s";
}

ShortText ParameterFormatter::distance(float metres) const noexcept {
  const float x = metres - kFrontMetres;
  if (x < 0.0F) return ShortText::fixed(0.0, 0);
  return x < 1.0F ? ShortText::fixed(x * 100.0F, 0) : ShortText::fixed(x, 2);
}

const char* ParameterFormatter::distanceUnit(float metres) const noexcept {
  return metres - kFrontMetres < 1.0F ? "cm" : "m";
}

ShortText ParameterFormatter::rotorSpeed(float hz) const noexcept {
  return ShortText::fixed(hz, 2);
}

double ParameterFormatter::hornHighPassHz(float v) const noexcept { return hornHighPassLaw(v); }

double ParameterFormatter::drumLowPassHz(float v) const noexcept { return drumLowPassLaw(v); }

const char* ParameterFormatter::micSetup(float v) const noexcept {
  const Placement* placement = wordAt(kPlacements, placementPosition(v));
  return placement == nullptr ? "" : placement->word;
}

const char* ParameterFormatter::micSetupDetail(float v) const noexcept {
  const Placement* placement = wordAt(kPlacements, placementPosition(v));
  return placement == nullptr ? "" : placement->detail;
}

const char* ParameterFormatter::ampType(float v) const noexcept {
  const auto* type = wordAt(kAmpTypes, steppedPosition(v, 2.0F));
  return type == nullptr ? "" : *type;
}

int ParameterFormatter::roomSize(float v) const noexcept { return steppedPosition(v, 4.0F) + 1; }

} // namespace qlx::plugin
