// SPDX-License-Identifier: ISC
#pragma once

#include "platform/windows/Windows.h"

#include <functional>

namespace qlx::platform {

/// This library, or the program when it is linked into one.
HINSTANCE ownModule();

/// Runs something that blocks on a thread of its own, with COM for a single thread, as the shell
/// wants it. Nobody waits for that thread: the library stays loaded until it has left, and the work
/// shares with its starter only what it is handed. False when there is no thread to be had.
bool startWork(std::function<void()> work);

} // namespace qlx::platform
