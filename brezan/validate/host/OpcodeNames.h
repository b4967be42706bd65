// SPDX-License-Identifier: ISC
#pragma once

#include "brezan/validate/Progress.h"

#include <string>

namespace qlx::validate {

/// A call of an effect in words: "dispatcher, opcode 23 (get chunk), index 1".
std::string callName(CallKind kind, int opcode, int index);

/// The highest number that the interface gives to a request; 0 is the lowest.
inline constexpr int kHighestOpcode = 79;

} // namespace qlx::validate
