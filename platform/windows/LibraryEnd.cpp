// SPDX-License-Identifier: ISC
// What the library does when the host unloads it.
#include "platform/windows/Windows.h"

/// The thread library's own callback for the beginning and end of threads. It is linked statically,
/// so that each library has a copy of its own.
extern "C" PIMAGE_TLS_CALLBACK __xl_f; // NOLINT(bugprone-reserved-identifier): its name there

/// A thread that locks a mutex for the first time gets two handles from the thread library, which
/// closes them when the thread ends. The thread that unloads the library goes on, so for this copy
/// it ends here. With the process (`ending` not null) they go by themselves.
extern "C" BOOL WINAPI DllMain(HINSTANCE library, DWORD reason, LPVOID ending) {
  if (reason == DLL_PROCESS_DETACH && ending == nullptr)
    __xl_f(library, DLL_THREAD_DETACH, nullptr);
  return TRUE;
}
