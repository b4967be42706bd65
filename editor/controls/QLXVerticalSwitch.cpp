// SPDX-License-Identifier: ISC
#include "editor/controls/QLXVerticalSwitch.h"

#include <algorithm>
#include <cmath>

namespace qlx::editor {

using gui::CButtonState;
using gui::CMouseEventResult;
using gui::CPoint;

namespace {

// The arm swings 40 degrees to either side; what the panel shows of it is the sine.
constexpr double kSineOfSwing = 0.642788; // sin 40 degrees
constexpr double kTwiceSineOfSwing = 1.28558;
constexpr double kTurnsOfSwing = 0.716197;         // 1 / (80 degrees in radians)
constexpr gui::CRect kPlate{6.0, 16.0, 6.0, 12.0}; // to its rim, from each edge

std::int32_t framesIn(const gui::CBitmapRef& strip, gui::CCoord height) {
  return strip == nullptr ? 1 : static_cast<std::int32_t>(strip->height() / height);
}

} // namespace

QLXVerticalSwitch::QLXVerticalSwitch(const gui::CRect& size, gui::CControlListener* listener,
                                     std::int32_t tag, const gui::CBitmapRef& strip,
                                     const Travel& travel, const CPoint& offset)
    : CControl(size, listener, tag, strip),
      IMultiBitmapControl(size.height(), framesIn(strip, size.height())), m_travel(travel) {
  setBackOffset(offset);
  setDefaultValue(0.0F);
  setWantsFocus(true);
}

std::unique_ptr<gui::CView> QLXVerticalSwitch::newCopy() const {
  return std::unique_ptr<gui::CView>(new QLXVerticalSwitch(*this));
}

std::int32_t QLXVerticalSwitch::frameFor(float value) const {
  return static_cast<std::int32_t>(lastFrame() * (1.0F - normalized(value)) + 0.5F);
}

void QLXVerticalSwitch::draw(gui::CDrawContext& context) {
  drawBackground(context, {0.0, frameFor(drawnValue()) * getHeightOfOneImage()});
  setDirty(false);
}

gui::CRect QLXVerticalSwitch::getRingPlace() const {
  const gui::CRect& all = getViewSize();
  return {all.left + kPlate.left, all.top + kPlate.top, all.right - kPlate.right,
          all.bottom - kPlate.bottom};
}

/// The value with the arm under the pointer, in steps of a frame.
float QLXVerticalSwitch::valueAt(gui::CCoord y) const {
  const float below =
      std::clamp(static_cast<float>(y - getViewSize().top), m_travel.top, m_travel.bottom);
  const float t = (below - m_travel.top) / (m_travel.bottom - m_travel.top);
  const double angle = std::asin(kSineOfSwing - kTwiceSineOfSwing * static_cast<double>(t));
  const auto place = static_cast<float>(0.5 - kTurnsOfSwing * angle);
  const auto frame = static_cast<std::int32_t>(static_cast<float>(getNumSubPixmaps()) * place);
  const float fromTop = getMin() + range() * (static_cast<float>(frame) / lastFrame());
  return 1.0F - std::clamp(fromTop, getMin(), getMax());
}

CMouseEventResult QLXVerticalSwitch::onMouseDown(const CPoint& where, const CButtonState& buttons) {
  if (!buttons.isLeftButton()) return CMouseEventResult::kNotHandled;
  beginEdit();
  if (checkDefaultValue(buttons)) {
    endEdit();
    return CMouseEventResult::kHandledDontNeedMoves;
  }
  return onMouseMoved(where, buttons);
}

CMouseEventResult QLXVerticalSwitch::onMouseUp(const CPoint& /*where*/,
                                               const CButtonState& /*buttons*/) {
  endEdit();
  return CMouseEventResult::kHandled;
}

CMouseEventResult QLXVerticalSwitch::onMouseMoved(const CPoint& where,
                                                  const CButtonState& buttons) {
  if (!buttons.isLeftButton() || !isEditing()) return CMouseEventResult::kHandled;
  setValue(valueAt(where.y));
  if (isDirty()) {
    valueChanged();
    invalid();
  }
  return CMouseEventResult::kHandled;
}

bool QLXVerticalSwitch::onWheel(const CPoint& /*where*/, float distance,
                                const CButtonState& buttons) {
  turnByWheel(*this, distance, buttons, m_wheel);
  return true;
}

bool QLXVerticalSwitch::onKeyDown(const gui::CKeyCode& key) {
  if (key.modifiers != 0) return false;
  const auto frame =
      static_cast<std::int32_t>(lastFrame() * (getValue() - getMin()) / range() + 0.5F);
  std::int32_t next = frame;
  if (key.virtualKey == gui::VirtualKey::kUp && frame >= 1) --next;
  if (key.virtualKey == gui::VirtualKey::kDown && frame < getNumSubPixmaps() - 1) ++next;
  if (next == frame) return false;
  setValue(getMin() + range() * static_cast<float>(next) / lastFrame());
  invalid();
  beginEdit();
  valueChanged();
  endEdit();
  return true;
}

bool QLXVerticalSwitch::onKeyAction(gui::KeyAction action, const CButtonState& /*modifiers*/) {
  const float step = range() / lastFrame();
  const float page = 8.0F * step;
  switch (action) {
  case gui::KeyAction::kStepUp: changeTo(getValue() - step); break;
  case gui::KeyAction::kStepDown: changeTo(getValue() + step); break;
  case gui::KeyAction::kPageUp: changeTo(getValue() - page); break;
  case gui::KeyAction::kPageDown: changeTo(getValue() + page); break;
  case gui::KeyAction::kFirst: changeTo(getMin()); break;
  case gui::KeyAction::kLast: changeTo(getMax()); break;
  default: return false;
  }
  return true;
}

} // namespace qlx::editor
