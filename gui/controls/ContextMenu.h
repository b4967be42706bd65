// SPDX-License-Identifier: ISC
#pragma once

#include "gui/controls/COptionMenu.h"

#include <functional>
#include <string>
#include <utility>
#include <vector>

namespace qlx::gui {

/// A menu that opens at a place of the frame. It is no button: it draws nothing and takes no press.
class ContextMenu final : public COptionMenu {
 public:
  struct Item {
    std::string title;
    bool ticked = false;
    std::function<void()> chosen; ///< called after the menu has closed
  };

  ContextMenu();

  bool isTypeOf(std::string_view className) const override {
    return className == "ContextMenu" || COptionMenu::isTypeOf(className);
  }
  /// Its items act on one window; there are no copies. Null.
  std::unique_ptr<CView> newCopy() const override { return nullptr; }

  /// Shows the items with the menu's corner there. Nothing without items.
  void openAt(const CPoint& where, std::vector<Item> items);
  /// Called whenever the menu has closed, before an item's `chosen`.
  void onClosed(std::function<void()> closed) { m_closed = std::move(closed); }

  bool isTicked(int index) const override {
    return m_items[static_cast<std::size_t>(index)].ticked;
  }
  void valueChanged() override;

 private:
  void popupClosed() override {
    if (m_closed) m_closed();
  }

  std::vector<Item> m_items;
  std::function<void()> m_closed;
};

} // namespace qlx::gui
