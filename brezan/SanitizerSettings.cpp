// SPDX-License-Identifier: ISC
// Part of sanitized builds only.

/// Read by the leak checker when a program starts. Fontconfig keeps a few patterns of the fonts
/// that it has found until the process ends.
// NOLINTNEXTLINE(bugprone-reserved-identifier): the sanitizer looks for this name
extern "C" __attribute__((visibility("default"))) const char* __lsan_default_suppressions();

const char* __lsan_default_suppressions() { return "leak:libfontconfig\n"; }

/// The same for the checker's options: what it passes over is not worth a line on standard error.
// NOLINTNEXTLINE(bugprone-reserved-identifier): the sanitizer looks for this name
extern "C" __attribute__((visibility("default"))) const char* __lsan_default_options();

const char* __lsan_default_options() { return "print_suppressions=0"; }
