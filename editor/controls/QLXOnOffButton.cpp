// SPDX-License-Identifier: ISC
#include "editor/controls/QLXOnOffButton.h"

namespace qlx::editor {

using gui::CMouseEventResult;

void QLXOnOffButton::draw(gui::CDrawContext& context) {
  if (getBackground() != nullptr) {
    const bool on = drawnValue() >= 0.5F;
    drawBackground(context, {0.0, on ? getBackground()->height() / 2.0 : 0.0});
  }
  setDirty(false);
}

CMouseEventResult QLXOnOffButton::onMouseDown(const gui::CPoint& /*where*/,
                                              const gui::CButtonState& buttons) {
  if (!buttons.isLeftButton()) return CMouseEventResult::kNotHandled;
  beginEdit();
  valueChanged();
  const bool on = static_cast<std::int32_t>(getValue() + 0.5F) != 0;
  setValue(on ? 0.0F : 1.0F);
  valueChanged();
  endEdit();
  invalid();
  return CMouseEventResult::kHandledDontNeedMoves;
}

} // namespace qlx::editor
