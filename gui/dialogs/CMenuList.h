// SPDX-License-Identifier: ISC
#pragma once

#include "gui/controls/COptionMenu.h"

namespace qlx::gui {

/// The open list of an option menu: entries in columns, the content of a popup.
class CMenuList : public CView {
 public:
  /// Laid out for the menu's entries, its corner at (0, 0). `menu` outlives the list's time in its
  /// popup.
  CMenuList(COptionMenu& menu, CTypeface* typeface);

  bool isTypeOf(std::string_view className) const override {
    return className == "CMenuList" || CView::isTypeOf(className);
  }
  std::unique_ptr<CView> newCopy() const override { return nullptr; }
  void draw(CDrawContext& context) override;
  CMouseEventResult onMouseDown(const CPoint& where, const CButtonState& buttons) override;
  CMouseEventResult onMouseUp(const CPoint& where, const CButtonState& buttons) override;
  CMouseEventResult onMouseMoved(const CPoint& where, const CButtonState& buttons) override;
  CMouseEventResult onMouseExited(const CPoint& where, const CButtonState& buttons) override;
  bool onKeyDown(const CKeyCode& key) override;

  CRect getEntryRect(int index) const;
  /// -1 beside all entries.
  int getEntryAt(const CPoint& where) const;
  /// The entry under the pointer or reached by keys; -1 for none.
  int getHighlighted() const { return m_highlighted; }
  void highlight(int index);

 private:
  int perColumn() const;
  bool typeAhead(char32_t character);

  COptionMenu& m_menu;
  int m_highlighted;
  CCoord m_entryWidth = 0.0;
};

} // namespace qlx::gui
