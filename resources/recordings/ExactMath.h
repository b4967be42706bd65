// SPDX-License-Identifier: ISC
#pragma once

namespace qlx::recordings {

// The recordings come out the same to the last bit on every machine, so nothing here asks the C
// library for a function whose last bit is its own choice: only +, -, x, /, square root, floor and
// scaling by powers of two, which the arithmetic standard defines exactly.

/// sin(2 pi t) for |t| < 2^40, within 1e-14.
double sineOfTurns(double turns);

/// cos(2 pi t) for |t| < 2^40, within 1e-14.
double cosineOfTurns(double turns);

/// e^x for |x| < 700, within 1e-14 of its value.
double exponential(double x);

/// The linear gain of a level in dB.
double gainOfDb(double db);

} // namespace qlx::recordings
