// SPDX-License-Identifier: ISC
// For libraries that have the C++ library linked in. It takes 72 kB when it is loaded, for
// exceptions that are thrown when memory is short, and does not give them back: a host that unloads
// the plug-in would lose them each time.

namespace __gnu_cxx {
void __freeres(); // of libstdc++, declared in none of its headers
}

namespace {

// 101 is the last of the destructors that a program may order: everything else is gone by then.
[[gnu::destructor(101)]] void releaseExceptionMemory() { __gnu_cxx::__freeres(); }

} // namespace
