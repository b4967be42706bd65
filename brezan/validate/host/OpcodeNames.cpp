// SPDX-License-Identifier: ISC
#include "brezan/validate/host/OpcodeNames.h"

#include <array>

namespace qlx::validate {

namespace {

// By number; null for obsolete and offline requests.
constexpr std::array<const char*, kHighestOpcode + 1> kNames = {"open",
                                                                "close",
                                                                "set program",
                                                                "get program",
                                                                "set program name",
                                                                "get program name",
                                                                "parameter label",
                                                                "parameter display",
                                                                "parameter name",
                                                                nullptr,
                                                                "set sample rate",
                                                                "set block size",
                                                                "mains changed",
                                                                "edit get rectangle",
                                                                "edit open",
                                                                "edit close",
                                                                nullptr,
                                                                nullptr,
                                                                nullptr,
                                                                "edit idle",
                                                                nullptr,
                                                                nullptr,
                                                                "identify",
                                                                "get chunk",
                                                                "set chunk",
                                                                "process events",
                                                                "can be automated",
                                                                "string to parameter",
                                                                nullptr,
                                                                "program name indexed",
                                                                nullptr,
                                                                nullptr,
                                                                nullptr,
                                                                "input properties",
                                                                "output properties",
                                                                "category",
                                                                nullptr,
                                                                nullptr,
                                                                nullptr,
                                                                nullptr,
                                                                nullptr,
                                                                nullptr,
                                                                "set speaker arrangement",
                                                                nullptr,
                                                                "set bypass",
                                                                "effect name",
                                                                nullptr,
                                                                "vendor string",
                                                                "product string",
                                                                "vendor version",
                                                                "vendor specific",
                                                                "can do",
                                                                "tail size",
                                                                nullptr,
                                                                nullptr,
                                                                nullptr,
                                                                "parameter properties",
                                                                nullptr,
                                                                "VST version",
                                                                "key down",
                                                                "key up",
                                                                "knob mode",
                                                                "MIDI program name",
                                                                "current MIDI program",
                                                                "MIDI program category",
                                                                "MIDI programs changed",
                                                                "MIDI key name",
                                                                "begin set program",
                                                                "end set program",
                                                                "get speaker arrangement",
                                                                "next shell plug-in",
                                                                "start process",
                                                                "stop process",
                                                                "total samples",
                                                                "pan law",
                                                                "begin load bank",
                                                                "begin load program",
                                                                "process precision",
                                                                "MIDI input channels",
                                                                "MIDI output channels"};

} // namespace

std::string callName(CallKind kind, int opcode, int index) {
  const std::string number = std::to_string(index);
  switch (kind) {
  case CallKind::None: return "the check itself";
  case CallKind::Entry: return "the library's entry";
  case CallKind::Process: return "processReplacing of " + number + " frames";
  case CallKind::ProcessDouble: return "processDoubleReplacing of " + number + " frames";
  case CallKind::Set: return "setParameter, index " + number;
  case CallKind::Get: return "getParameter, index " + number;
  case CallKind::Dispatcher: break;
  }
  const char* name =
      opcode >= 0 && opcode <= kHighestOpcode ? kNames[static_cast<std::size_t>(opcode)] : nullptr;
  return "dispatcher, opcode " + std::to_string(opcode) +
         (name == nullptr ? "" : " (" + std::string(name) + ')') + ", index " + number;
}

} // namespace qlx::validate
