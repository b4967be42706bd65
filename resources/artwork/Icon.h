// SPDX-License-Identifier: ISC
#pragma once

#include "resources/artwork/drawing/Lettering.h"
#include "resources/artwork/drawing/Picture.h"

namespace qlx::artwork {

/// Sides in pixels of the icons that desktops look for.
inline constexpr int kIconSides[] = {48, 128, 256};

/// The program's icon, `side` pixels (1 to 512) wide and high: the cabinet's walnut with the horn
/// passing behind its slot, and a knob.
Picture drawnIcon(const Lettering& lettering, int side);

} // namespace qlx::artwork
