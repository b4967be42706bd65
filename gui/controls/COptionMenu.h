// SPDX-License-Identifier: ISC
#pragma once

#include "gui/controls/CParamDisplay.h"

#include <string>
#include <vector>

namespace qlx::gui {

class CMenuList;

/// How a menu pops up, in addition to the bits of CParamDisplayStyle.
enum COptionMenuStyle : std::int32_t {
  kPopupStyle =
      1 << 8, ///< over the button, with the current entry under it, instead of below the button
  kCheckStyle = 1 << 9, ///< the current entry has a check mark
};

/// A button that opens a list of entries; its value is the current entry's number. It shows that
/// entry's title unless its style says otherwise. A choice sets the value and tells the listener.
/// The list opens on a left press and takes the pointer (press and choose, or press, drag and
/// release) and the keyboard (arrows, Home, End, Enter, Escape, first letters); it closes on a
/// press elsewhere, and when the window moves, loses the keyboard or goes away.
class COptionMenu : public CParamDisplay {
 public:
  COptionMenu(const CRect& size, CControlListener* listener, std::int32_t tag,
              CBitmapRef background = nullptr, std::int32_t style = kPopupStyle | kCheckStyle);

  bool isTypeOf(std::string_view className) const override {
    return className == "COptionMenu" || CParamDisplay::isTypeOf(className);
  }
  std::unique_ptr<CView> newCopy() const override;
  void draw(CDrawContext& context) override;
  platform::PointerShape getPointerShape() const override { return platform::PointerShape::kHand; }
  CMouseEventResult onMouseDown(const CPoint& where, const CButtonState& buttons) override;
  CMouseEventResult onMouseUp(const CPoint& where, const CButtonState& buttons) override;
  CMouseEventResult onMouseMoved(const CPoint& where, const CButtonState& buttons) override;
  /// A press opens the list; steps go to the entries beside the current one.
  bool onKeyAction(KeyAction action, const CButtonState& modifiers) override;
  void removed() override;

  void addEntry(std::string_view title);
  void removeAllEntries();
  int getNbEntries() const { return static_cast<int>(m_entries.size()); }
  /// `index` in 0..getNbEntries() - 1, here and below.
  const std::string& getEntry(int index) const;
  void setEntryTitle(int index, std::string_view title);
  /// Whether an entry has a check mark.
  virtual bool isTicked(int index) const {
    return (getStyle() & kCheckStyle) != 0 && index == getCurrentIndex();
  }
  /// Makes an entry current without telling the listener.
  void setCurrent(int index);
  /// -1 when there are no entries.
  int getCurrentIndex() const;
  /// Entries in a column before the next one starts; 0 for a single column.
  void setNbItemsPerColumn(int count) { m_perColumn = count; }
  int getNbItemsPerColumn() const { return m_perColumn; }

  /// Opens and closes the list.
  bool popup();
  void closePopup();
  bool isPopupOpen() const { return m_list != nullptr; }
  /// The open list, or null.
  CMenuList* getList() const { return m_list; }

  /// The user's choice: closes the list, makes the entry current and tells the listener.
  void choose(int index);

 protected:
  COptionMenu(const COptionMenu& other);
  std::string textOfValue() const override;

 private:
  /// The list has closed; a choice has not been made yet.
  virtual void popupClosed() {}

  std::vector<std::string> m_entries;
  int m_perColumn = 0;
  CMenuList* m_list = nullptr;
  CPoint m_pressedAt;
  bool m_dragged = false;
};

} // namespace qlx::gui
