// SPDX-License-Identifier: ISC
#pragma once

#include <array>
#include <atomic>
#include <cstdint>

namespace qlx::validate {

enum class Outcome : std::int32_t { Running, Passed, Failed, Skipped };

/// The functions of an effect's record, and its entry.
enum class CallKind : std::int32_t { None, Entry, Dispatcher, Process, ProcessDouble, Set, Get };

/// What a check's process tells the one that waits for it, in memory that both have: also what was
/// going on when it crashed.
struct Progress {
  std::atomic<std::uint64_t> calls{0}; ///< counts calls of the effect: no news is a call that hangs
  std::atomic<CallKind> kind{CallKind::None}; ///< of the call begun last
  std::atomic<std::int32_t> opcode{0};        ///< of Dispatcher
  std::atomic<std::int32_t> index{0};         ///< likewise; frames of Process; parameter of Set
  std::atomic<Outcome> outcome{Outcome::Running};
  std::array<char, 256> trying{}; ///< the check's own words on what it tries
  std::array<char, 512> reason{}; ///< of a failure or a skipped check
};
static_assert(std::atomic<std::uint64_t>::is_always_lock_free);

} // namespace qlx::validate
