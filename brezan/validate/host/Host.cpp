// SPDX-License-Identifier: ISC
#include "brezan/validate/host/Host.h"

#include "brezan/validate/host/RealTimeWatch.h"

#include <algorithm>
#include <string_view>
#include <utility>

namespace qlx::validate {

namespace {

// One process runs one check.
HostFunction& currentHost() {
  static HostFunction host = usualAnswer;
  return host;
}

} // namespace

std::intptr_t usualAnswer(const HostCall& call) {
  const auto copy = [&call](std::string_view words) -> std::intptr_t {
    if (call.ptr == nullptr) return 0;
    *std::copy(words.begin(), words.end(), static_cast<char*>(call.ptr)) = '\0';
    return 1;
  };
  switch (static_cast<sdk::HostOpcode>(call.opcode)) {
  case sdk::HostOpcode::Automate:
  case sdk::HostOpcode::BeginEdit:
  case sdk::HostOpcode::EndEdit:
  case sdk::HostOpcode::UpdateDisplay: return 1;
  case sdk::HostOpcode::Version: return sdk::kVstVersion;
  case sdk::HostOpcode::GetSampleRate: return 44100;
  case sdk::HostOpcode::GetBlockSize: return 512;
  case sdk::HostOpcode::GetCurrentProcessLevel: return 1;
  case sdk::HostOpcode::GetVendorString: return copy("Meridane");
  case sdk::HostOpcode::GetProductString: return copy("brezan validate");
  case sdk::HostOpcode::GetVendorVersion: return 1;
  default: return 0;
  }
}

void setHost(HostFunction host) { currentHost() = std::move(host); }

std::intptr_t hostCallback(sdk::EffectRecord* effect, std::int32_t opcode, std::int32_t index,
                           std::intptr_t value, void* ptr, float opt) {
  const WatchPause pause;
  return currentHost()({effect, opcode, index, value, ptr, opt});
}

} // namespace qlx::validate
