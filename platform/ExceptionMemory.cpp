// SPDX-License-Identifier: ISC
// For libraries that have the C++ library linked in. It takes 72 kB when it is loaded, for
// exceptions that are thrown when memory is short, and does not give them back: a host that unloads
// the plug-in would lose them each time.

// libstdc++'s __gnu_cxx::__freeres(), which none of its headers declares.
extern "C" void freeExceptionMemory() asm("_ZN9__gnu_cxx9__freeresEv");

namespace {

// 101 is the last of the destructors that a program may order: everything else is gone by then.
[[gnu::destructor(101)]] void releaseExceptionMemory() { freeExceptionMemory(); }

} // namespace
