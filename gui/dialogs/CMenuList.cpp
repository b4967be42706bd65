// SPDX-License-Identifier: ISC
#include "gui/dialogs/CMenuList.h"

#include "gui/CFrame.h"
#include "gui/dialogs/DialogLook.h"
#include "gui/drawing/Utf8.h"

#include <algorithm>
#include <array>
#include <cmath>

namespace qlx::gui {

namespace {

constexpr CFontDesc kFont{11.0};
constexpr CCoord kEntryHeight = 18.0;
constexpr CCoord kBorder = 3.0;
constexpr CCoord kCheckWidth = 18.0; // room for the check mark before the title
constexpr CCoord kAfterTitle = 12.0;
constexpr CCoord kNarrowest = 60.0;
constexpr CCoord kWidest = 220.0;

} // namespace

CMenuList::CMenuList(COptionMenu& menu, CTypeface* typeface)
    : CView({}), m_menu(menu), m_highlighted(menu.getCurrentIndex()) {
  CCoord widest = 0.0;
  for (int i = 0; typeface != nullptr && i < menu.getNbEntries(); ++i)
    widest = std::max(widest, typeface->width(menu.getEntry(i), kFont));
  m_entryWidth = std::clamp(kCheckWidth + std::ceil(widest) + kAfterTitle, kNarrowest, kWidest);
  const int columns = (menu.getNbEntries() + perColumn() - 1) / perColumn();
  setViewSize({0.0, 0.0, 2.0 * kBorder + columns * m_entryWidth,
               2.0 * kBorder + perColumn() * kEntryHeight});
}

int CMenuList::perColumn() const {
  const int wanted = m_menu.getNbItemsPerColumn();
  return std::max(1, wanted > 0 ? std::min(wanted, m_menu.getNbEntries()) : m_menu.getNbEntries());
}

CRect CMenuList::getEntryRect(int index) const {
  const int column = index / perColumn();
  const int line = index % perColumn();
  const CCoord left = kBorder + column * m_entryWidth;
  const CCoord top = kBorder + line * kEntryHeight;
  return {left, top, left + m_entryWidth, top + kEntryHeight};
}

int CMenuList::getEntryAt(const CPoint& where) const {
  for (int i = 0; i < m_menu.getNbEntries(); ++i)
    if (getEntryRect(i).contains(where)) return i;
  return -1;
}

void CMenuList::highlight(int index) {
  if (index == m_highlighted) return;
  m_highlighted = index;
  setDirty();
}

void CMenuList::draw(CDrawContext& context) {
  context.fillRect(getViewSize(), kDialogBack);
  context.frameRect(getViewSize(), kDialogEdge);
  context.setFont(kFont);
  for (int i = 0; i < m_menu.getNbEntries(); ++i) {
    const CRect entry = getEntryRect(i);
    if (i > 0 && i % perColumn() == 0)
      context.fillRect(
          {entry.left, kBorder, entry.left + context.getHairline(), getViewSize().bottom - kBorder},
          kDialogButton);
    const bool lit = i == m_highlighted;
    if (lit) context.fillRect(entry, kDialogHighlight);
    const CColor& colour = lit ? kDialogHighlightText : kDialogText;
    if (m_menu.isTicked(i)) {
      const CPoint middle{entry.left + kCheckWidth * 0.5, entry.centre().y};
      const std::array<CPoint, 3> mark{
          {middle + CPoint{-3.5, 0.0}, middle + CPoint{-1.0, 3.0}, middle + CPoint{4.0, -3.5}}};
      context.strokeLine(mark, 1.6, colour);
    }
    context.setFontColor(colour);
    context.drawString(m_menu.getEntry(i),
                       {entry.left + kCheckWidth, entry.top, entry.right - 2.0, entry.bottom},
                       CHoriTxtAlign::kLeftText);
  }
  setDirty(false);
}

CMouseEventResult CMenuList::onMouseDown(const CPoint& where, const CButtonState& /*buttons*/) {
  highlight(getEntryAt(where));
  return CMouseEventResult::kHandled;
}

CMouseEventResult CMenuList::onMouseUp(const CPoint& where, const CButtonState& /*buttons*/) {
  if (const int entry = getEntryAt(where); entry >= 0) m_menu.choose(entry);
  return CMouseEventResult::kHandled;
}

CMouseEventResult CMenuList::onMouseMoved(const CPoint& where, const CButtonState& /*buttons*/) {
  highlight(getEntryAt(where));
  return CMouseEventResult::kHandled;
}

CMouseEventResult CMenuList::onMouseExited(const CPoint& /*where*/,
                                           const CButtonState& /*buttons*/) {
  highlight(-1);
  return CMouseEventResult::kHandled;
}

bool CMenuList::onKeyDown(const CKeyCode& key) {
  const int last = m_menu.getNbEntries() - 1;
  const int from = m_highlighted < 0 ? m_menu.getCurrentIndex() : m_highlighted;
  const auto step = [&](int by) {
    const int to = from + by;
    if (to >= 0 && to <= last) highlight(to);
  };
  switch (key.virtualKey) {
  case VirtualKey::kUp: from < 0 ? highlight(last) : step(-1); break;
  case VirtualKey::kDown: step(1); break;
  case VirtualKey::kLeft: step(-perColumn()); break;
  case VirtualKey::kRight: step(perColumn()); break;
  case VirtualKey::kHome: highlight(0); break;
  case VirtualKey::kEnd: highlight(last); break;
  case VirtualKey::kReturn:
  case VirtualKey::kEnter:
  case VirtualKey::kSpace:
    if (m_highlighted >= 0) m_menu.choose(m_highlighted);
    break;
  case VirtualKey::kEscape:
  case VirtualKey::kTab: m_menu.closePopup(); break;
  default: return typeAhead(key.character);
  }
  return true;
}

// To the next entry that begins with the character, round the end.
bool CMenuList::typeAhead(char32_t character) {
  const int count = m_menu.getNbEntries();
  for (int i = 1; character != 0 && i <= count; ++i) {
    const int entry = (std::max(m_highlighted, -1) + i) % count;
    if (firstLetter(m_menu.getEntry(entry)) != lowered(character)) continue;
    highlight(entry);
    return true;
  }
  return false;
}

} // namespace qlx::gui
