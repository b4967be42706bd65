// SPDX-License-Identifier: ISC
#include "lv2/Ports.h"
#include "plugin/FactoryPresets.h"
#include "plugin/ParameterTable.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstdlib>
#include <random>
#include <string>
#include <vector>

namespace qlx::test {
using namespace lv2;
namespace {

using plugin::PortKind;
using plugin::PortScale;

bool isStepped(const PortScale& scale) {
  return scale.kind == PortKind::kToggled || scale.kind == PortKind::kChoice;
}

/// What steps, knobs, the wheel and presets leave behind.
std::vector<float> ordinaryValues(std::int32_t parameter) {
  std::vector<float> values;
  for (int k = 0; k <= 70; ++k) values.push_back(static_cast<float>(k) / 70.0F);
  for (int k = 0; k <= 1000; ++k) values.push_back(static_cast<float>(k / 1000.0));
  for (const auto& preset : plugin::factoryPresets())
    values.push_back(preset.values[static_cast<std::size_t>(parameter)]);
  return values;
}

/// The scale that a display text of a unit is in, against the port's.
float factorOf(const std::string& unit) {
  if (unit == "ms") return 0.001F;
  if (unit == "cm") return 0.01F;
  if (unit == "kHz") return 1000.0F;
  return 1.0F;
}

TEST(PortScale, OrdinaryValuesComeBackAsTheSameFloat) {
  for (const ControlPort& port : kControlPorts) {
    const PortScale& scale = scaleOf(port);
    for (const float v : ordinaryValues(port.parameter)) {
      const float at = scale.toPort(v);
      // So little gain that the port calls it silence comes back as none.
      const bool silent = scale.unit == plugin::PortUnit::kDecibels && at == scale.minimum();
      if (isStepped(scale)) {
        EXPECT_EQ(scale.toPort(scale.toValue(at)), at) << port.symbol << ' ' << v;
      } else {
        EXPECT_EQ(scale.toValue(at), silent ? 0.0F : v) << port.symbol << ' ' << v;
      }
    }
  }
}

TEST(PortScale, WhatIsHeldStaysWhateverItIs) {
  std::mt19937 random(1);
  std::uniform_real_distribution<float> any(0.0F, 1.0F);
  for (const ControlPort& port : kControlPorts) {
    const PortScale& scale = scaleOf(port);
    for (int i = 0; i < 1000; ++i) {
      const float v = any(random);
      EXPECT_EQ(scale.toValue(scale.toPort(v), v), v) << port.symbol;
      const bool silent = scale.toPort(v) == plugin::kSilenceDb;
      if (isStepped(scale) || silent) continue;
      EXPECT_NEAR(scale.toValue(scale.toPort(v)), v, 1e-6F) << port.symbol;
    }
  }
}

TEST(PortScale, EveryPortValueFindsTheNearestParameterValue) {
  for (const ControlPort& port : kControlPorts) {
    const PortScale& scale = scaleOf(port);
    const float width = scale.maximum() - scale.minimum();
    for (int i = -10; i <= 1010; ++i) {
      const float asked = scale.minimum() + width * static_cast<float>(i) / 1000.0F;
      const float v = scale.toValue(asked);
      ASSERT_TRUE(v >= 0.0F && v <= 1.0F) << port.symbol << ' ' << asked;
      const float limited = std::clamp(asked, scale.minimum(), scale.maximum());
      const bool off = port.parameter == plugin::kHHPF && limited < 20.0F;
      const float reached = scale.toPort(v);
      const float tolerance = isStepped(scale) ? 0.5F : off ? 0.6F : 2e-5F + 2e-6F * width;
      EXPECT_NEAR(reached, limited, tolerance) << port.symbol << ' ' << asked;
      if (isStepped(scale)) continue;
      for (const float beside : {std::nextafter(v, 0.0F), std::nextafter(v, 1.0F)})
        EXPECT_LE(std::abs(reached - limited), std::abs(scale.toPort(beside) - limited));
    }
  }
}

TEST(PortScale, ReadsWhatTheDisplayShows) {
  for (const ControlPort& port : kControlPorts) {
    const PortScale& scale = scaleOf(port);
    const plugin::Display& display = plugin::parameterRow(port.parameter)->display;
    for (int k = 0; k <= 70; ++k) {
      const float v = static_cast<float>(k) / 70.0F;
      const std::string text(display.text(v).view());
      char* end = nullptr;
      const float shown = std::strtof(text.c_str(), &end);
      if (text.empty() || *end != '\0') continue; // a word
      const std::size_t dot = text.find('.');
      const double places =
          dot == std::string::npos ? 0.0 : static_cast<double>(text.size() - dot) - 1;
      const double half = 0.5005 * std::pow(0.1, places);
      const float factor = factorOf(display.unit(v));
      EXPECT_NEAR(scale.toPort(v), shown * factor, half * factor) << port.symbol << ' ' << text;
    }
  }
  EXPECT_EQ(plugin::portScale(plugin::kMech)->toPort(0.0F), plugin::kSilenceDb);
  EXPECT_EQ(plugin::portScale(plugin::kBypass)->toPort(1.0F), 0.0F);
}

} // namespace
} // namespace qlx::test
