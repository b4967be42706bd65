// SPDX-License-Identifier: ISC
#include "gui/controls/COptionMenu.h"

#include "gui/CFrame.h"
#include "gui/dialogs/CMenuList.h"

#include <algorithm>
#include <cmath>

namespace qlx::gui {

namespace {

// A press that is held and let go farther away than this chooses; a click leaves the list open.
constexpr CCoord kDragDistance = 4.0;

} // namespace

COptionMenu::COptionMenu(const CRect& size, CControlListener* listener, std::int32_t tag,
                         CBitmapRef background, std::int32_t style)
    : CParamDisplay(size, std::move(background), style) {
  setListener(listener);
  setTag(tag);
  setMax(0.0F);
  setMouseEnabled(true);
}

COptionMenu::COptionMenu(const COptionMenu& other)
    : CParamDisplay(other), m_entries(other.m_entries), m_perColumn(other.m_perColumn) {}

std::unique_ptr<CView> COptionMenu::newCopy() const {
  return std::unique_ptr<CView>(new COptionMenu(*this));
}

void COptionMenu::draw(CDrawContext& context) {
  drawBack(context);
  if (const int current = getCurrentIndex(); current >= 0)
    drawText(context, m_entries[static_cast<std::size_t>(current)]);
  setDirty(false);
}

void COptionMenu::addEntry(std::string_view title) {
  m_entries.emplace_back(title);
  setMax(static_cast<float>(m_entries.size() - 1));
  setDirty();
}

void COptionMenu::removeAllEntries() {
  closePopup();
  m_entries.clear();
  setMax(0.0F);
  setDirty();
}

const std::string& COptionMenu::getEntry(int index) const {
  return m_entries[static_cast<std::size_t>(index)];
}

void COptionMenu::setEntryTitle(int index, std::string_view title) {
  m_entries[static_cast<std::size_t>(index)] = title;
  setDirty();
  if (m_list != nullptr) m_list->setDirty();
}

void COptionMenu::setCurrent(int index) { setValue(static_cast<float>(index)); }

int COptionMenu::getCurrentIndex() const {
  const auto index = static_cast<int>(std::lround(getValue()));
  return std::clamp(index, -1, getNbEntries() - 1);
}

bool COptionMenu::popup() {
  CFrame* frame = getFrame();
  if (frame == nullptr || m_list != nullptr || m_entries.empty()) return false;
  auto list = std::make_unique<CMenuList>(*this, frame->getTypeface());
  CPoint corner{getViewSize().left, getViewSize().bottom};
  if ((getStyle() & kPopupStyle) != 0) {
    const CRect current = list->getEntryRect(std::max(0, getCurrentIndex()));
    corner = getViewSize().centre() - current.centre();
  }
  frame->takeKeyboardFocus();
  CMenuList* shown = list.get();
  if (!frame->openPopup(std::move(list), corner, [this] {
        m_list = nullptr;
        popupClosed();
      }))
    return false;
  m_list = shown;
  return true;
}

void COptionMenu::closePopup() {
  if (m_list != nullptr) getFrame()->closePopup();
}

void COptionMenu::removed() {
  closePopup();
  CParamDisplay::removed();
}

void COptionMenu::choose(int index) {
  closePopup();
  beginEdit();
  setCurrent(index);
  valueChanged();
  endEdit();
}

std::string COptionMenu::textOfValue() const {
  return getCurrentIndex() < 0 ? std::string() : getEntry(getCurrentIndex());
}

bool COptionMenu::onKeyAction(KeyAction action, const CButtonState& /*modifiers*/) {
  const int current = getCurrentIndex();
  const int last = getNbEntries() - 1;
  const int page = m_perColumn > 0 ? m_perColumn : getNbEntries();
  int next = 0;
  switch (action) {
  case KeyAction::kPress: return popup();
  case KeyAction::kStepUp: next = current - 1; break; // the one above
  case KeyAction::kStepDown: next = current + 1; break;
  case KeyAction::kPageUp: next = current - page; break;
  case KeyAction::kPageDown: next = current + page; break;
  case KeyAction::kFirst: next = 0; break;
  case KeyAction::kLast: next = last; break;
  case KeyAction::kNone: return false;
  }
  next = std::clamp(next, 0, std::max(0, last));
  if (next != current && last >= 0) choose(next);
  return true;
}

CMouseEventResult COptionMenu::onMouseDown(const CPoint& where, const CButtonState& buttons) {
  if (!buttons.isLeftButton()) return CMouseEventResult::kNotHandled;
  m_pressedAt = where;
  m_dragged = false;
  return popup() ? CMouseEventResult::kHandled : CMouseEventResult::kHandledDontNeedMoves;
}

// While the button that opened the list is held, its own window gets the pointer; the list is to
// follow it.
CMouseEventResult COptionMenu::onMouseMoved(const CPoint& where, const CButtonState& buttons) {
  if (m_list == nullptr || !buttons.isLeftButton()) return CMouseEventResult::kNotHandled;
  const CPoint distance = where - m_pressedAt;
  m_dragged = m_dragged || std::hypot(distance.x, distance.y) > kDragDistance;
  if (m_dragged) m_list->onMouseMoved(where - getFrame()->getPopupPlace().topLeft(), buttons);
  return CMouseEventResult::kHandled;
}

CMouseEventResult COptionMenu::onMouseUp(const CPoint& where, const CButtonState& buttons) {
  if (m_list != nullptr && m_dragged)
    m_list->onMouseUp(where - getFrame()->getPopupPlace().topLeft(), buttons);
  return CMouseEventResult::kHandled;
}

} // namespace qlx::gui
