// SPDX-License-Identifier: ISC
#pragma once

#include "gui/CButtonState.h"
#include "gui/CControl.h"

namespace qlx::editor {

/// How far the wheel turns a control.
struct WheelStep {
  float step = 0.0F;       ///< change of value per notch
  float fineFactor = 0.0F; ///< of the step, while Shift is held
};

/// One turn of the wheel as a whole gesture: more than a tenth of a notch counts as a notch,
/// smaller distances (smooth wheels) as they are.
void turnByWheel(gui::CControl& control, float distance, const gui::CButtonState& buttons,
                 const WheelStep& wheel);

} // namespace qlx::editor
