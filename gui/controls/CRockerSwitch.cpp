// SPDX-License-Identifier: ISC
#include "gui/controls/CRockerSwitch.h"

namespace qlx::gui {

CRockerSwitch::CRockerSwitch(const CRect& size, CControlListener* listener, std::int32_t tag,
                             CCoord heightOfOneImage, CBitmapRef strip, const CPoint& offset,
                             std::int32_t style)
    : CControl(size, listener, tag, std::move(strip)), IMultiBitmapControl(heightOfOneImage, 3),
      m_style(style) {
  setMin(-1.0F);
  setBackOffset(offset);
}

std::unique_ptr<CView> CRockerSwitch::newCopy() const {
  return std::unique_ptr<CView>(new CRockerSwitch(*this));
}

void CRockerSwitch::draw(CDrawContext& context) {
  const float value = drawnValue();
  const int frame = value < 0.0F ? 0 : (value > 0.0F ? 2 : 1);
  drawBackground(context, {0.0, frame * getHeightOfOneImage()});
  setDirty(false);
}

float CRockerSwitch::sideAt(const CPoint& where) const {
  const CPoint middle = getViewSize().centre();
  const bool first = (m_style & kVertical) != 0 ? where.y < middle.y : where.x < middle.x;
  return first ? -1.0F : 1.0F;
}

CMouseEventResult CRockerSwitch::onMouseDown(const CPoint& where, const CButtonState& buttons) {
  if (!buttons.isLeftButton()) return CMouseEventResult::kNotHandled;
  beginEdit();
  setValue(sideAt(where));
  valueChanged();
  return CMouseEventResult::kHandled;
}

CMouseEventResult CRockerSwitch::onMouseUp(const CPoint& /*where*/,
                                           const CButtonState& /*buttons*/) {
  setValue(0.0F);
  valueChanged();
  endEdit();
  return CMouseEventResult::kHandled;
}

bool CRockerSwitch::onKeyAction(KeyAction action, const CButtonState& /*modifiers*/) {
  const CRect& place = getViewSize();
  // What steps down is above.
  const bool second = ((m_style & kVertical) != 0) == (action == KeyAction::kStepDown);
  if (action != KeyAction::kStepDown && action != KeyAction::kStepUp) return false;
  pressAt(second ? CPoint{place.right - 1.0, place.bottom - 1.0} : place.topLeft());
  return true;
}

} // namespace qlx::gui
