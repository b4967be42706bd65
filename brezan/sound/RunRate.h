// SPDX-License-Identifier: ISC
#pragma once

namespace qlx::tools {

/// The rate in Hz at which the plug-in works on a sound of rate `hz`. Its cabinet runs at the rate
/// or a half, a quarter or an eighth of it and is tuned for 44.1 to 50 kHz and half of that; so
/// rates of 44.1 to 50, 88.2 to 100 and 176.4 to 192 kHz are left alone. Others, at which it
/// resonates too loud or does not turn, go to their multiple or whole part from 44.1 to 50 kHz, or
/// to 48 kHz where there is none.
double runRateFor(double hz);

} // namespace qlx::tools
