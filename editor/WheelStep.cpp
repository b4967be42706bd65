// SPDX-License-Identifier: ISC
#include "editor/WheelStep.h"

namespace qlx::editor {

namespace {

constexpr float kSmoothDistance = 0.1F;

float notchesOf(float distance) {
  if (distance > kSmoothDistance) return 1.0F;
  return distance < -kSmoothDistance ? -1.0F : distance;
}

} // namespace

void turnByWheel(gui::CControl& control, float distance, const gui::CButtonState& buttons,
                 const WheelStep& wheel) {
  const float before = control.getValue();
  const float step = buttons.isShiftSet() ? wheel.fineFactor * wheel.step : wheel.step;
  control.setValue(before + step * notchesOf(distance));
  control.bounceValue();
  if (control.getValue() == before || control.getListener() == nullptr) return;
  control.invalid();
  control.beginEdit();
  control.valueChanged();
  control.endEdit();
}

} // namespace qlx::editor
