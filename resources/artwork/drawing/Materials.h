// SPDX-License-Identifier: ISC
#pragma once

#include "resources/artwork/drawing/Canvas.h"
#include "resources/artwork/drawing/Studio.h"

/// Surfaces with grain, as functions of the place in layout pixels.
namespace qlx::artwork {

/// Oiled walnut. `along` and `across` run with and across the grain; `piece` tells boards apart.
Colour walnut(double along, double across, std::uint32_t piece);

/// Black crackle-painted steel, lit a little stronger towards the window's upper left.
Colour crackle(Point p);

/// Brass brushed along x, lit by the falling light of `shine` 0 (shade) to 1 (full light).
Colour brushedBrass(Point p, double shine);

/// The bodies of the solid parts.
Material bakelite();
Material chrome();
Material brass();
Material ivory();

} // namespace qlx::artwork
