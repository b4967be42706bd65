// SPDX-License-Identifier: ISC
#include "editor/controls/CAnimKnob3.h"

#include "editor/WheelStep.h"

namespace qlx::editor {

using gui::CButtonState;
using gui::CMouseEventResult;
using gui::CPoint;

namespace {

/// A fine drag takes as many times the way.
constexpr float kFineDragFactor = 5.0F;

} // namespace

CAnimKnob3::CAnimKnob3(const gui::CRect& size, gui::CControlListener* listener, std::int32_t tag,
                       std::int32_t frames, gui::CCoord heightOfOneImage, gui::CBitmapRef strip,
                       const CPoint& offset, const Steps& steps)
    : CAnimKnob(size, listener, tag, frames, heightOfOneImage, std::move(strip), offset),
      m_steps(steps) {}

std::int32_t CAnimKnob3::frameFor(float value) const {
  const auto last = static_cast<float>(getNumSubPixmaps() - 1);
  float place = value;
  if (m_steps.count > 1) {
    const auto lastStep = static_cast<float>(m_steps.count - 1);
    const auto step = static_cast<float>(static_cast<std::int32_t>(lastStep * place + 0.5F));
    place = step / lastStep * (m_steps.high - m_steps.low) + m_steps.low;
  }
  return place > 0.0F ? static_cast<std::int32_t>(last * place + 0.5F) : 0;
}

void CAnimKnob3::draw(gui::CDrawContext& context) {
  drawBackground(context, {0.0, frameFor(drawnValue()) * getHeightOfOneImage()});
  setDirty(false);
}

float CAnimKnob3::dragCoefficient(const CButtonState& buttons) const {
  const float pixels = 1000.0F * m_dragFactor * (buttons.isShiftSet() ? kFineDragFactor : 1.0F);
  return (getMax() - getMin()) / pixels;
}

CMouseEventResult CAnimKnob3::onMouseDown(const CPoint& where, const CButtonState& buttons) {
  if (!buttons.isLeftButton() || getListener() == nullptr) return CMouseEventResult::kNotHandled;
  beginEdit();
  if (buttons.isControlSet() || buttons.isDoubleClick()) {
    if (getValue() != getDefaultValue()) {
      setValue(getDefaultValue());
      valueChanged();
    }
    endEdit();
    return CMouseEventResult::kHandledDontNeedMoves;
  }
  m_entryValue = getValue();
  m_coefficient = dragCoefficient(buttons);
  m_downPoint = where;
  return onMouseMoved(where, buttons);
}

CMouseEventResult CAnimKnob3::onMouseMoved(const CPoint& where, const CButtonState& buttons) {
  // Without a drag of ours (a button pressed elsewhere) there is nothing to follow.
  if (!buttons.isLeftButton() || !isEditing()) return CMouseEventResult::kHandled;
  const auto moved = static_cast<float>((where.x - m_downPoint.x) + (m_downPoint.y - where.y));
  // When Shift comes or goes the value stays where it is; only further movement has the new scale.
  const float coefficient = dragCoefficient(buttons);
  m_entryValue += (m_coefficient - coefficient) * moved;
  m_coefficient = coefficient;
  const float before = getValue();
  setValue(m_entryValue + moved * m_coefficient);
  bounceValue();
  if (getValue() != before || getValue() != getOldValue()) {
    valueChanged();
    invalid();
  }
  return CMouseEventResult::kHandled;
}

bool CAnimKnob3::onWheel(const CPoint& /*where*/, float distance, const CButtonState& buttons) {
  turnByWheel(*this, distance, buttons, {m_wheelStep, m_wheelFineFactor});
  return true;
}

bool CAnimKnob3::onKeyAction(gui::KeyAction action, const CButtonState& modifiers) {
  const float fine = m_wheelStep * (modifiers.isShiftSet() ? m_wheelFineFactor : 1.0F);
  const bool stepped = m_steps.count > 1;
  const float step = stepped ? 1.0F / static_cast<float>(m_steps.count - 1) : fine;
  const float page = stepped ? 1.0F : 5.0F;
  switch (action) {
  case gui::KeyAction::kStepDown: changeTo(getValue() - step); break;
  case gui::KeyAction::kStepUp: changeTo(getValue() + step); break;
  case gui::KeyAction::kPageDown: changeTo(getValue() - page * step); break;
  case gui::KeyAction::kPageUp: changeTo(getValue() + page * step); break;
  case gui::KeyAction::kFirst: changeTo(getMin()); break;
  case gui::KeyAction::kLast: changeTo(getMax()); break;
  default: return false;
  }
  return true;
}

} // namespace qlx::editor
