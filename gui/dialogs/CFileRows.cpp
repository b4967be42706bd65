// SPDX-License-Identifier: ISC
#include "gui/dialogs/CFileRows.h"

#include "gui/CFrame.h"
#include "gui/dialogs/DialogLook.h"
#include "gui/drawing/ShortenedText.h"

#include <algorithm>
#include <array>
#include <cmath>

namespace qlx::gui {

namespace {

constexpr CCoord kRowHeight = 20.0;
constexpr CCoord kBorder = 3.0;
constexpr CCoord kIconWidth = 24.0;
constexpr CCoord kBarWidth = 10.0;
constexpr CCoord kShortestThumb = 20.0;
constexpr int kRowsPerNotch = 3;

constexpr CColor kHovered{52, 45, 38, 255};
constexpr CColor kFolderIcon{185, 141, 60, 255};
constexpr CColor kFileIcon{176, 166, 142, 255};

void drawFolderIcon(CDrawContext& context, const CPoint& middle, const CColor& colour) {
  const CRect tab{middle.x - 7.0, middle.y - 5.0, middle.x - 1.0, middle.y + 1.0};
  const CRect body{middle.x - 7.0, middle.y - 3.0, middle.x + 7.0, middle.y + 6.0};
  context.fillRoundRect(tab, 1.5, colour);
  context.fillRoundRect(body, 1.5, colour);
}

void drawFileIcon(CDrawContext& context, const CPoint& middle, const CColor& colour) {
  const std::array<CPoint, 6> page{
      CPoint{middle.x - 4.5, middle.y - 6.5}, {middle.x + 1.5, middle.y - 6.5},
      {middle.x + 4.5, middle.y - 3.5},       {middle.x + 4.5, middle.y + 6.5},
      {middle.x - 4.5, middle.y + 6.5},       {middle.x - 4.5, middle.y - 6.5}};
  context.strokeLine(page, 1.0, colour);
  for (const CCoord y : {-1.5, 1.5}) {
    const std::array<CPoint, 2> line{CPoint{middle.x - 2.5, middle.y + y},
                                     {middle.x + 2.5, middle.y + y}};
    context.strokeLine(line, 1.0, colour);
  }
}

} // namespace

CFileRows::CFileRows(const CRect& size, FileListModel& model, Actions actions)
    : CView(size), m_model(model), m_actions(std::move(actions)) {}

// --- Places ---

int CFileRows::rowsInView() const {
  return std::max(1, static_cast<int>((getViewSize().height() - 2.0 * kBorder) / kRowHeight));
}

CRect CFileRows::getRowRect(int index) const {
  const CRect inside = getViewSize().insetBy(kBorder, kBorder);
  const CCoord top = inside.top + (index - m_top) * kRowHeight;
  return {inside.left, top, inside.right - (scrolls() ? kBarWidth : 0.0), top + kRowHeight};
}

int CFileRows::getRowAt(const CPoint& where) const {
  const int end = std::min(m_top + rowsInView(), m_model.count());
  for (int i = m_top; i < end; ++i)
    if (getRowRect(i).contains(where)) return i;
  return -1;
}

CRect CFileRows::barRect() const {
  CRect bar = getViewSize().insetBy(kBorder, kBorder);
  bar.left = bar.right - kBarWidth;
  return bar;
}

CRect CFileRows::thumbRect() const {
  CRect thumb = barRect();
  const CCoord whole = thumb.height();
  const CCoord height = std::max(kShortestThumb, whole * rowsInView() / m_model.count());
  thumb.left += 3.0;
  thumb.top += (whole - height) * m_top / (m_model.count() - rowsInView());
  thumb.bottom = thumb.top + height;
  return thumb;
}

// --- Scrolling and selecting ---

void CFileRows::scrollTo(int top) {
  m_top = std::clamp(top, 0, std::max(0, m_model.count() - rowsInView()));
  setDirty();
}

void CFileRows::modelChanged() {
  const int row = std::max(0, m_model.selected());
  m_hovered = -1;
  scrollTo(std::clamp(m_top, row - rowsInView() + 1, row));
}

void CFileRows::setHovered(int row) {
  if (row == m_hovered) return;
  m_hovered = row;
  setDirty();
}

bool CFileRows::onKeyDown(const CKeyCode& key) {
  switch (key.virtualKey) {
  case VirtualKey::kUp: m_model.step(-1); break;
  case VirtualKey::kDown: m_model.step(1); break;
  case VirtualKey::kPageUp: m_model.step(-rowsInView()); break;
  case VirtualKey::kPageDown: m_model.step(rowsInView()); break;
  case VirtualKey::kHome: m_model.select(0); break;
  case VirtualKey::kEnd: m_model.select(m_model.count() - 1); break;
  default:
    if (!m_model.selectByLetter(key.character)) return false;
  }
  modelChanged();
  m_actions.selected();
  return true;
}

// --- Drawing ---

void CFileRows::drawRow(CDrawContext& context, int index) const {
  const platform::FolderEntry& entry = m_model.entries()[static_cast<std::size_t>(index)];
  const CRect row = getRowRect(index);
  const bool lit = index == m_model.selected();
  if (lit || index == m_hovered) context.fillRoundRect(row, 3.0, lit ? kDialogHighlight : kHovered);
  const CPoint icon{row.left + kIconWidth * 0.5, row.centre().y};
  if (entry.isFolder)
    drawFolderIcon(context, icon, lit ? kDialogHighlightText : kFolderIcon);
  else
    drawFileIcon(context, icon, lit ? kDialogHighlightText : kFileIcon);
  context.setFontColor(lit ? kDialogHighlightText : kDialogText);
  const CRect text{row.left + kIconWidth, row.top, row.right - 4.0, row.bottom};
  const int room = static_cast<int>(text.width());
  context.drawString(shortenedAtEnd(getFrame()->getTypeface(), entry.name, kDialogFont, room), text,
                     CHoriTxtAlign::kLeftText);
}

void CFileRows::draw(CDrawContext& context) {
  context.fillRoundRect(getViewSize(), 4.0, kDialogSheet);
  context.setFont(kDialogFont);
  const int end = std::min(m_top + rowsInView(), m_model.count());
  for (int i = m_top; i < end; ++i) drawRow(context, i);
  if (scrolls()) context.fillRoundRect(thumbRect(), 3.0, kDialogEdge);
  if (m_model.count() > 0) return;
  context.setFontColor(kDialogQuietText);
  context.drawString("Nothing to choose in this folder", getViewSize());
}

// --- Pointer ---

CMouseEventResult CFileRows::onMouseDown(const CPoint& where, const CButtonState& buttons) {
  if (!buttons.isLeftButton()) return CMouseEventResult::kHandledDontNeedMoves;
  if (scrolls() && barRect().contains(where)) {
    const CRect thumb = thumbRect();
    m_draggingBar = where.y >= thumb.top && where.y < thumb.bottom;
    m_grip = where.y - thumb.top;
    if (!m_draggingBar) scrollTo(m_top + (where.y < thumb.top ? -rowsInView() : rowsInView()));
    return CMouseEventResult::kHandled;
  }
  const int row = getRowAt(where);
  const bool again = row >= 0 && row == m_model.selected() && buttons.isDoubleClick();
  m_model.select(row);
  setDirty();
  m_actions.selected();
  if (again) m_actions.opened();
  return CMouseEventResult::kHandledDontNeedMoves;
}

CMouseEventResult CFileRows::onMouseMoved(const CPoint& where, const CButtonState& /*buttons*/) {
  if (m_draggingBar) {
    const CCoord way = barRect().height() - thumbRect().height();
    const CCoord part = (where.y - m_grip - barRect().top) / way;
    scrollTo(CRect::nearest(part * (m_model.count() - rowsInView())));
  } else {
    setHovered(getRowAt(where));
  }
  return CMouseEventResult::kHandled;
}

CMouseEventResult CFileRows::onMouseUp(const CPoint& /*where*/, const CButtonState& /*buttons*/) {
  m_draggingBar = false;
  return CMouseEventResult::kHandled;
}

CMouseEventResult CFileRows::onMouseExited(const CPoint& /*where*/,
                                           const CButtonState& /*buttons*/) {
  setHovered(-1);
  return CMouseEventResult::kHandled;
}

bool CFileRows::onWheel(const CPoint& /*where*/, float distance, const CButtonState& /*buttons*/) {
  scrollTo(m_top - static_cast<int>(std::lround(distance * kRowsPerNotch)));
  m_hovered = -1;
  return true;
}

} // namespace qlx::gui
