// SPDX-License-Identifier: ISC
#include "presets/panel/CSaveLoadButton.h"

namespace qlx::presets {

using gui::CButtonState;
using gui::CMouseEventResult;

void CSaveLoadButton::draw(gui::CDrawContext& context) {
  const int frame = drawnValue() != 0.0F ? 2 : (m_hover ? 1 : 0);
  drawBackground(context, {0.0, frame * getHeightOfOneImage()});
  setDirty(false);
}

CMouseEventResult CSaveLoadButton::onMouseDown(const gui::CPoint& /*where*/,
                                               const CButtonState& buttons) {
  const bool wanted = buttons.isLeftButton() || buttons.isRightButton();
  if (!wanted || getListener() == nullptr) return CMouseEventResult::kNotHandled;
  const CButtonState held(buttons.bits() & ~static_cast<std::uint32_t>(gui::kDoubleClick));
  setValue(held == CButtonState(gui::kRButton) ? 0.5F : 1.0F);
  valueChanged();
  setValue(0.0F);
  invalid();
  return CMouseEventResult::kHandledDontNeedMoves;
}

CMouseEventResult CSaveLoadButton::onMouseEntered(const gui::CPoint& /*where*/,
                                                  const CButtonState& /*buttons*/) {
  m_hover = true;
  invalid();
  return CMouseEventResult::kHandled;
}

CMouseEventResult CSaveLoadButton::onMouseExited(const gui::CPoint& /*where*/,
                                                 const CButtonState& /*buttons*/) {
  m_hover = false;
  invalid();
  return CMouseEventResult::kHandled;
}

} // namespace qlx::presets
