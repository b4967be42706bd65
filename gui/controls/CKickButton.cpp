// SPDX-License-Identifier: ISC
#include "gui/controls/CKickButton.h"

namespace qlx::gui {

CKickButton::CKickButton(const CRect& size, CControlListener* listener, std::int32_t tag,
                         CCoord heightOfOneImage, CBitmapRef strip, const CPoint& offset)
    : CControl(size, listener, tag, std::move(strip)), IMultiBitmapControl(heightOfOneImage, 2) {
  setBackOffset(offset);
}

std::unique_ptr<CView> CKickButton::newCopy() const {
  return std::unique_ptr<CView>(new CKickButton(*this));
}

void CKickButton::draw(CDrawContext& context) {
  drawBackground(context, {0.0, drawnValue() != 0.0F ? getHeightOfOneImage() : 0.0});
  setDirty(false);
}

CMouseEventResult CKickButton::onMouseDown(const CPoint& where, const CButtonState& buttons) {
  if (!buttons.isLeftButton()) return CMouseEventResult::kNotHandled;
  beginEdit();
  setValue(getMax());
  valueChanged();
  return onMouseMoved(where, buttons);
}

CMouseEventResult CKickButton::onMouseUp(const CPoint& /*where*/, const CButtonState& /*buttons*/) {
  const bool inside = getValue() != getMin();
  setValue(getMin());
  if (inside) valueChanged();
  endEdit();
  return CMouseEventResult::kHandled;
}

bool CKickButton::onKeyAction(KeyAction action, const CButtonState& modifiers) {
  if (action != KeyAction::kPress) return false;
  // Where the pointer needs two presses, one key is enough.
  pressAt(getViewSize().centre(), kDoubleClick | (modifiers.isControlSet() ? kControl : 0U));
  return true;
}

CMouseEventResult CKickButton::onMouseMoved(const CPoint& where, const CButtonState& buttons) {
  // A drag that began elsewhere isn't ours.
  if (!buttons.isLeftButton() || !isEditing()) return CMouseEventResult::kNotHandled;
  setValue(getViewSize().contains(where) ? getMax() : getMin());
  if (isDirty()) invalid();
  return CMouseEventResult::kHandled;
}

} // namespace qlx::gui
