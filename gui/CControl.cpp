// SPDX-License-Identifier: ISC
#include "gui/CControl.h"

#include "gui/drawing/CDrawContext.h"

#include <algorithm>
#include <cmath>

namespace qlx::gui {

CControl::CControl(const CRect& size, CControlListener* listener, std::int32_t tag,
                   CBitmapRef background)
    : CView(size), m_tag(tag), m_listener(listener), m_background(std::move(background)) {}

CControl::CControl(const CControl& other)
    : CView(other), m_value(other.getValue()), m_minimum(other.m_minimum),
      m_maximum(other.m_maximum), m_defaultValue(other.m_defaultValue), m_tag(other.m_tag),
      m_name(other.m_name), m_valueText(other.m_valueText), m_listener(other.m_listener),
      m_background(other.m_background), m_backOffset(other.m_backOffset) {}

float CControl::normalized(float value) const {
  const float range = m_maximum - m_minimum;
  return range == 0.0F ? 0.0F : (value - m_minimum) / range;
}

void CControl::setValueNormalized(float normalized) {
  setValue(m_minimum + std::clamp(normalized, 0.0F, 1.0F) * (m_maximum - m_minimum));
}

void CControl::bounceValue() { setValue(std::min(std::max(getValue(), m_minimum), m_maximum)); }

void CControl::setBackground(CBitmapRef background) {
  m_background = std::move(background);
  setDirty();
}

void CControl::setBackOffset(const CPoint& offset) {
  m_backOffset = offset;
  setDirty();
}

void CControl::valueChanged() {
  if (m_listener != nullptr) m_listener->valueChanged(*this);
}

void CControl::beginEdit() {
  if (m_editing++ == 0 && m_listener != nullptr) m_listener->controlBeginEdit(*this);
}

void CControl::endEdit() {
  if (m_editing == 0) return;
  if (--m_editing == 0 && m_listener != nullptr) m_listener->controlEndEdit(*this);
}

void CControl::changeTo(float value) {
  const float before = getValue();
  setValue(value);
  bounceValue();
  if (getValue() == before) return;
  invalid();
  beginEdit();
  valueChanged();
  endEdit();
}

std::string CControl::textOfValue() const {
  return std::to_string(std::lround(getValueNormalized() * 100.0F)) + " %";
}

void CControl::pressAt(const CPoint& where, std::uint32_t moreButtons) {
  if (onMouseDown(where, CButtonState(kLButton | moreButtons)) == CMouseEventResult::kHandled)
    onMouseUp(where, CButtonState(kLButton));
}

bool CControl::checkDefaultValue(const CButtonState& buttons) {
  if (buttons != CButtonState(kLButton | kControl)) return false;
  if (getValue() != m_defaultValue) {
    setValue(m_defaultValue);
    valueChanged();
    setDirty();
  }
  return true;
}

bool CControl::isDirty() const { return CView::isDirty() || getValue() != getOldValue(); }

void CControl::setDirty(bool dirty) {
  CView::setDirty(dirty);
  if (!dirty && !isRendering()) m_shownValue.store(getValue(), std::memory_order_relaxed);
}

void CControl::latch(Drawing drawing) {
  CView::latch(drawing);
  // A part has to go with the rest of the control that stays on the screen.
  m_drawnValue = drawing == Drawing::kPart ? getOldValue() : getValue();
  if (drawing == Drawing::kWhole) m_shownValue.store(m_drawnValue, std::memory_order_relaxed);
}

void CControl::collectDirty(DirtyRegion& region) {
  // Read once: another thread may set the next one meanwhile.
  const float value = getValue();
  if (!CView::isDirty() && value != getOldValue() && looksAlike(value, getOldValue()))
    m_shownValue.store(value, std::memory_order_relaxed);
  CView::collectDirty(region);
}

void CControl::removed() {
  // The window goes in the middle of a gesture: the host must not be left with an open one.
  while (isEditing()) endEdit();
}

void CControl::drawBackground(CDrawContext& context, const CPoint& extra) const {
  if (m_background != nullptr)
    context.drawBitmap(*m_background, getViewSize(), m_backOffset + extra);
}

} // namespace qlx::gui
