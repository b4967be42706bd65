// SPDX-License-Identifier: ISC
#pragma once

#include "plugin/RotaryEffect.h"
#include "plugin/parameters/ParameterIndex.h"
#include "tests/support/TemporaryFolder.h"
#include "tests/support/ThisSystem.h"

#include <array>
#include <functional>
#include <gtest/gtest.h>
#include <memory>
#include <string>
#include <utility>
#include <vector>

namespace qlx::test {
using namespace plugin;

/// What the host was told, by opcode and index.
struct HostNews {
  sdk::HostOpcode opcode;
  std::int32_t index;
  float value;
  friend bool operator==(const HostNews&, const HostNews&) = default;
};

/// An effect in a home of its own, so that nobody's stored defaults meddle, under a host that takes
/// notes.
class EffectFixture : public ::testing::Test {
 protected:
  EffectFixture() {
    news().clear();
    connected() = true;
    whileUpdating() = nullptr;
    whenAutomated() = nullptr;
    keepSettingsIn(m_home.path());
    effect = std::make_unique<RotaryEffect>(&host);
    effect->getRecord();
  }

  static std::vector<HostNews>& news() {
    static std::vector<HostNews> list;
    return list;
  }
  static bool& connected() {
    static bool answer = true;
    return answer;
  }
  /// What the host does, once, while it is told that names and displays have changed.
  static std::function<void()>& whileUpdating() {
    static std::function<void()> action;
    return action;
  }
  /// Called where the host is told of an automated parameter, on the thread that tells it.
  static void (*&whenAutomated())() {
    static void (*observer)() = nullptr;
    return observer;
  }
  static std::vector<HostNews> automated() {
    std::vector<HostNews> list;
    for (const HostNews& n : news()) {
      if (n.opcode == sdk::HostOpcode::Automate) list.push_back(n);
    }
    return list;
  }

  std::string display(std::int32_t index, float v) {
    effect->setParameter(index, v);
    return text(&RotaryEffect::getParameterDisplay, index);
  }
  std::string label(std::int32_t index) { return text(&RotaryEffect::getParameterLabel, index); }
  std::string name(std::int32_t index) { return text(&RotaryEffect::getParameterName, index); }

  std::unique_ptr<RotaryEffect> effect;

 private:
  static std::intptr_t host(sdk::EffectRecord* /*effect*/, std::int32_t opcode, std::int32_t index,
                            std::intptr_t /*value*/, void* /*ptr*/, float opt) {
    const auto request = static_cast<sdk::HostOpcode>(opcode);
    if (request == sdk::HostOpcode::PinConnected) return connected() ? 0 : 1;
    if (request == sdk::HostOpcode::Automate && whenAutomated() != nullptr) whenAutomated()();
    news().push_back({request, index, opt});
    if (request == sdk::HostOpcode::UpdateDisplay && whileUpdating()) {
      std::exchange(whileUpdating(), nullptr)();
    }
    return 0;
  }

  std::string text(void (RotaryEffect::*operation)(std::int32_t, char*), std::int32_t index) {
    std::array<char, 64> buffer{};
    (effect.get()->*operation)(index, buffer.data());
    return buffer.data();
  }

  TemporaryFolder m_home;
};

} // namespace qlx::test
