// SPDX-License-Identifier: ISC
#include "platform/FlushToZero.h"
#include "plugin/RotaryEffect.h"

#include <new>

namespace {

using qlx::sdk::EffectRecord;
using qlx::sdk::HostCallback;

bool hostAnswers(HostCallback host) {
  constexpr auto kVersion = static_cast<std::int32_t>(qlx::sdk::HostOpcode::Version);
  return host != nullptr && host(nullptr, kVersion, 0, 0, nullptr, 0.0F) != 0;
}

/// The effect belongs to the host, which gives it back with Close.
EffectRecord* createEffectInstance(HostCallback host) noexcept {
  try {
    if (!hostAnswers(host)) return nullptr;
    const qlx::platform::FullPrecision fullPrecision;
    auto* const effect = new (std::nothrow) qlx::plugin::RotaryEffect(host);
    return effect == nullptr ? nullptr : effect->getRecord();
  } catch (...) {
    return nullptr;
  }
}

EffectRecord* enter(HostCallback host) noexcept {
  return hostAnswers(host) ? createEffectInstance(host) : nullptr;
}

} // namespace

extern "C" {

[[gnu::visibility("default")]] EffectRecord* VSTPluginMain(HostCallback host) {
  return enter(host);
}

// Older hosts ask for `main`, a name that C++ keeps for itself.
[[gnu::visibility("default")]] EffectRecord* enterAsMain(HostCallback host) asm("main");
EffectRecord* enterAsMain(HostCallback host) { return enter(host); }

} // extern "C"
