// SPDX-License-Identifier: ISC
#include "gui/controls/COnOffButton.h"

namespace qlx::gui {

COnOffButton::COnOffButton(const CRect& size, CControlListener* listener, std::int32_t tag,
                           CBitmapRef strip)
    : CControl(size, listener, tag, std::move(strip)) {}

std::unique_ptr<CView> COnOffButton::newCopy() const {
  return std::unique_ptr<CView>(new COnOffButton(*this));
}

void COnOffButton::draw(CDrawContext& context) {
  const bool on = drawnValue() >= (getMin() + getMax()) * 0.5F;
  if (getBackground() != nullptr)
    drawBackground(context, {0.0, on ? getBackground()->height() / 2.0 : 0.0});
  setDirty(false);
}

CMouseEventResult COnOffButton::onMouseDown(const CPoint& /*where*/, const CButtonState& buttons) {
  if (!buttons.isLeftButton()) return CMouseEventResult::kNotHandled;
  beginEdit();
  setValue(isOn() ? getMin() : getMax());
  valueChanged();
  endEdit();
  return CMouseEventResult::kHandledDontNeedMoves;
}

bool COnOffButton::onKeyAction(KeyAction action, const CButtonState& /*modifiers*/) {
  const bool turnsOn = action == KeyAction::kStepUp || action == KeyAction::kLast;
  const bool turnsOff = action == KeyAction::kStepDown || action == KeyAction::kFirst;
  if (!turnsOn && !turnsOff && action != KeyAction::kPress) return false;
  if (action == KeyAction::kPress || turnsOn != isOn()) pressAt(getViewSize().centre());
  return true;
}

} // namespace qlx::gui
