// SPDX-License-Identifier: ISC
#include "gui/controls/ContextMenu.h"

namespace qlx::gui {

ContextMenu::ContextMenu() : COptionMenu({}, nullptr, 0, nullptr, kNoTextStyle | kNoDrawStyle) {
  setMouseEnabled(false);
}

void ContextMenu::openAt(const CPoint& where, std::vector<Item> items) {
  closePopup();
  m_items = std::move(items);
  removeAllEntries();
  for (const Item& item : m_items) addEntry(item.title);
  setCurrent(-1); // none is lit before the pointer comes to it
  setViewSize({where.x, where.y, where.x, where.y});
  popup();
}

void ContextMenu::valueChanged() {
  const int index = getCurrentIndex();
  if (index < 0) return;
  // The action may open the menu anew.
  const auto chosen = m_items[static_cast<std::size_t>(index)].chosen;
  if (chosen) chosen();
}

} // namespace qlx::gui
