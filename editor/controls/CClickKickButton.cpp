// SPDX-License-Identifier: ISC
#include "editor/controls/CClickKickButton.h"

namespace qlx::editor {

using gui::CMouseEventResult;

void CClickKickButton::tellIfChanged() {
  if (!isDirty()) return;
  valueChanged();
  invalid();
}

CMouseEventResult CClickKickButton::onMouseDown(const gui::CPoint& where,
                                                const gui::CButtonState& buttons) {
  if (!buttons.isLeftButton()) return CMouseEventResult::kNotHandled;
  beginEdit();
  setValue(1.0F);
  tellIfChanged();
  return onMouseMoved(where, buttons);
}

CMouseEventResult CClickKickButton::onMouseUp(const gui::CPoint& /*where*/,
                                              const gui::CButtonState& /*buttons*/) {
  setValue(0.0F);
  tellIfChanged();
  endEdit();
  return CMouseEventResult::kHandled;
}

} // namespace qlx::editor
