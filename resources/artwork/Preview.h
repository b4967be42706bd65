// SPDX-License-Identifier: ISC
#pragma once

#include "resources/artwork/drawing/Lettering.h"
#include "resources/artwork/drawing/Picture.h"

namespace qlx::artwork {

/// How the controls of a previewed window stand, all 0..1.
struct Pose {
  double knobs = 0.5;
  double lever = 1.0;
  double rotors = 0.85;
  bool lit = false; // lamps on, switches pressed
};

/// The window as the editor would show it, at the layout's size.
Picture previewed(const Lettering& lettering, const Pose& pose);

/// Every frame of every control on a panel, in rows, at `scale` times the layout's size.
Picture contactSheet(const Lettering& lettering, int scale);

} // namespace qlx::artwork
