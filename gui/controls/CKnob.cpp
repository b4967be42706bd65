// SPDX-License-Identifier: ISC
#include "gui/controls/CKnob.h"

#include <algorithm>

namespace qlx::gui {

namespace {

constexpr CCoord kTravel = 200.0;   // pixels for the whole range
constexpr CCoord kFineFactor = 5.0; // as many times more with Shift

} // namespace

CKnob::CKnob(const CRect& size, CControlListener* listener, std::int32_t tag, CBitmapRef background)
    : CControl(size, listener, tag, std::move(background)) {}

CMouseEventResult CKnob::onMouseDown(const CPoint& where, const CButtonState& buttons) {
  if (!buttons.isLeftButton()) return CMouseEventResult::kNotHandled;
  beginEdit();
  if (checkDefaultValue(buttons)) {
    endEdit();
    return CMouseEventResult::kHandledDontNeedMoves;
  }
  m_lastPoint = where;
  m_exact = getValueNormalized();
  return onMouseMoved(where, buttons);
}

CMouseEventResult CKnob::onMouseUp(const CPoint& /*where*/, const CButtonState& /*buttons*/) {
  endEdit();
  return CMouseEventResult::kHandled;
}

CMouseEventResult CKnob::onMouseMoved(const CPoint& where, const CButtonState& buttons) {
  if (!buttons.isLeftButton()) return CMouseEventResult::kHandled;
  const CPoint moved = where - m_lastPoint;
  const CCoord travel = buttons.isShiftSet() ? kTravel * kFineFactor : kTravel;
  m_exact += static_cast<float>((moved.x - moved.y) / travel);
  m_lastPoint = where;
  m_exact = std::clamp(m_exact, 0.0F, 1.0F);
  const float before = getValue();
  setValueNormalized(m_exact);
  if (getValue() != before) valueChanged();
  return CMouseEventResult::kHandled;
}

} // namespace qlx::gui
