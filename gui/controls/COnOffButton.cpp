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
  setValue(getValue() >= (getMin() + getMax()) * 0.5F ? getMin() : getMax());
  valueChanged();
  endEdit();
  return CMouseEventResult::kHandledDontNeedMoves;
}

} // namespace qlx::gui
