// SPDX-License-Identifier: ISC
#include "gui/controls/CKnob.h"

#include "gui/CFrame.h"

#include <algorithm>
#include <cmath>
#include <numbers>

namespace qlx::gui {

namespace {

constexpr float kTurns = 0.75F;         // the knob's travel: -135 to +135 degrees
constexpr CCoord kLinearTravel = 200.0; // pixels for the whole range
constexpr CCoord kFineFactor = 5.0;     // as many times more with Shift

// Clockwise from straight down, in turns 0..1.
float angleAt(const CPoint& centre, const CPoint& where) {
  const double angle =
      std::atan2(centre.x - where.x, where.y - centre.y) / (2.0 * std::numbers::pi);
  return static_cast<float>(angle < 0.0 ? angle + 1.0 : angle);
}

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
  m_lastAngle = angleAt(getViewSize().centre(), where);
  m_exact = getValueNormalized();
  return onMouseMoved(where, buttons);
}

CMouseEventResult CKnob::onMouseUp(const CPoint& /*where*/, const CButtonState& /*buttons*/) {
  endEdit();
  return CMouseEventResult::kHandled;
}

CMouseEventResult CKnob::onMouseMoved(const CPoint& where, const CButtonState& buttons) {
  if (!buttons.isLeftButton()) return CMouseEventResult::kHandled;
  const CKnobMode mode = getFrame() == nullptr ? kLinearMode : getFrame()->getKnobMode();
  const float angle = angleAt(getViewSize().centre(), where);
  if (mode == kCircularMode) {
    // The gap of a quarter turn at the bottom belongs to the nearer end.
    m_exact = (angle - (1.0F - kTurns) * 0.5F) / kTurns;
  } else if (mode == kRelativCircularMode) {
    const float turned = angle - m_lastAngle;
    m_exact += (turned - std::round(turned)) / kTurns;
  } else {
    const CPoint moved = where - m_lastPoint;
    const CCoord travel = buttons.isShiftSet() ? kLinearTravel * kFineFactor : kLinearTravel;
    m_exact += static_cast<float>((moved.x - moved.y) / travel);
  }
  m_lastPoint = where;
  m_lastAngle = angle;
  m_exact = std::clamp(m_exact, 0.0F, 1.0F);
  const float before = getValue();
  setValueNormalized(m_exact);
  if (getValue() != before) valueChanged();
  return CMouseEventResult::kHandled;
}

} // namespace qlx::gui
