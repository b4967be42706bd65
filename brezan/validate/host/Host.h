// SPDX-License-Identifier: ISC
#pragma once

#include "sdk/VstTypes.h"

#include <cstdint>
#include <functional>

namespace qlx::validate {

/// One call of the host by an effect. `effect` is null while its entry runs.
struct HostCall {
  sdk::EffectRecord* effect;
  std::int32_t opcode;
  std::int32_t index;
  std::int64_t value;
  void* ptr;
  float opt;

  bool is(sdk::HostOpcode what) const { return opcode == static_cast<std::int32_t>(what); }
};

/// Answers a call. Comes on every thread that the effect calls on.
using HostFunction = std::function<std::intptr_t(const HostCall&)>;

/// As most hosts answer: version 2400, 44.1 kHz, blocks of 512, a vendor and a product, 0 to the
/// rest.
std::intptr_t usualAnswer(const HostCall& call);

/// Who answers the effects of this process from now on, in place of usualAnswer. Not while an
/// effect's function runs on another thread.
void setHost(HostFunction host);

/// What an effect's entry is given: asks the function set last. The allocations and system calls of
/// the answers are not the effect's.
std::intptr_t hostCallback(sdk::EffectRecord* effect, std::int32_t opcode, std::int32_t index,
                           std::intptr_t value, void* ptr, float opt);

} // namespace qlx::validate
